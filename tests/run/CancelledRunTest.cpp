#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

namespace emeg::test {
namespace {

using nlohmann::json;

/// Every one of these runs ends early: status 1, and the folder as it was.
class CancelledRun : public PluginRun {
protected:
  void expectCalls(const json& answers, ExpectedCalls expected) const {
    const std::map<std::string, std::string> before = contents();
    const HostRunResult result = run(answers);
    EXPECT_EQ(differenceOf(withoutMeasuredNumbers(result.transcript).calls, expected.returns(false)), "");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(contents(), before);
  }

  /// All calls up to the detected sequence of scannedWithVolumeGaps().
  static ExpectedCalls upToTheWindow(const std::string& ctc) {
    return ExpectedCalls::ofARun()
        .choosesOnly(ctc)
        .definesParameters()
        .createsChunks()
        .logs("Processing channel #0")
        .logs("Automatic detection of MR sequence parameters")
        .logs("Number of volumes: 12")
        .logs("Number of slices per volume: 10")
        .logs("First slice: 0")
        .logs("Volume duration (s): #")
        .logs("Slice duration (s): #")
        .logs("First trigger time (s): #")
        .logs("Writing MR gradient triggers");
  }
};

TEST_F(CancelledRun, SaysThatItNeedsARecordingWhenNoneIsChosen) {
  write(shortNoise());
  expectCalls(answers(""), ExpectedCalls::ofARun().choosesNo("CCD").choosesNo("PRT").choosesNo("CTC").shows(
                               "This plugin requires a CTC file."));
}

TEST_F(CancelledRun, SaysThatItNeedsARecordingAlsoBehindAProtocol) {
  const std::string prt = write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  expectCalls(answers("", "", prt), ExpectedCalls::ofARun()
                                        .choosesNo("CCD")
                                        .chooses("PRT", prt)
                                        .choosesNo("CTC")
                                        .shows("This plugin requires a CTC file."));
}

TEST_F(CancelledRun, EndsWithoutAnythingToDoWhenTheCorrectionChoiceIsCancelled) {
  const std::string ctc = write(shortNoise());
  expectCalls(answersInOrder(ctc, {nullptr}), ExpectedCalls::ofARun()
                                                  .choosesOnly(ctc)
                                                  .logs("Defining parameters")
                                                  .asksCorrection(-1)
                                                  .logs("No choice made. Exiting plugin.")
                                                  .logs("No processing is required: exiting plugin."));
}

TEST_F(CancelledRun, EndsWithoutAnythingToDoWhenTheCorrectionChoiceIsZero) {
  const std::string ctc = write(shortNoise());
  expectCalls(answersInOrder(ctc, {0}), ExpectedCalls::ofARun()
                                            .choosesOnly(ctc)
                                            .logs("Defining parameters")
                                            .asksCorrection(0)
                                            .logs("No processing is required: exiting plugin."));
}

TEST_F(CancelledRun, EndsWithoutAnythingToDoWhenTheCorrectionChoiceIsNotInTheMenu) {
  const std::string ctc = write(shortNoise());
  expectCalls(answersInOrder(ctc, {3}), ExpectedCalls::ofARun()
                                            .choosesOnly(ctc)
                                            .logs("Defining parameters")
                                            .asksCorrection(3)
                                            .logs("No processing is required: exiting plugin."));
}

TEST_F(CancelledRun, AbortsAtTheWindowQuestionAndRemovesTheChunkFiles) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  expectCalls(answersInOrder(ctc, {1, "yes", nullptr}), upToTheWindow(ctc).asksWindow("10.00", -1).aborts());
}

TEST_F(CancelledRun, AbortsWhenTheWindowIsZero) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  expectCalls(answersInOrder(ctc, {1, "yes", 0}), upToTheWindow(ctc).asksWindow("10.00", 0).aborts());
}

TEST_F(CancelledRun, AbortsWithoutAQuestionWhenTheHostsDialogueGivesAWindowOfZero) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  json given = answersInOrder(ctc, {1, "yes"});
  given["parameters"]["integers"]["0"] = 0;
  expectCalls(given, upToTheWindow(ctc).readsWindowParameter(0).aborts());
}

TEST_F(CancelledRun, LeavesTheOutputOfAnEarlierRunAsItWas) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  write("run1_GRA.ctc", "an earlier result");
  write("run1_GRA.ccd", "and its description");
  write("run1_GRA_ArtifactsTriggers.prt", "and its triggers");
  expectCalls(answersInOrder(ctc, {1, "yes", nullptr}), upToTheWindow(ctc).asksWindow("10.00", -1).aborts());
}

