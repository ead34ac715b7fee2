#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// Notes the hooks among the host's calls and fails where a test asks for it.
template <typename Base>
class HookedConverter : public Base {
public:
  explicit HookedConverter(ScriptedHost& host) : host_(host) {}
  bool afterChunkFilesHook() override { return note("afterChunkFilesHook"); }
  bool firstOutputHook() override { return note("firstOutputHook"); }
  bool secondOutputHook() override { return note("secondOutputHook"); }
  std::string failing;

private:
  bool note(const std::string& hook) {
    host_.record("hook " + hook);
    return hook != failing;
  }
  ScriptedHost& host_;
};

/// What a run says after the parameters, without the lines about single chunks.
Lines stepsOf(const ScriptedHost& host) {
  Lines steps;
  bool reached = false;
  for (const std::string& call : host.calls) {
    if (call == "log " + line("Creating chunk #32/32")) reached = true;
    if (reached) steps.push_back(call);
  }
  return steps;
}

struct RunSequence : ::testing::Test {
  RunSequence() : chosen(countingRecording(2, 100)) {}

  /// A run whose only processing is an interval.
  template <typename Converter>
  bool runWithInterval(Converter& converter) {
    converter.options.correctArtifacts = false;
    converter.options.selectTimeInterval = true;
    chosen.host.floatAnswers = {100, 500};
    chosen.host.integerAnswers = {0};
    return converter.start();
  }
  ChosenRecording chosen;
};

TEST_F(RunSequence, TheHostVersionIsCheckedBeforeAnyDialogue) {
  chosen.host.hostVersion = {2, 0, 9};
  PluginConverter converter;
  EXPECT_FALSE(converter.start());
  EXPECT_EQ(
      chosen.host.calls,
      (Lines{"version", "box Can not execute this plugin - Lumetra version 2.1.0 or higher required."}));
  EXPECT_EQ(converter.requiredMajorVersion, 2);
  EXPECT_EQ(converter.requiredMinorVersion, 1);
  EXPECT_EQ(converter.requiredRevision, 0);
}

TEST_F(RunSequence, TheRefusalNamesTheVersionThatWasAskedFor) {
  LMTRPluginEMEGFileConverter converter(testLogPrefix, true);
  EXPECT_FALSE(converter.checkHostVersion(7, 8, 9));
  EXPECT_EQ(chosen.host.calls.back(),
            "box Can not execute this plugin - Lumetra version 7.8.9 or higher required.");
}

TEST_F(RunSequence, ANewerHostIsAccepted) {
  LMTRPluginEMEGFileConverter converter(testLogPrefix, true);
  chosen.host.hostVersion = {3, 0, 0};
  EXPECT_TRUE(converter.checkHostVersion(2, 9, 9));
  EXPECT_EQ(chosen.host.calls, Lines{"version"});
}

TEST_F(RunSequence, TheBaseCallsBothOutputHooksBetweenPrtAndCcd) {
  HookedConverter<QuietConverter> converter(chosen.host);
  EXPECT_TRUE(runWithInterval(converter));
  EXPECT_EQ(stepsOf(chosen.host),
            (Lines{"log " + line("Creating chunk #32/32"), "hook afterChunkFilesHook",
                   "log " + line("Writing CTC"), "hook firstOutputHook", "hook secondOutputHook",
                   "log " + line("Writing CCD"), "log " + line("Operations successfully executed!")}));
}

TEST_F(RunSequence, ThePreprocessorNeverCallsTheOutputHooks) {
  HookedConverter<PluginConverter> converter(chosen.host);
  EXPECT_TRUE(runWithInterval(converter));
  EXPECT_EQ(stepsOf(chosen.host), (Lines{"log " + line("Creating chunk #32/32"), "hook afterChunkFilesHook",
                                         "log " + line("Writing CTC"), "log " + line("Writing CCD"),
                                         "log " + line("Operations successfully executed!")}));
}

TEST_F(RunSequence, ProtocolsAreWrittenBeforeTheHooks) {
  writeFile(chosen.folder.path("stim.prt"), protocolText("usec", {}));
  chosen.host.fileAnswers[1] = chosen.folder.path("stim.prt");
  HookedConverter<QuietConverter> converter(chosen.host);
  EXPECT_TRUE(runWithInterval(converter));
  EXPECT_EQ(stepsOf(chosen.host)[3], "log " + line("Writing PRT"));
  EXPECT_EQ(stepsOf(chosen.host)[4], "hook firstOutputHook");
}

TEST_F(RunSequence, AFailedHookAfterTheChunkFilesEndsTheRunAndRemovesThem) {
  {
    HookedConverter<QuietConverter> converter(chosen.host);
    converter.failing = "afterChunkFilesHook";
    EXPECT_FALSE(runWithInterval(converter));
    EXPECT_EQ(chosen.host.calls.back(), "hook afterChunkFilesHook");
    EXPECT_EQ(chosen.folder.names().size(), 33u);
  }
  EXPECT_EQ(chosen.folder.names(), Lines{"run1.ctc"});
}

