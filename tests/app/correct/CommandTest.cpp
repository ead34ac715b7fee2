#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"
#include "tests/files/FileSizeLimit.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A folder with a BrainVision recording "run.vhdr".
class CorrectCommand : public testing::Test {
protected:
  CorrectCommand() { copyOf(scanRecording())->save(input); }

  ProgramRun correct(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"correct", input});
    return runEmeg(arguments);
  }

  const TestFolder folder;
  const std::string input = folder / "run.vhdr";
};

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

} // namespace

TEST_F(CorrectCommand, WritesTheCorrectedRecordingBesideTheInputInItsFormat) {
  const ProgramRun run = correct({});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(folder.names(), ElementsAre("run.eeg", "run.vhdr", "run.vmrk", "run_GRA.eeg", "run_GRA.json",
                                          "run_GRA.vhdr", "run_GRA.vmrk"));
  const MemoryRecording before(input);
  const MemoryRecording after(folder / "run_GRA.vhdr");
  ASSERT_EQ(after.header().nrOfChannels(), before.header().nrOfChannels());
  std::vector<double> remaining;
  for (size_t c = 0; c < before.samples.size(); ++c) {
    EXPECT_EQ(after.header().channels[c].name, before.header().channels[c].name);
    EXPECT_EQ(after.header().channels[c].unit, before.header().channels[c].unit);
    const std::vector<double> silence(before.samples[c].size(), 0.0);
    remaining.push_back(rmsDifference(after.samples[c], silence) / rmsDifference(before.samples[c], silence));
  }
  EXPECT_LT(medianOf(remaining), 0.1);
}

TEST_F(CorrectCommand, SummarisesWhatWasFoundAndHowMuchIsLeft) {
  const ProgramRun run = correct({"--quiet"});
  EXPECT_THAT(run.out, HasSubstr("volumes of 20 slices"));
  EXPECT_THAT(run.out, HasSubstr("left in the median channel"));
  EXPECT_THAT(run.out, HasSubstr("run_GRA.vhdr"));
  EXPECT_THAT(run.err, IsEmpty());
}

TEST_F(CorrectCommand, SaysEveryStepOnALineOfItsOwnWhereThereIsNoTerminal) {
  const ProgramRun run = correct({});
  EXPECT_THAT(run.err, HasSubstr("Removing the gradient artifact\n"));
  EXPECT_THAT(run.err, Not(HasSubstr("\r")));
  EXPECT_THAT(run.err, Not(HasSubstr("\033")));
}

TEST_F(CorrectCommand, ShowsWhatTheSearchComparesWhenAskedTo) {
  EXPECT_THAT(correct({"--verbose"}).err, HasSubstr("  Number of volumes: "));
  EXPECT_THAT(correct({"--force"}).err, Not(HasSubstr("Number of volumes")));
}

TEST_F(CorrectCommand, WritesEveryFormat) {
  for (const char* name : {"out.edf", "out.bdf", "out.ctc", "out.vhdr"}) {
    const ProgramRun run = correct({"-o", folder / name, "--quiet", "--force"});
    EXPECT_EQ(run.status, 0) << name << run.err;
    EXPECT_EQ(MemoryRecording(folder / name).header().nrOfChannels(), 6) << name;
  }
}

TEST_F(CorrectCommand, RefusesToReplaceFilesUnlessForced) {
  ASSERT_EQ(correct({}).status, 0);
  const ProgramRun again = correct({});
  EXPECT_EQ(again.status, 2);
  EXPECT_THAT(again.err, HasSubstr("run_GRA.vhdr\" exists already"));
  EXPECT_THAT(again.err, HasSubstr("--force"));
  EXPECT_EQ(correct({"--force"}).status, 0);
}

TEST_F(CorrectCommand, LooksForEveryFileOfTheSetBeforeItBegins) {
  std::ofstream(folder / "run_GRA.vmrk") << "mine";
  const ProgramRun run = correct({});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("run_GRA.vmrk"));
  EXPECT_THAT(run.err, Not(HasSubstr("Reading")));
  EXPECT_EQ(bytesOf(folder / "run_GRA.vmrk"), "mine");
}

TEST_F(CorrectCommand, TheInputIsNeverTheOutput) {
  const ProgramRun run = correct({"-o", input, "--force"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("is the input"));
}

TEST_F(CorrectCommand, WrongArgumentsHaveStatus2) {
  EXPECT_EQ(correct({"--window", "0"}).status, 2);
  EXPECT_EQ(correct({"--interval", "x"}).status, 2);
  EXPECT_EQ(correct({"--slice-wise", "--volume-wise"}).status, 2);
  EXPECT_EQ(correct({"--rate", "0"}).status, 2);
  EXPECT_EQ(correct({"--rate", "300", "--as-plugin"}).status, 2);
  EXPECT_EQ(correct({"--memory", "-1"}).status, 2);
  EXPECT_EQ(correct({"--channels", "Nobody"}).status, 2);
  EXPECT_EQ(correct({"-o", folder / "out.set"}).status, 2);
  EXPECT_EQ(correct({"-o", folder / "nowhere/out.vhdr"}).status, 2);
  EXPECT_EQ(runEmeg({"correct", folder / "missing.vhdr"}).status, 2);
}

TEST_F(CorrectCommand, ARecordingWithoutScanHasStatus1AndNoOutput) {
  const auto recording = copyOf(scanRecording());
  for (auto& channel : recording->samples) {
    uint64_t state = 1;
    for (double& value : channel) {
      state = state * 6364136223846793005u + 1442695040888963407u;
      value = static_cast<double>(state >> 40) / 1e6;
    }
  }
  recording->save(input);
  const ProgramRun run = correct({});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("no scanner sequence was found"));
  EXPECT_THAT(folder.names(), ElementsAre("run.eeg", "run.vhdr", "run.vmrk"));

  const ProgramRun allowed = correct({"--allow-uncorrected"});
  EXPECT_EQ(allowed.status, 3) << allowed.err;
  EXPECT_THAT(allowed.err, HasSubstr("no scanner sequence was found"));
  EXPECT_TRUE(std::filesystem::exists(folder / "run_GRA.vhdr"));
}

