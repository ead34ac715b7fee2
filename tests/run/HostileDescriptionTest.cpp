#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <random>

namespace emeg::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class HostileDescription : public PluginRun {
protected:
  /// Checks that a run with this description ends with this message box, right after it was chosen.
  void expectDescriptionRefused(const std::string& ccd, const std::string& message) const {
    const std::map<std::string, std::string> before = contents();
    const HostRunResult result = run(answers("", ccd));
    EXPECT_EQ(differenceOf(result.transcript,
                           ExpectedCalls::ofARun().chooses("CCD", ccd).shows(message).returns(false)),
              "");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(contents(), before);
  }

  std::string outputDescription() const { return readFile(path("run1_GRA.ccd")); }

  /// A new record as a recording of 1 kHz gets it, counted from 0.
  static std::string defaultRecord(int channel) {
    std::string record(descriptionRecordSize, '\0');
    record.replace(0, 11, "Channel_00" + std::to_string(channel));
    const std::string one("\0\0\0\0\0\0\xf0\x3f", 8);
    const std::string thousand("\0\0\0\0\0\x40\x8f\x40", 8);
    const std::string minusOne("\0\0\0\0\0\0\xf0\xbf", 8);
    return record.replace(350, 8, one)
        .replace(360, 8, thousand)
        .replace(384, 8, minusOne)
        .replace(416, 4, "\xff\xff\xff\x03");
  }
};

TEST_F(HostileDescription, ThatDoesNotExistCannotBeAccessed) {
  expectDescriptionRefused(path("missing.ccd"), "Error accessing CCD file.<br>No such file or directory.");
}

TEST_F(HostileDescription, ThatIsAFolderCannotBeAccessed) {
  expectDescriptionRefused(path(""), "Error accessing CCD file.<br>Is a directory.");
}

TEST_F(HostileDescription, ThatIsTruncatedAnywhereEndsTooEarly) {
  write(shortNoise());
  const std::string whole = descriptionBytes("run1.ctc", "", 2, 2);
  for (const size_t length : {size_t{0}, size_t{1}, size_t{583}, size_t{584}, size_t{1003}, size_t{1424},
                              whole.size() - 48, whole.size() - 1})
    expectDescriptionRefused(write("run1.ccd", whole.substr(0, length)),
                             "Error reading file: <br>Attempt to read beyond the end of file.");
}

TEST_F(HostileDescription, ThatCountsMoreRecordsThanItHoldsEndsTooEarly) {
  write(shortNoise());
  std::string bytes = descriptionBytes("run1.ctc", "", 2);
  putUint16(bytes, channelCountOffset, 65535);
  expectDescriptionRefused(write("run1.ccd", bytes),
                           "Error reading file: <br>Attempt to read beyond the end of file.");
}

TEST_F(HostileDescription, MayBeFollowedByAnything) {
  write(shortNoise());
  const std::string bytes = descriptionBytes("run1.ctc", "", 2);
  ASSERT_EQ(run(answers("", write("run1.ccd", bytes))).exitStatus, 0);
  const std::string output = outputDescription();
  ASSERT_EQ(run(answers("", write("run1.ccd", bytes + "and more"))).exitStatus, 0);
  EXPECT_EQ(outputDescription(), output);
}

TEST_F(HostileDescription, ThatNamesAMissingRecordingLeadsToItsError) {
  expectDescriptionRefused(write("run1.ccd", descriptionBytes("missing.ctc", "", 2)),
                           "Error accessing CTC file.<br>No such file or directory.");
}

TEST_F(HostileDescription, ThatNamesNoRecordingNamesItsFolder) {
  expectDescriptionRefused(write("run1.ccd", descriptionBytes("", "", 2)),
                           "Error accessing CTC file.<br>Is a directory.");
}

