#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace emeg::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

class PathNames : public PluginRun {
protected:
  /// Runs on a recording of this name and checks the names of all outputs.
  void expectOutputs(const std::string& stem) const {
    const std::string ctc = write(stem + ".ctc", shortNoise().bytes());
    const HostRunResult result = run(answers(ctc));
    EXPECT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;
    EXPECT_THAT(names(), UnorderedElementsAre(stem + ".ctc", stem + "_GRA.ctc", stem + "_GRA.ccd",
                                              stem + "_GRA_ArtifactsTriggers.prt"));
    EXPECT_THAT(readFile(path(stem + "_GRA_ArtifactsTriggers.prt")),
                HasSubstr("\r\nExperiment:         " + ctc + "\r\n"));
  }
};

TEST_F(PathNames, MayHoldSpacesAndLettersOfAnyLanguage) {
  expectOutputs("\xc3\x9c"
                "bung mit \xe8\x84\xb3\xe6\xb3\xa2 & 'quotes'");
}

TEST_F(PathNames, MayLookLikeAFormatOrMarkup) {
  expectOutputs("100%s %n%d <br> \\n");
}

TEST_F(PathNames, AppearUnchangedInMessages) {
  Recording recording = shortNoise();
  recording.samplingFrequency = 5;
  const std::string ctc = write("100%s%n%d.ctc", recording.bytes());
  const HostRunResult result = run(answers(ctc));
  ASSERT_EQ(result.messageBoxes().size(), 1u);
  EXPECT_THAT(result.messageBoxes()[0], HasSubstr(ctc));
}

TEST_F(PathNames, MayBeRelative) {
  write(shortNoise());
  ASSERT_EQ(run(answers("eeg/run1.ctc")).exitStatus, 0);
  EXPECT_TRUE(exists(path("run1_GRA.ctc")));
  EXPECT_THAT(readFile(path("run1_GRA_ArtifactsTriggers.prt")),
              HasSubstr("\r\nExperiment:         eeg/run1.ctc\r\n"));
}

TEST_F(PathNames, MayBeTheBareNameOfAFileInTheCurrentFolder) {
  writeFile(folder_.path("run1.ctc"), shortNoise().bytes());
  writeFile(folder_.path("run1.prt"), protocolText("usec", {"A\r\n1\r\n0 9\r\nColor: 1 2 3"}));
  writeFile(folder_.path("run1.ccd"), descriptionBytes("run1.ctc", "run1.prt", 2));
  ASSERT_EQ(run(answers("", "run1.ccd")).exitStatus, 0);
  EXPECT_THAT(folder_.names(),
              UnorderedElementsAre("eeg", "host-run", "run1.ccd", "run1.ctc", "run1.prt", "run1_GRA.ccd",
                                   "run1_GRA.ctc", "run1_GRA.prt", "run1_GRA_ArtifactsTriggers.prt"));
}

TEST_F(PathNames, MayHaveADotInTheFolderAndNoneInTheName) {
  fs::create_directory(path("v1.2"));
  const std::string ctc = write("v1.2/recording", shortNoise().bytes());
  write("v1.2/task.prt", protocolText("usec", {"A\r\n1\r\n0 9\r\nColor: 1 2 3"}));
  // The last four characters give way to the endings, whatever they are.
  ASSERT_EQ(run(answers(ctc, "", path("v1.2/task"))).exitStatus, 0);
  EXPECT_TRUE(exists(path("v1.2/recor_GRA.ctc")));
  EXPECT_TRUE(exists(path("v1.2/recor_GRA.prt")));
}

TEST_F(PathNames, MayBeLongerThanTheHostsDialogue) {
  // The dialogue takes the description's path; the recording's is longer.
  const std::string longFolder = std::string(200 - folder_.path().size(), 'f');
  const std::string longName = std::string(200, 'n');
  fs::create_directory(path(longFolder));
  const std::string prefix = longFolder + "/" + longName;
  write(prefix + ".ctc", shortNoise().bytes());
  write(prefix + ".prt", protocolText("usec", {"A\r\n1\r\n0 9\r\nColor: 1 2 3"}));
  const std::string ccd =
      write(longFolder + "/run1.ccd", descriptionBytes(longName + ".ctc", longName + ".prt", 2));
  ASSERT_LT(ccd.size(), 256u);
  ASSERT_GT(path(prefix + ".ctc").size(), 400u);

  const HostRunResult result = run(answers("", ccd));
  EXPECT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;
  for (const char* ending : {"_GRA.ctc", "_GRA.ccd", "_GRA.prt", "_GRA_ArtifactsTriggers.prt"})
    EXPECT_TRUE(exists(path(prefix + ending))) << ending;
  EXPECT_THAT(readFile(path(prefix + "_GRA.prt")), HasSubstr(path(prefix + ".ctc") + "\r\n"));
  EXPECT_EQ(readFile(path(prefix + "_GRA.ccd")).substr(ctcNameOffset, 208), longName + "_GRA.ctc");
}

TEST_F(PathNames, EndAtABackslashToo) {
  write("disk\\run1.ctc", shortNoise().bytes());
  const std::string ccd = write("disk\\run1.ccd", descriptionBytes("run1.ctc", "", 2));
  ASSERT_EQ(run(answers("", ccd)).exitStatus, 0);
  EXPECT_EQ(readFile(path("disk\\run1_GRA.ccd")).substr(ctcNameOffset, 13),
            std::string("run1_GRA.ctc\0", 13));
}

} // namespace
} // namespace emeg::test
