#include "files/formats/ProtocolFile.h"

#include "tests/files/ScratchFolder.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace emeg {
namespace {

using Times = std::vector<double>;

const std::string head = "\r\nFileVersion:        2\r\n"
                         "\r\nResolutionOfTime:   usec\r\n"
                         "\r\nExperiment:         D:/eeg/run1.ctc\r\n"
                         "\r\nBackgroundColor:    0 0 0"
                         "\r\nTextColor:          255 255 255"
                         "\r\nTimeCourseColor:    192 192 192"
                         "\r\nTimeCourseThick:    2"
                         "\r\nReferenceFuncColor: 0 0 80"
                         "\r\nReferenceFuncThick: 2\r\n";

const std::string twoConditions = head + "\r\nNrOfConditions:     2"
                                         "\r\n"
                                         "\r\nCode12"
                                         "\r\n2"
                                         "\r\n      1000          2000"
                                         "\r\n      3000       4000000"
                                         "\r\nColor:              255 64 64"
                                         "\r\n"
                                         "\r\nleft_hand"
                                         "\r\n1"
                                         "\r\n         0             0"
                                         "\r\nColor:              0 255 255";

/// `text` behind the least that a protocol needs.
std::optional<Protocol> parsed(const std::string& text) {
  return parseProtocol("ResolutionOfTime: usec\r\nNrOfConditions: " + text, "");
}

std::string formatted(const Protocol& protocol, double timeFactor = 1.0) {
  std::vector<std::string> labels(1);
  for (int c = 1; c < protocol.nrOfConditions(); ++c) labels.push_back(conditionLabel(protocol, c));
  return formatProtocol(protocol, "D:/eeg/run1.ctc", timeFactor, labels, Times(labels.size()));
}

TEST(ProtocolFile, IsWrittenByteForByte) {
  Protocol protocol;
  protocol.startConditions();
  protocol.findOrAddCondition("left hand", 1, 0, 255, 255);
  protocol.addInterval(0, 0);
  protocol.findOrAddCondition("Code 12", 2, 255, 64, 64);
  protocol.addInterval(1000, 2000);
  protocol.addInterval(3000, 4000000);
  EXPECT_EQ(formatted(protocol), twoConditions);
}

TEST(ProtocolFile, ReadsBackWhatWasWritten) {
  const std::optional<Protocol> protocol = parseProtocol(twoConditions, "_Suffix");
  ASSERT_TRUE(protocol.has_value());
  EXPECT_FALSE(protocol->interactive);
  EXPECT_EQ(protocol->name, "_Suffix");
  EXPECT_EQ(protocol->resolutionOfTime, TimeResolution::Usec);
  ASSERT_EQ(protocol->nrOfConditions(), 3);
  EXPECT_EQ(protocol->conditions[0].conditionName, "");
  EXPECT_EQ(protocol->conditions[1].conditionName, "Code12");
  EXPECT_EQ(protocol->conditions[1].onsets, (Times{1000, 3000}));
  EXPECT_EQ(protocol->conditions[1].offsets, (Times{2000, 4000000}));
  ASSERT_TRUE(protocol->conditions[1].colour.has_value());
  EXPECT_EQ(protocol->conditions[1].colour->r, 255);
  EXPECT_EQ(protocol->conditions[1].colour->g, 64);
  EXPECT_EQ(protocol->conditions[1].colour->b, 64);
  EXPECT_EQ(protocol->conditions[2].conditionName, "left_hand");
  EXPECT_EQ(protocol->conditions[2].onsets, Times{0});
  EXPECT_EQ(formatted(*protocol), twoConditions);
}

TEST(ProtocolFile, WithoutConditionsIsOnlyThePlaceholder) {
  const std::string text = head + "\r\nNrOfConditions:     0";
  const std::optional<Protocol> protocol = parseProtocol(text, "");
  ASSERT_TRUE(protocol.has_value());
  EXPECT_EQ(protocol->nrOfConditions(), 1);
  EXPECT_EQ(formatted(*protocol), text);
  Protocol notStarted;
  EXPECT_EQ(formatted(notStarted), text);
}

TEST(ProtocolFile, NumbersHaveNoDecimalsAndAreRightAligned) {
  Protocol protocol;
  protocol.startConditions();
  protocol.findOrAddCondition("a", 1, 1, 2, 3);
  protocol.addInterval(1234.6, 123456789012345.0);
  EXPECT_NE(formatted(protocol).find("\r\n      1235123456789012345\r\n"), std::string::npos);
  protocol.conditions[1].offsets[0] = 12345678901234.0;
  EXPECT_NE(formatted(protocol).find("\r\n      123512345678901234\r\n"), std::string::npos);
  protocol.conditions[1].offsets[0] = 2345.4;
  EXPECT_NE(formatted(protocol).find("\r\n      1235          2345\r\n"), std::string::npos);
}

TEST(ProtocolFile, TimesAreScaledAndOffsetsDelayed) {
  Protocol protocol(false, "", TimeResolution::Msec);
  protocol.startConditions();
  protocol.findOrAddCondition("a", 1, 1, 2, 3);
  protocol.addInterval(5000, 6000);
  const std::string text = formatProtocol(protocol, "x", 0.001, {"", "renamed"}, {0.0, 250000.0});
  EXPECT_NE(text.find("\r\nResolutionOfTime:   msec\r\n"), std::string::npos);
  EXPECT_NE(text.find("\r\nrenamed\r\n1\r\n         5           256\r\n"), std::string::npos) << text;
}

TEST(ProtocolFile, EveryUnitHasItsWord) {
  Protocol protocol(false, "", TimeResolution::Volumes);
  EXPECT_NE(formatted(protocol).find("\r\nResolutionOfTime:   Volumes\r\n\r\nExperiment:"),
            std::string::npos);
  protocol.resolutionOfTime = static_cast<TimeResolution>(7);
  EXPECT_EQ(formatted(protocol).find("ResolutionOfTime"), std::string::npos);
  EXPECT_EQ(formatted(protocol).rfind("\r\nFileVersion:        2\r\n\r\n\r\nExperiment:", 0), 0u);
}

TEST(ProtocolFile, MissingEntriesMeanTheOrdinaryLabelAndNoDelay) {
  Protocol protocol;
  protocol.startConditions();
  protocol.findOrAddCondition("left hand", 1, -1, -1, -1);
  protocol.addInterval(1, 2);
  const std::string text = formatProtocol(protocol, "x", 1, {}, {});
  EXPECT_NE(text.find("\r\nleft_hand\r\n1\r\n         1             2\r\nColor:              0 0 0"),
            std::string::npos);
}

TEST(ProtocolFile, HugeTimesAreWrittenInFull) {
  Protocol protocol;
  protocol.startConditions();
  protocol.findOrAddCondition("a", 1, 1, 2, 3);
  constexpr double largest = std::numeric_limits<double>::max();
  protocol.addInterval(-largest, largest);
  EXPECT_GT(formatted(protocol).size(), 2 * 309u);
  protocol.addInterval(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity());
  EXPECT_NE(formatted(protocol).find("inf"), std::string::npos);
}

TEST(ProtocolFile, UnitsAreReadByTheirFirstLetters) {
  const auto resolutionOf = [](const std::string& unit) {
    const std::optional<Protocol> protocol =
        parseProtocol("ResolutionOfTime" + unit + "\r\nNrOfConditions: 0", "");
    EXPECT_TRUE(protocol.has_value());
    return protocol ? protocol->resolutionOfTime : TimeResolution::Usec;
  };
  EXPECT_EQ(resolutionOf(":   usec"), TimeResolution::Usec);
  EXPECT_EQ(resolutionOf(":   msec"), TimeResolution::Msec);
  EXPECT_EQ(resolutionOf(":\t \tVolumes"), TimeResolution::Volumes);
  EXPECT_EQ(resolutionOf("msec"), TimeResolution::Msec);
  EXPECT_EQ(resolutionOf(" : :Volu"), TimeResolution::Volumes);
  EXPECT_EQ(resolutionOf(": MSEC"), TimeResolution::Usec);
  EXPECT_EQ(resolutionOf(": mse"), TimeResolution::Usec);
  EXPECT_EQ(resolutionOf(":\r\nmsec"), TimeResolution::Usec) << "the unit stands on the keyword's line";
}

TEST(ProtocolFile, WithoutAKeywordIsNone) {
  EXPECT_FALSE(parseProtocol("", "").has_value());
  EXPECT_FALSE(parseProtocol("NrOfConditions: 1\r\na\r\n0\r\nColor: 1 2 3", "").has_value());
  EXPECT_FALSE(parseProtocol("ResolutionOfTime: usec", "").has_value());
  EXPECT_FALSE(parseProtocol("resolutionoftime: usec NrOfConditions: 0", "").has_value());
  EXPECT_FALSE(parseProtocol("NrOfConditions: 0 ResolutionOfTime: usec", "").has_value())
      << "the count is looked for behind the unit";
}

TEST(ProtocolFile, KeywordsAreFoundAnywhere) {
  const std::optional<Protocol> protocol =
      parseProtocol("xResolutionOfTime msec junk NrOfConditions 1\na\n1 5 6 Color 1 2 3", "");
  ASSERT_TRUE(protocol.has_value());
  ASSERT_EQ(protocol->nrOfConditions(), 2);
  EXPECT_EQ(protocol->conditions[1].onsets, Times{5});
}

TEST(ProtocolFile, BlanksBehindANumberAreNoName) {
  const std::optional<Protocol> protocol = parsed(
      "2 \t\r\n\r\nfirst\r\n1 \r\n 1 2\t\r\nColor: 1 2 3  \t \r\n\r\n second one \r\n0\r\nColor: 4 5 6 ");
  ASSERT_TRUE(protocol.has_value());
  ASSERT_EQ(protocol->nrOfConditions(), 3);
  EXPECT_EQ(protocol->conditions[1].conditionName, "first");
  EXPECT_EQ(protocol->conditions[1].onsets, Times{1});
  EXPECT_EQ(protocol->conditions[2].conditionName, " second one ") << "a name keeps its own blanks";
  EXPECT_EQ(protocol->conditions[2].colour->b, 6);
}

TEST(ProtocolFile, DigitsInANameAreNotCounted) {
  const std::optional<Protocol> protocol = parsed("1\r\nCode 12 - 3\r\n1\r\n7 8\r\nColor: 1 2 3");
  ASSERT_TRUE(protocol.has_value());
  EXPECT_EQ(protocol->conditions[1].conditionName, "Code 12 - 3");
  EXPECT_EQ(protocol->conditions[1].offsets, Times{8});
}

TEST(ProtocolFile, NumbersMayHaveSignsAndAnythingBetween) {
  const std::optional<Protocol> protocol = parsed("+1\na\n2\n-10,+20;x-30y40\nColor:-1/+2-3");
  ASSERT_TRUE(protocol.has_value());
  EXPECT_EQ(protocol->conditions[1].onsets, (Times{-10, -30}));
  EXPECT_EQ(protocol->conditions[1].offsets, (Times{20, 40}));
  EXPECT_EQ(protocol->conditions[1].colour->r, -1);
  EXPECT_EQ(protocol->conditions[1].colour->g, 2);
  EXPECT_EQ(protocol->conditions[1].colour->b, -3);
}

TEST(ProtocolFile, ASignAloneIsZeroAndOneSignIsSkipped) {
  const std::optional<Protocol> protocol = parsed("1\na\n1\n- 7\nColor: --5 6");
  ASSERT_TRUE(protocol.has_value());
  EXPECT_EQ(protocol->conditions[1].onsets, Times{0});
  EXPECT_EQ(protocol->conditions[1].offsets, Times{7});
  EXPECT_EQ(protocol->conditions[1].colour->r, 0);
  EXPECT_EQ(protocol->conditions[1].colour->g, -5);
}

TEST(ProtocolFile, ANegativeCountIsZero) {
  EXPECT_EQ(parsed("-3\r\na\r\n")->nrOfConditions(), 1);
  const std::optional<Protocol> protocol = parsed("1\r\na\r\n-2\r\nColor: 1 2 3");
  EXPECT_EQ(protocol->conditions[1].nrOfIntervals(), 0);
  EXPECT_EQ(protocol->conditions[1].colour->b, 3);
}

TEST(ProtocolFile, HugeNumbersAreHeldAtTheLargest) {
  const std::optional<Protocol> protocol =
      parsed("1\r\na\r\n1\r\n-99999999999999999999999 9223372036854775807\r\nColor: 99999 -99999 5");
  EXPECT_EQ(protocol->conditions[1].onsets, Times{-9223372036854775807.0});
  EXPECT_EQ(protocol->conditions[1].offsets, Times{9223372036854775807.0});
  EXPECT_EQ(protocol->conditions[1].colour->r, 32767);
  EXPECT_EQ(protocol->conditions[1].colour->g, -32768);
}

TEST(ProtocolFile, HugeCountsEndWithTheText) {
  const std::optional<Protocol> manyIntervals = parsed("1\r\na\r\n99999999999999999999\r\n1 2\r\n3 4\r\n5");
  ASSERT_TRUE(manyIntervals.has_value());
  EXPECT_EQ(manyIntervals->conditions[1].onsets, (Times{1, 3})) << "a half interval is left out";
  EXPECT_FALSE(manyIntervals->conditions[1].colour.has_value());
  EXPECT_LT(manyIntervals->conditions[1].onsets.capacity(), 100u);

  const std::optional<Protocol> manyConditions = parsed("2147483647\r\na\r\n0\r\nColor: 1 2 3\r\n");
  ASSERT_TRUE(manyConditions.has_value());
  EXPECT_EQ(manyConditions->nrOfConditions(), 2) << "conditions without any text do not exist";
}

TEST(ProtocolFile, OnlyTheFirst255ConditionsAreRead) {
  std::string text = "300\r\n";
  for (int c = 1; c <= 300; ++c) text += "\r\nc" + std::to_string(c) + "\r\n0\r\nColor: 1 2 3\r\n";
  const std::optional<Protocol> protocol = parsed(text);
  ASSERT_TRUE(protocol.has_value());
  EXPECT_EQ(protocol->nrOfConditions(), 256);
  EXPECT_EQ(protocol->conditions[255].conditionName, "c255");
}

TEST(ProtocolFile, CutAnywhereGivesThePartThatIsThere) {
  const size_t keyword = twoConditions.find("NrOfConditions") + std::string("NrOfConditions").size();
  int mostIntervals = 0;
  for (size_t size = 0; size <= twoConditions.size(); ++size) {
    const std::optional<Protocol> protocol = parseProtocol(twoConditions.substr(0, size), "");
    ASSERT_EQ(protocol.has_value(), size >= keyword) << size;
    if (!protocol) continue;
    int nrOfIntervals = 0;
    for (const Condition& condition : protocol->conditions) {
      ASSERT_EQ(condition.onsets.size(), condition.offsets.size());
      nrOfIntervals += condition.nrOfIntervals();
    }
    ASSERT_GE(nrOfIntervals, mostIntervals) << "a longer text never holds less";
    mostIntervals = nrOfIntervals;
  }
  EXPECT_EQ(mostIntervals, 3);
}

TEST(ProtocolFile, ZeroBytesAreOrdinaryCharacters) {
  std::string text = twoConditions;
  text.insert(0, 3, '\0');
  text.insert(text.find("Code12") + 2, 1, '\0');
  const std::optional<Protocol> protocol = parseProtocol(text, "");
  ASSERT_TRUE(protocol.has_value());
  EXPECT_EQ(protocol->conditions[1].conditionName, std::string("Co\0de12", 7));
  EXPECT_EQ(protocol->conditions[2].conditionName, "left_hand");
}

TEST(ProtocolFile, AnyTextGivesAConsistentProtocolOrNone) {
  std::mt19937 random(4);
  const std::string alphabet("0123456789+- \t\r\nabC:\0\xff", 22);
  int nrOfProtocols = 0;
  for (int i = 0; i < 6000; ++i) {
    std::string text = i % 3 == 0 ? std::string() : twoConditions;
    if (text.empty()) {
      text = i % 2 == 0 ? "ResolutionOfTime: Volumes\nNrOfConditions: " : "";
      for (size_t n = random() % 400; n > 0; --n) text += alphabet[random() % alphabet.size()];
    }
    for (size_t n = random() % 8; n > 0 && !text.empty(); --n) {
      const size_t at = random() % text.size();
      switch (random() % 3) {
      case 0:
        text[at] = static_cast<char>(random());
        break;
      case 1:
        text.insert(at, random() % 30, alphabet[random() % alphabet.size()]);
        break;
      default:
        text.erase(at, random() % 20);
      }
    }
    const std::optional<Protocol> protocol = parseProtocol(text, "");
    if (!protocol) continue;
    ++nrOfProtocols;
    ASSERT_GE(protocol->nrOfConditions(), 1);
    ASSERT_LE(protocol->nrOfConditions(), Protocol::maxNrOfConditions);
    size_t nrOfIntervals = 0;
    for (const Condition& condition : protocol->conditions) {
      ASSERT_EQ(condition.onsets.size(), condition.offsets.size());
      nrOfIntervals += condition.onsets.size();
    }
    ASSERT_LE(nrOfIntervals, text.size());
    Protocol cut = *protocol;
    assignMissingColours(cut);
    cutToInterval(cut, 500, 1e6);
    ASSERT_FALSE(formatted(cut).empty());
  }
  EXPECT_GT(nrOfProtocols, 2000);
}

TEST(ProtocolFile, IsLoadedFromBaseSuffixAndEnding) {
  ScratchFolder folder;
  folder.write("run1_ArtifactsTriggers.prt", twoConditions);
  const std::optional<Protocol> protocol = loadProtocol(folder.path("run1"), "_ArtifactsTriggers");
  ASSERT_TRUE(protocol.has_value());
  EXPECT_EQ(protocol->name, "_ArtifactsTriggers");
  EXPECT_EQ(protocol->nrOfConditions(), 3);
  EXPECT_FALSE(loadProtocol(folder.path("run1"), "").has_value());
  std::filesystem::create_directory(folder.path("folder.prt"));
  EXPECT_FALSE(loadProtocol(folder.path("folder"), "").has_value());
  folder.write("none.prt", "no protocol");
  EXPECT_FALSE(loadProtocol(folder.path("none"), "").has_value());
  folder.write("empty.prt", "");
  EXPECT_FALSE(loadProtocol(folder.path("empty"), "").has_value());
}

TEST(ProtocolFile, TooLargeToBeAProtocolIsNotLoaded) {
  ScratchFolder folder;
  folder.write("large.prt", twoConditions);
  ASSERT_TRUE(loadProtocol(folder.path("large"), "").has_value());
  std::filesystem::resize_file(folder.path("large.prt"), (uintmax_t{256} << 20) + 1);
  EXPECT_FALSE(loadProtocol(folder.path("large"), "").has_value());
}

TEST(ProtocolFile, TimesOfEveryUnitSurviveTheWayThroughMicroseconds) {
  for (const auto& [word, resolution] :
       {std::pair("msec", TimeResolution::Msec), std::pair("Volumes", TimeResolution::Volumes),
        std::pair("usec", TimeResolution::Usec)}) {
    std::string text = twoConditions;
    text.replace(text.find("usec"), 4, word);
    std::optional<Protocol> protocol = parseProtocol(text, "");
    ASSERT_TRUE(protocol.has_value());
    ASSERT_EQ(protocol->resolutionOfTime, resolution);
    const double factor = timeFactorOf(resolution, 5000.0 / 3.0);
    scaleTimes(*protocol, 1.0 / factor);
    EXPECT_EQ(formatted(*protocol, factor), text);
  }
}

} // namespace
} // namespace emeg
