#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

std::string head(const std::string& resolution, const std::string& experiment, int nrOfConditions) {
  return "\r\nFileVersion:        2\r\n"
         "\r\nResolutionOfTime:   " +
         resolution +
         "\r\n"
         "\r\nExperiment:         " +
         experiment +
         "\r\n"
         "\r\nBackgroundColor:    0 0 0"
         "\r\nTextColor:          255 255 255"
         "\r\nTimeCourseColor:    192 192 192"
         "\r\nTimeCourseThick:    2"
         "\r\nReferenceFuncColor: 0 0 80"
         "\r\nReferenceFuncThick: 2"
         "\r\n"
         "\r\nNrOfConditions:     " +
         std::to_string(nrOfConditions);
}

struct WriteProtocols : ::testing::Test {
  WriteProtocols() {
    pretendInput(converter, 2, 1000, 100);
    converter.inputPathBuffer = PathBuffer(folder.path("run1.ctc"));
    converter.outputPathBuffer = PathBuffer(folder.path("run1.ctc"));
    converter.values.outputSuffix = "_GRA";
    converter.values.intervalStartMs = 0;
    converter.values.intervalEndMs = 10000;
  }
  Protocol& add(const std::string& name = "", bool interactive = false) {
    Protocol protocol(interactive, name, TimeResolution::Usec);
    protocol.startConditions();
    converter.protocolList.append(protocol);
    return converter.protocolList.current();
  }
  static void addCondition(Protocol& protocol, const std::string& name,
                           const std::vector<std::pair<double, double>>& intervals) {
    protocol.findOrAddCondition(name, -1, 10, 20, 30);
    for (const auto& [onset, offset] : intervals) protocol.addInterval(onset, offset);
  }
  std::string experiment() const { return folder.path("run1.ctc"); }
  std::string written(const std::string& name) const { return readFile(folder.path(name)); }