TEST_F(RunSequence, AFailedFirstOutputHookSkipsTheSecondAndTheCcd) {
  HookedConverter<QuietConverter> converter(chosen.host);
  converter.failing = "firstOutputHook";
  EXPECT_FALSE(runWithInterval(converter));
  EXPECT_EQ(chosen.host.calls.back(), "hook firstOutputHook");
  EXPECT_EQ(chosen.folder.names(), (Lines{"run1.ctc", "run1_100-500ms.ctc"}));
}

TEST_F(RunSequence, AFailedSecondOutputHookSkipsTheCcd) {
  HookedConverter<QuietConverter> converter(chosen.host);
  converter.failing = "secondOutputHook";
  EXPECT_FALSE(runWithInterval(converter));
  EXPECT_EQ(chosen.host.calls.back(), "hook secondOutputHook");
  EXPECT_FALSE(exists(chosen.folder.path("run1_100-500ms.ccd")));
}

TEST_F(RunSequence, ACancelledCorrectionChoiceWritesNothingAndLogsNoCompletion) {
  {
    PluginConverter converter;
    EXPECT_FALSE(converter.start());
  }
  const Lines log = chosen.host.logLines();
  EXPECT_EQ(log, (Lines{line("Defining parameters"), "// EMEG artifacts > No choice made. Exiting plugin.",
                        line("No processing is required: exiting plugin.")}));
  EXPECT_TRUE(chosen.host.boxes().empty());
  EXPECT_EQ(chosen.folder.names(), Lines{"run1.ctc"});
}

TEST_F(RunSequence, OfThePluginSpeaksInItsFixedOrder) {
  PluginConverter converter;
  chosen.host.integerAnswers = {1};
  chosen.host.yesNoAnswers = {1};
  EXPECT_TRUE(converter.start());
  Lines log = chosen.host.logLines();
  ASSERT_GT(log.size(), 36u);
  EXPECT_EQ(log[0], line("Defining parameters"));
  for (int chunk = 1; chunk <= 32; ++chunk)
    EXPECT_EQ(log[static_cast<size_t>(chunk)], line("Creating chunk #" + std::to_string(chunk) + "/32"));
  EXPECT_EQ(log[33], line("Processing channel #0"));
  EXPECT_EQ(log[34], line("Automatic detection of MR sequence parameters"));
  EXPECT_EQ(Lines(log.end() - 4, log.end()),
            (Lines{line("Writing CTC"), line("Writing PRT"), line("Writing CCD"),
                   line("Operations successfully executed!")}));
  EXPECT_TRUE(chosen.host.logged(line("Processing channel #1")));
  EXPECT_EQ(chosen.folder.names(),
            (Lines{"run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA_ArtifactsTriggers.prt"}));
}

TEST_F(RunSequence, AnOutputOfAnEarlierRunIsReplaced) {
  writeFile(chosen.folder.path("run1_100-500ms.ctc"), "old");
  writeFile(chosen.folder.path("run1_100-500ms.ccd"), "old");
  QuietConverter converter;
  EXPECT_TRUE(runWithInterval(converter));
  EXPECT_EQ(readOutput(chosen.folder.path("run1_100-500ms.ctc")).nrOfTimePoints(), 40);
  EXPECT_EQ(readFile(chosen.folder.path("run1_100-500ms.ccd")).size(), 584u + 2 * 420);
}

TEST(Converter, DataOrderDecidesWhetherBytesAreSwapped) {
  ScriptedHost host;
  EXPECT_EQ(LMTRPluginEMEGFileConverter(testLogPrefix, true).swapBytes, !hostIsLittleEndian);
  EXPECT_EQ(LMTRPluginEMEGFileConverter(testLogPrefix, false).swapBytes, hostIsLittleEndian);
}

TEST(Converter, StartsWithTheDefaultsOfAGeneralConverter) {
  ScriptedHost host;
  const LMTRPluginEEGFileConverter converter("prefix > ", true);
  EXPECT_TRUE(converter.options.isEEG);
  EXPECT_TRUE(converter.options.selectChannels);
  EXPECT_TRUE(converter.options.selectTimeInterval);
  EXPECT_FALSE(converter.options.applyFilters);
  EXPECT_FALSE(converter.options.correctArtifacts);
  EXPECT_TRUE(converter.options.applyScaling);
  EXPECT_FALSE(converter.options.offerAverageReference);
  EXPECT_TRUE(converter.options.forceHeaderUpdate);
  EXPECT_FALSE(converter.options.parametersFromDialog);
  EXPECT_STREQ(converter.log.logBuffer(), "prefix > ");
  EXPECT_TRUE(host.calls.empty());
}

} // namespace
} // namespace emeg
