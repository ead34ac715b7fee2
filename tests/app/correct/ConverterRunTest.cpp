#include "app/correct/ConverterRun.h"

#include "converter/Converter.h"
#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <gtest/gtest.h>

namespace emeg {

namespace {

HostAnswers::Dialogue bothArtifacts(const std::string& ctcPath) {
  HostAnswers::Dialogue dialogue;
  dialogue.ctcPath = ctcPath;
  dialogue.correctBcg = true;
  dialogue.volumeWise = false;
  return dialogue;
}

/// What the plug-in makes of the file with the same answers: the path of the corrected one.
std::string runPlugInsConverter(const HostAnswers::Dialogue& dialogue) {
  const HostAnswers answers(dialogue, [](const std::string&) {});
  EMEGArtifactPreprocessor converter("// EMEG artifacts > ", true);
  converter.options.selectChannels = false;
  converter.options.selectTimeInterval = false;
  converter.options.correctArtifacts = true;
  converter.options.forceHeaderUpdate = false;
  EXPECT_TRUE(converter.run(2, 1, 0));
  return converter.outputPathBuffer.path();
}

} // namespace

TEST(ConverterRun, GivesTheSamplesThatThePlugInGives) {
  const TestFolder folder;
  const std::string recording = folder / "recording.ctc";
  copyOf(heartRecording())->save(recording);
  const MemoryRecording expected(runPlugInsConverter(bothArtifacts(recording)));

  const ProgramRun run =
      runEmeg({"correct", recording, "-o", folder / "corrected.ctc", "--bcg", "--slice-wise", "--quiet"});
  ASSERT_EQ(run.status, 0) << run.err;
  const MemoryRecording corrected(folder / "corrected.ctc");
  EXPECT_EQ(corrected.samples, expected.samples);
}

TEST(ConverterRun, WhereQuietTellsTheTimingEveryBitIsThePlugIns) {
  for (const char* const preset : {"gap", "continuous"})
    for (const bool volumeWise : {false, true}) {
      SCOPED_TRACE(std::string(preset) + (volumeWise ? " by volumes" : " by slices"));
      const TestFolder folder;
      const std::string recording = folder / "recording.ctc";
      ASSERT_EQ(runEmeg({"simulate", preset, recording, "--fs", "2000", "--seconds", "60", "--channels", "2",
                         "--seed", "1", "--no-truth"})
                    .status,
                0);
      HostAnswers::Dialogue dialogue;
      dialogue.ctcPath = recording;
      dialogue.volumeWise = volumeWise;
      const MemoryRecording expected(runPlugInsConverter(dialogue));
      const ProgramRun run = runEmeg({"correct", recording, "-o", folder / "corrected.ctc", "--quiet",
                                      volumeWise ? "--volume-wise" : "--slice-wise"});
      ASSERT_EQ(run.status, 0) << run.err;
      EXPECT_EQ(MemoryRecording(folder / "corrected.ctc").samples, expected.samples);
    }
}

TEST(ConverterRun, TellsWhatWasFound) {
  const TestFolder folder;
  const std::string recording = folder / "recording.ctc";
  copyOf(heartRecording())->save(recording);
  ConverterJob job;
  job.dialogue = bothArtifacts(recording);
  job.samplingFrequency = 1000;
  job.seconds = 40;
  std::vector<std::string> lines;
  const ConverterOutcome outcome =
      runConverter(job, [&lines](const std::string& line) { lines.push_back(line); });
  ASSERT_TRUE(outcome.finished);
  EXPECT_TRUE(outcome.errors.empty());
  ASSERT_EQ(outcome.found.timing.scans.size(), 1u);
  EXPECT_EQ(outcome.found.timing.source, TimingSource::QuietBetweenSlices);
  EXPECT_EQ(outcome.found.timing.scans[0].sequence.nrOfSlicesPerVolume, 20);
  EXPECT_NEAR(outcome.found.timing.scans[0].sequence.volumeDuration, 1.8003371, 1e-4);
  EXPECT_GT(outcome.found.pulseTimes.size(), 30u);
  EXPECT_EQ(outcome.found.pulseFigures.size(), 6u);
  EXPECT_EQ(lines.front(), "Defining parameters");
  EXPECT_EQ(lines.back(), "Operations successfully executed!");
}

TEST(ConverterRun, AnExceptionFromTheLogEndsTheRunAndLeavesNoChunkFiles) {
  const TestFolder folder;
  const std::string recording = folder / "recording.ctc";
  copyOf(heartRecording())->save(recording);
  const std::vector<std::string> before = folder.names();
  ConverterJob job;
  job.dialogue = bothArtifacts(recording);
  job.samplingFrequency = 1000;
  job.seconds = 40;
  const auto stop = [](const std::string& line) {
    if (line.rfind("Pre-processing channel #2", 0) == 0) throw std::runtime_error("enough");
  };
  EXPECT_THROW(runConverter(job, stop), std::runtime_error);
  EXPECT_EQ(folder.names(), before);
}

TEST(OutputSuffix, NamesWhatIsDoneInTheConvertersOrder) {
  HostAnswers::Dialogue dialogue;
  EXPECT_EQ(outputSuffixOf(dialogue, {}), "_GRA");
  dialogue.correctBcg = true;
  EXPECT_EQ(outputSuffixOf(dialogue, {}), "_GRA_BCG");
  dialogue.highPass = 1;
  dialogue.lowPass = 40;
  dialogue.notches = {{50, 4}};
  dialogue.decimationFactor = 4;
  dialogue.scalingOrder = 3;
  NamedSelection selection;
  selection.nrOfChannels = 7;
  selection.hasInterval = true;
  selection.startMs = 12000;
  selection.endMs = 312000;
  EXPECT_EQ(outputSuffixOf(dialogue, selection), "_7ch_12000-312000ms_HP1_LP40_NOTCH_dec4_sc3_GRA_BCG");
}

} // namespace emeg