  TestFolder folder;
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(WriteProtocols, NoProtocolWritesAndLogsNothing) {
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_TRUE(folder.names().empty());
}

TEST_F(WriteProtocols, EveryItemBeginsWithALineBreak) {
  Protocol& protocol = add();
  addCondition(protocol, "Left hand", {{1000, 2000}, {3000, 4000.6}});
  addCondition(protocol, "Code 12", {{5, 6}});
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(host.calls, Lines{"log " + line("Writing PRT")});
  EXPECT_EQ(written("run1_GRA.prt"), head("usec", experiment(), 2) + "\r\n\r\nCode12"
                                                                     "\r\n1"
                                                                     "\r\n         5             6"
                                                                     "\r\nColor:              10 20 30"
                                                                     "\r\n\r\nLeft_hand"
                                                                     "\r\n2"
                                                                     "\r\n      1000          2000"
                                                                     "\r\n      3000          4001"
                                                                     "\r\nColor:              10 20 30");
  EXPECT_EQ(converter.channels.channelDescription.header.prtFileName(), "run1_GRA.prt");
}

TEST_F(WriteProtocols, AProtocolWithoutConditionsIsAHeadAlone) {
  add();
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(written("run1_GRA.prt"), head("usec", experiment(), 0));
}

TEST_F(WriteProtocols, TheTriggersGoToAFileOfTheirOwnAndLeaveTheDescriptionAlone) {
  add("_ArtifactsTriggers");
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(folder.names(), Lines{"run1_GRA_ArtifactsTriggers.prt"});
  EXPECT_EQ(converter.channels.channelDescription.header.prtFileName(), "");
}

TEST_F(WriteProtocols, NewTriggersReplaceThoseOfAnEarlierRun) {
  addCondition(add("_ArtifactsTriggers"), "MRGradientTriggers", {{1, 1}});
  addCondition(add("_ArtifactsTriggers"), "MRGradientTriggers", {{7, 7}, {9, 9}});
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(written("run1_GRA_ArtifactsTriggers.prt"), head("usec", experiment(), 1) +
                                                           "\r\n\r\nMRGradientTriggers"
                                                           "\r\n2"
                                                           "\r\n         7             7"
                                                           "\r\n         9             9"
                                                           "\r\nColor:              10 20 30");
}

TEST_F(WriteProtocols, IntervalsAreCutToTheExportedIntervalAndShifted) {
  converter.values.intervalStartMs = 1;
  converter.values.intervalEndMs = 3;
  Protocol& protocol = add();
  addCondition(protocol, "A gone", {{0, 500}, {3001, 4000}});
  addCondition(protocol, "B cut", {{500, 1500}, {2500, 9000}, {0, 999}, {100, 8000}});
  addCondition(protocol, "C edges", {{1000, 1000}, {3000, 3000}});
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(written("run1_GRA.prt"), head("usec", experiment(), 2) + "\r\n\r\nB_cut"
                                                                     "\r\n3"
                                                                     "\r\n         0           500"
                                                                     "\r\n      1500          2000"
                                                                     "\r\n         0          2000"
                                                                     "\r\nColor:              10 20 30"
                                                                     "\r\n\r\nC_edges"
                                                                     "\r\n2"
                                                                     "\r\n         0             0"
                                                                     "\r\n      2000          2000"
                                                                     "\r\nColor:              10 20 30");
}

TEST_F(WriteProtocols, MissingColoursAreGivenBeforeConditionsAreDropped) {
  converter.values.intervalStartMs = 1;
  Protocol& protocol = add();
  protocol.findOrAddCondition("A", -1, -1, 0, 0);
  protocol.addInterval(0, 1); // in front of the interval
  protocol.findOrAddCondition("B", -1, -1, 0, 0);
  protocol.addInterval(5000, 5000);
  EXPECT_TRUE(converter.writeProtocols());
  const std::string text = written("run1_GRA.prt");
  EXPECT_NE(text.find("NrOfConditions:     1"), std::string::npos);
  EXPECT_NE(text.find("Color:              0 255 255"), std::string::npos) << "the second of two hues";
}

TEST_F(WriteProtocols, MillisecondAndVolumeProtocolsAreWrittenInTheirOwnUnit) {
  Protocol& msec = add();
  msec.resolutionOfTime = TimeResolution::Msec;
  addCondition(msec, "A", {{123000, 456000}});
  Protocol& volumes = add("_v");
  volumes.resolutionOfTime = TimeResolution::Volumes;
  addCondition(volumes, "A", {{100000, 250000}});
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(written("run1_GRA.prt"), head("msec", experiment(), 1) +
                                         "\r\n\r\nA\r\n1\r\n       123           456"
                                         "\r\nColor:              10 20 30");
  EXPECT_EQ(written("run1_GRA_v.prt"), head("Volumes", experiment(), 1) +
                                           "\r\n\r\nA\r\n1\r\n        10            25"
                                           "\r\nColor:              10 20 30");
}

TEST_F(WriteProtocols, CustomisationAsksForNamesAndDelays) {
  Protocol& protocol = add("", true);
  addCondition(protocol, "Left hand", {{1000, 2000}});
  addCondition(protocol, "Right", {{3000, 4000}});
  host.yesNoAnswers = {1};
  host.textAnswers = {"Links", "Rechts"};
  host.floatAnswers = {0, 2.5f};
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(host.calls,
            (Lines{"log " + line("Writing PRT"), "parameter 5",
                   "yesno Writing protocol (3 conditions).<br>"
                   "Do you want to customize condition names and delays?",
                   "text Please provide alternate name for Condition01_Left_hand. [Condition01_Left_hand]",
                   "float Please provide a delay (in ms) for Links.<br>"
                   "Leave 0 to keep header information. [0, 0, 3000]",
                   "text Please provide alternate name for Condition02_Right. [Condition02_Right]",
                   "float Please provide a delay (in ms) for Rechts.<br>"
                   "Leave 0 to keep header information. [0, 0, 3000]"}));
  EXPECT_EQ(written("run1_GRA.prt"), head("usec", experiment(), 2) +
                                         "\r\n\r\nLinks\r\n1\r\n      1000          2000"
                                         "\r\nColor:              10 20 30"
                                         "\r\n\r\nRechts\r\n1\r\n      3000          6500"
                                         "\r\nColor:              10 20 30");
}

TEST_F(WriteProtocols, CustomisationDeclinedKeepsTheNumberedLabels) {
  addCondition(add("", true), "Code 7", {{1, 2}});
  host.yesNoAnswers = {0};
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(host.questions().size(), 1u);
  EXPECT_NE(written("run1_GRA.prt").find("\r\nCondition01_Code7\r\n"), std::string::npos);
}

TEST_F(WriteProtocols, TheHostsDialogueMayAnswerWhetherToCustomise) {
  addCondition(add("", true), "A", {{1, 2}});
  host.dialogIntegers[5] = 1; // one less: no
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_TRUE(host.questions().empty());

  converter.protocolList = ProtocolList();
  addCondition(add("", true), "A", {{1, 2}});
  host.dialogIntegers[5] = 2; // one less: yes
  host.textAnswers = {"B"};
  host.floatAnswers = {0};
  EXPECT_TRUE(converter.writeProtocols());
  EXPECT_EQ(host.questions().size(), 2u);
  EXPECT_TRUE(host.texts("yesno").empty());
}

TEST_F(WriteProtocols, AnEmptyNameAbortsAndLeavesNoFile) {
  addCondition(add("", true), "A", {{1, 2}});
  host.yesNoAnswers = {1};
  EXPECT_FALSE(converter.writeProtocols());
  EXPECT_EQ(host.logLines(), (Lines{line("Writing PRT"), "", line("Plugin execution was aborted.")}));
  EXPECT_TRUE(folder.names().empty());
}

TEST_F(WriteProtocols, ANegativeDelayAbortsAndLeavesTheOldFile) {
  writeFile(folder.path("run1_GRA.prt"), "old");
  addCondition(add("", true), "A", {{1, 2}});
  host.yesNoAnswers = {1};
  host.textAnswers = {"B"};
  EXPECT_FALSE(converter.writeProtocols());
  EXPECT_TRUE(host.logged(line("Plugin execution was aborted.")));
  EXPECT_EQ(folder.names(), Lines{"run1_GRA.prt"});
  EXPECT_EQ(written("run1_GRA.prt"), "old");
}

TEST_F(WriteProtocols, AFileThatCannotBeCreatedIsReported) {
  std::filesystem::create_directory(folder.path("run1_GRA.prt"));
  add();
  EXPECT_FALSE(converter.writeProtocols());
  EXPECT_EQ(host.boxes(), Lines{"Error accessing PRT file.<br>Is a directory."});
}

TEST_F(WriteProtocols, ANameTooLongForTheFileSystemIsReportedLikeAnyFileThatCannotBeCreated) {
  converter.outputPathBuffer = PathBuffer(folder.path(std::string(240, 'n') + ".ctc"));
  add("_ArtifactsTriggers");
  EXPECT_FALSE(converter.writeProtocols());
  EXPECT_EQ(host.boxes(), Lines{"Error accessing PRT file.<br>Filename too long."});
  EXPECT_TRUE(folder.names().empty());
}

/// A protocol beside the input comes out of a run with the numbers that it went in with.
struct ProtocolRoundTrip : ::testing::TestWithParam<const char*> {};

TEST_P(ProtocolRoundTrip, OfAnUnrestrictedRunKeepsAllNumbers) {
  ChosenRecording chosen(countingRecording(2, 1000, 97)); // 10.3 s
  const std::string times = GetParam() == std::string("usec") ? "1234567 9876543" : "33 777";
  writeFile(chosen.folder.path("stim.prt"), protocolText(GetParam(), {"A\r\n1\r\n" + times + "\r\n1 2 3"}));
  chosen.host.fileAnswers[1] = chosen.folder.path("stim.prt");
  chosen.host.integerAnswers = {1};
  chosen.host.yesNoAnswers = {1};
  PluginConverter converter;
  EXPECT_TRUE(converter.start());
  const std::string number = times.substr(0, times.find(' '));
  const std::string other = times.substr(times.find(' ') + 1);
  EXPECT_EQ(readFile(chosen.folder.path("run1_GRA.prt")),
            head(GetParam(), chosen.ctcPath(), 1) + "\r\n\r\nA\r\n1\r\n" +
                std::string(10 - number.size(), ' ') + number + std::string(14 - other.size(), ' ') + other +
                "\r\nColor:              1 2 3");
}

INSTANTIATE_TEST_SUITE_P(AllResolutions, ProtocolRoundTrip, ::testing::Values("usec", "msec", "Volumes"));

} // namespace
} // namespace emeg