// Heart beats alone have a rhythm in which the detection sees slices.
TEST_F(CorrectCommand, HeartBeatsAreNoScan) {
  const std::string beats = folder / "beats.ctc";
  ASSERT_EQ(
      runEmeg({"simulate", "bcg", beats, "--fs", "1000", "--seconds", "60", "--channels", "6", "--no-truth"})
          .status,
      0);
  const ProgramRun run = runEmeg({"correct", beats, "--bcg"});
  EXPECT_EQ(run.status, 1) << run.out;
  EXPECT_THAT(run.err, HasSubstr("no scanner sequence was found"));
  EXPECT_EQ(folder.names().size(), 6u); // those of the two recordings

  // Written all the same it is the recording that it was: nothing is taken away, nothing marked.
  ASSERT_EQ(runEmeg({"correct", beats, "--allow-uncorrected", "-o", folder / "out.vhdr", "--quiet"}).status,
            3);
  const MemoryRecording before(beats);
  const MemoryRecording after(folder / "out.vhdr");
  for (size_t c = 0; c < before.samples.size(); ++c)
    EXPECT_LT(rmsDifference(after.samples[c], before.samples[c]), 1e-3);
  for (const RecordingMarker& marker : after.header().markers)
    EXPECT_NE(marker.description, "MRGradientTriggers");
}

TEST_F(CorrectCommand, WarningsHaveStatus3AndTheOutputIsThere) {
  const ProgramRun run = correct({"--bcg"}); // the recording has no heart beats
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("warning: "));
  EXPECT_TRUE(std::filesystem::exists(folder / "run_GRA_BCG.vhdr"));
}

TEST_F(CorrectCommand, AFullDiskLeavesNothingAndIsToldWithFileAndRemedy) {
  for (const char* memory : {"0", "64"})
    for (const rlim_t limit : {rlim_t{100000}, rlim_t{500000}, rlim_t{900000}}) {
      SCOPED_TRACE(std::string("memory ") + memory + ", limit " + std::to_string(limit));
      ProgramRun run;
      {
        const FileSizeLimit full(limit);
        run = correct({"--memory", memory});
      }
      EXPECT_EQ(run.status, 1);
      const bool isTemporary = std::string(memory) == "0";
      EXPECT_THAT(run.err, HasSubstr(isTemporary ? ".emeg-scratch-" : "run_GRA.eeg\" cannot be written"));
      EXPECT_THAT(run.err, HasSubstr("File too large"));
      EXPECT_THAT(run.err, HasSubstr("Make room there"));
      EXPECT_THAT(folder.names(), ElementsAre("run.eeg", "run.vhdr", "run.vmrk"));
    }
  EXPECT_EQ(correct({"--quiet"}).status, 0);
}

// Channels that pass are only in the output: it is larger than any temporary file.
TEST_F(CorrectCommand, ADiskThatFillsUpWithTheOutputLeavesNothing) {
  const auto recording = copyOf(scanRecording());
  for (const char* name : {"TRIG1", "TRIG2", "TRIG3", "TRIG4"})
    recording->addChannel(name, ChannelKind::Trigger, [](int64_t t) { return static_cast<double>(t % 2); });
  recording->save(input);
  ProgramRun run;
  {
    const FileSizeLimit full(1300000);
    run = correct({});
  }
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("run_GRA.eeg\" cannot be written"));
  EXPECT_THAT(folder.names(), ElementsAre("run.eeg", "run.vhdr", "run.vmrk"));
}

TEST_F(CorrectCommand, TemporaryFilesGoWhereTheyAreWanted) {
  std::filesystem::create_directory(folder / "scratch");
  EXPECT_EQ(correct({"--scratch", folder / "scratch", "--memory", "0", "--quiet"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(folder / "scratch"));
}

TEST_F(CorrectCommand, ListsOfValuesDoNotSwallowTheInput) {
  const ProgramRun run =
      runEmeg({"correct", "--line-noise", "50,60", "--channels", "Fp1,Fp2", input, "--quiet"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(std::filesystem::exists(folder / "run_2ch_GRA.vhdr"));
}

TEST_F(CorrectCommand, HelpGivesUnitsDefaultsAndExamples) {
  const ProgramRun run = runEmeg({"correct", "--help"});
  EXPECT_EQ(run.status, 0);
  for (const char* part : {"Examples:", "--line-noise", "1 to 1000 [150]", "in Hz", "0 to 1000000 [64]",
                           "[none]", "Exit status"})
    EXPECT_THAT(run.out, HasSubstr(part));
}

} // namespace emeg