TEST_F(HostileDescription, WithoutTerminatorsHasNamesOf255Characters) {
  std::string bytes = descriptionBytes("", "", 2);
  bytes.replace(ctcNameOffset, 512, std::string(512, 'n'));
  write(std::string(255, 'n'), shortNoise().bytes());
  // The file is found, but no chunk file of a name as long as this can be made.
  const HostRunResult result = run(answers("", write("run1.ccd", bytes)));
  EXPECT_THAT(result.messageBoxes(), ElementsAre("Error #36 while creating chunk 0."));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(HostileDescription, WithFewerRecordsThanChannelsGetsDefaultsForTheOthers) {
  write(shortNoise(3));
  for (const int described : {0, 1, 2}) {
    std::string expected = descriptionBytes("run1.ctc", "", described, 1);
    ASSERT_EQ(run(answers("", write("run1.ccd", expected))).exitStatus, 0);
    const std::string extra = expected.substr(expected.size() - descriptionExtraSize);
    expected.resize(expected.size() - descriptionExtraSize);
    for (int c = described; c < 3; ++c) expected += defaultRecord(c);
    expected += extra;
    putDescriptionName(expected, ctcNameOffset, "run1_GRA.ctc");
    putUint16(expected, channelCountOffset, 3);
    expected[gradientFlagOffset] = 1;
    EXPECT_TRUE(outputDescription() == expected) << described << " records";
  }
}

TEST_F(HostileDescription, WithMoreRecordsThanChannelsKeepsThem) {
  write(shortNoise(2));
  std::string expected = descriptionBytes("run1.ctc", "", 7, 255);
  ASSERT_EQ(run(answers("", write("run1.ccd", expected))).exitStatus, 0);
  putDescriptionName(expected, ctcNameOffset, "run1_GRA.ctc");
  expected[gradientFlagOffset] = 1;
  EXPECT_TRUE(outputDescription() == expected);
}

TEST_F(HostileDescription, WithAnEmptyProtocolNameLoadsNone) {
  write(shortNoise(2));
  const HostRunResult result = run(answers("", write("run1.ccd", descriptionBytes("run1.ctc", "", 2))));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(names(), ElementsAre("run1.ccd", "run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc",
                                   "run1_GRA_ArtifactsTriggers.prt"));
}

TEST_F(HostileDescription, WithSeparatorsInItsNamesStaysInsideWhatTheyName) {
  std::filesystem::create_directory(path("inner"));
  write("inner/run2.ctc", shortNoise().bytes());
  const HostRunResult result =
      run(answers("", write("run1.ccd", descriptionBytes("inner/run2.ctc", "inner/none.prt", 2))));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_TRUE(exists(path("inner/run2_GRA.ctc")));
  // The name without its folder is recorded.
  EXPECT_EQ(readFile(path("inner/run2_GRA.ccd")).substr(ctcNameOffset, 13),
            std::string("run2_GRA.ctc\0", 13));
}

class HostileProtocol : public PluginRun {
protected:
  /// A run with this protocol, which ends well; true when the protocol was written too.
  bool isTaken(const std::string& text) const {
    std::remove(path("run1_GRA.prt").c_str());
    const HostRunResult result = run(answers(write(shortNoise()), "", write("run1.prt", text)));
    EXPECT_EQ(result.exitStatus, 0) << result.standardOutput;
    EXPECT_THAT(result.messageBoxes(), IsEmpty());
    EXPECT_TRUE(exists(path("run1_GRA_ArtifactsTriggers.prt")));
    return exists(path("run1_GRA.prt"));
  }
};

TEST_F(HostileProtocol, ThatDoesNotExistIsSkipped) {
  const HostRunResult result = run(answers(write(shortNoise()), "", path("missing.prt")));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.messageBoxes(), IsEmpty());
  EXPECT_FALSE(exists(path("run1_GRA.prt")));
}

TEST_F(HostileProtocol, ThatIsAFolderIsSkipped) {
  std::filesystem::create_directory(path("task.prt"));
  const HostRunResult result = run(answers(write(shortNoise()), "", path("task.prt")));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_FALSE(exists(path("run1_GRA.prt")));
}

TEST_F(HostileProtocol, WithoutItsKeywordsIsSkipped) {
  EXPECT_FALSE(isTaken(""));
  EXPECT_FALSE(isTaken("hello"));
  EXPECT_FALSE(isTaken("ResolutionOfTime: usec"));
  EXPECT_FALSE(isTaken("NrOfConditions: 1\nA\n0\nColor: 1 1 1"));
  EXPECT_FALSE(isTaken("NrOfConditions: 1\nResolutionOfTime: usec")); // in the other order
  EXPECT_FALSE(isTaken("resolutionoftime: usec\nnrofconditions: 1"));
}

TEST_F(HostileProtocol, WithCountsThatItDoesNotHoldEndsWhereTheTextEnds) {
  const std::string begin = "ResolutionOfTime: usec\nNrOfConditions: ";
  EXPECT_TRUE(isTaken(begin + "99999999999999999999999999\nA\n1\n0 9\nColor: 1 1 1"));
  EXPECT_TRUE(isTaken(begin + "2147483647"));
  EXPECT_TRUE(isTaken(begin + "-5\nA\n1\n0 9\nColor: 1 1 1"));
  EXPECT_TRUE(isTaken(begin + "1\nA\n2147483647\n0 9\n"));
  EXPECT_TRUE(isTaken(begin + "1\nA\n-3\n0 9\nColor: 1 1 1"));
  EXPECT_TRUE(isTaken(begin + "1\nA\n1\n-99999999999999999999 99999999999999999999\nColor: 99999999 -1 x"));
  EXPECT_TRUE(isTaken(begin));
}

TEST_F(HostileProtocol, WithMoreConditionsThanFitIsCutAt255) {
  std::string text = "ResolutionOfTime: usec\nNrOfConditions: 300\n";
  for (int i = 0; i < 300; ++i) text += "\nC" + std::to_string(i) + "\n1\n0 9\nColor: 1 1 1\n";
  EXPECT_TRUE(isTaken(text));
  const std::string written = readFile(path("run1_GRA.prt"));
  EXPECT_THAT(written, testing::HasSubstr("NrOfConditions:     255"));
  EXPECT_THAT(written, testing::HasSubstr("\r\nC254\r\n"));
  EXPECT_THAT(written, testing::Not(testing::HasSubstr("C255")));
}

TEST_F(HostileProtocol, WithVeryLongLinesIsTaken) {
  EXPECT_TRUE(isTaken("ResolutionOfTime: usec\nNrOfConditions: 1\n" + std::string(100000, 'n') +
                      "\n1\n0 9\nColor: 1 1 1"));
  EXPECT_THAT(readFile(path("run1_GRA.prt")),
              testing::HasSubstr("\r\n" + std::string(127, 'n') + "\r\n1\r\n"));
}

TEST_F(HostileProtocol, OfRandomBytesDoesNoHarm) {
  std::mt19937 generator(11);
  for (int i = 0; i < 20; ++i) {
    std::string text = "ResolutionOfTime: usec\nNrOfConditions: 3\n";
    if (i % 2 == 0) text.clear();
    for (int k = 0; k < 2000; ++k) text += static_cast<char>(generator() % 256);
    EXPECT_EQ(isTaken(text), i % 2 != 0);
  }
}

} // namespace
} // namespace emeg::test