class AnsweredQuestion : public CancelledRun {};

TEST_F(AnsweredQuestion, ACancelledVolumeWiseQuestionGoesOnVolumeWise) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const HostRunResult cancelled = run(answersInOrder(ctc, {1, nullptr, 150}));
  EXPECT_EQ(cancelled.exitStatus, 0);
  EXPECT_EQ(cancelled.calls("lmYesNoMessageBox").at(0).at("answer"), -1);
  const std::string output = readFile(path("run1_GRA.ctc"));

  ASSERT_EQ(run(answers(ctc, "", "", true)).exitStatus, 0);
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
  ASSERT_EQ(run(answers(ctc, "", "", false)).exitStatus, 0);
  EXPECT_FALSE(readFile(path("run1_GRA.ctc")) == output);
}

TEST_F(AnsweredQuestion, AWindowFromTheHostsDialogueIsNotAskedFor) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  ASSERT_EQ(run(answers(ctc)).exitStatus, 0);
  const std::string output = readFile(path("run1_GRA.ctc"));

  json given = answersInOrder(ctc, {1, "yes"});
  given["parameters"]["integers"]["0"] = 150;
  const HostRunResult result = run(given);
  const ExpectedCalls expected = upToTheWindow(ctc)
                                     .readsWindowParameter(150)
                                     .logs("Processing channel #1")
                                     .writesEverything()
                                     .returns(true);
  EXPECT_EQ(differenceOf(withoutMeasuredNumbers(result.transcript).calls, expected), "");
  EXPECT_TRUE(readFile(path("run1_GRA.ctc")) == output);
}

TEST_F(AnsweredQuestion, TheWindowDecidesHowMuchOfTheNeighbourhoodIsAveraged) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  ASSERT_EQ(run(answersInOrder(ctc, {1, "yes", 1000})).exitStatus, 0);
  const std::string wide = readFile(path("run1_GRA.ctc"));
  ASSERT_EQ(run(answersInOrder(ctc, {1, "yes", 1})).exitStatus, 0);
  EXPECT_FALSE(readFile(path("run1_GRA.ctc")) == wide);
}

class HostVersion : public PluginRun {
protected:
  HostRunResult runIn(int major, int minor, int revision) const {
    nlohmann::json given = answers("");
    given["version"] = {major, minor, revision};
    return run(given);
  }
};

TEST_F(HostVersion, OlderThan199IsRefusedBeforeAnythingElse) {
  EXPECT_EQ(differenceOf(runIn(1, 9, 8).transcript,
                         ExpectedCalls()
                             .version(1, 9, 8)
                             .shows("Can not execute this plugin - Lumetra version 1.9.9 or higher required.")
                             .returns(false)),
            "");
  EXPECT_EQ(
      runIn(0, 99, 99).messageBoxes(),
      std::vector<std::string>{"Can not execute this plugin - Lumetra version 1.9.9 or higher required."});
}

TEST_F(HostVersion, From199To21IsRefusedByTheRunWhichNames210) {
  for (const auto& [major, minor, revision] : {std::array{1, 9, 9}, std::array{2, 0, 9}}) {
    const HostRunResult result = runIn(major, minor, revision);
    EXPECT_EQ(
        differenceOf(result.transcript,
                     ExpectedCalls()
                         .version(major, minor, revision)
                         .version(major, minor, revision)
                         .shows("Can not execute this plugin - Lumetra version 2.1.0 or higher required.")
                         .returns(false)),
        "");
    EXPECT_EQ(result.exitStatus, 1);
  }
}

TEST_F(HostVersion, From210OnTheFilesAreAskedFor) {
  for (const auto& [major, minor, revision] : {std::array{2, 1, 0}, std::array{3, 0, 0}}) {
    EXPECT_EQ(
        differenceOf(runIn(major, minor, revision).transcript, ExpectedCalls()
                                                                   .version(major, minor, revision)
                                                                   .version(major, minor, revision)
                                                                   .choosesNo("CCD")
                                                                   .choosesNo("PRT")
                                                                   .choosesNo("CTC")
                                                                   .shows("This plugin requires a CTC file.")
                                                                   .returns(false)),
        "");
  }
}

} // namespace
} // namespace emeg::test
