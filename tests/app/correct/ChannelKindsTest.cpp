#include "app/correct/ChannelPlan.h"
#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::HasSubstr;

RecordingHeader headerWith(const std::vector<std::pair<std::string, ChannelKind>>& channels) {
  RecordingHeader header;
  for (const auto& [name, kind] : channels) {
    RecordingChannel channel;
    channel.name = name;
    channel.kind = kind;
    header.channels.push_back(channel);
  }
  return header;
}

/// A scan with heart beats whose first channel is an ECG and whose last ones are triggers and an EOG.
std::unique_ptr<MemoryRecording> mixedRecording() {
  auto recording = copyOf(heartRecording());
  recording->editableHeader().channels[0].name = "ECG";
  recording->addChannel("TRIG", ChannelKind::Trigger, [](int64_t t) { return t % 1800 < 5 ? 255.0 : 0.0; });
  recording->addChannel("EOG", ChannelKind::Eog, [&recording](int64_t t) {
    return recording->samples[1][static_cast<size_t>(t)] * 0.7;
  });
  return recording;
}

} // namespace

TEST(ChannelPlan, EveryKindHasItsTreatment) {
  const RecordingHeader header = headerWith({{"Cz", ChannelKind::Eeg},
                                             {"ECG", ChannelKind::Ecg},
                                             {"VEOG", ChannelKind::Eog},
                                             {"EMG1", ChannelKind::Emg},
                                             {"TRIG", ChannelKind::Trigger},
                                             {"Status", ChannelKind::Status},
                                             {"Resp", ChannelKind::Other}});
  const ChannelPlan plan = planChannels(header, {});
  std::vector<std::string> treatments;
  for (const ChannelRole& role : plan.roles) treatments.push_back(treatmentOf(role));
  const std::string gradientOnly = "gradient artifact removed";
  EXPECT_THAT(treatments, testing::ElementsAre("corrected", gradientOnly, gradientOnly, gradientOnly,
                                               "unchanged", "unchanged", gradientOnly));
  EXPECT_THAT(plan.corrected, testing::ElementsAre(0, 1, 2, 3, 6));
  EXPECT_FALSE(plan.roles[1].showsSequence);
  EXPECT_FALSE(plan.roles[1].takesPartInReference);
}

TEST(ChannelPlan, ChannelsAreTreatedLikeEegWhenAskedFor) {
  const RecordingHeader header = headerWith({{"ECG", ChannelKind::Ecg}, {"TRIG", ChannelKind::Trigger}});
  CorrectParameters parameters;
  EXPECT_THROW(planChannels(header, parameters), UnusableInput);
  parameters.treatAsEeg = {"ECG"};
  EXPECT_EQ(treatmentOf(planChannels(header, parameters).roles[0]), "corrected");
  parameters.treatAsEeg = {"all"};
  EXPECT_EQ(treatmentOf(planChannels(header, parameters).roles[1]), "corrected");
  parameters.treatAsEeg = {"Nobody"};
  EXPECT_THROW(planChannels(header, parameters), UnusableInput);
}

TEST(ChannelKinds, TriggersComeBackSampleForSample) {
  const TestFolder folder;
  const auto recording = mixedRecording();
  recording->save(folder / "run.vhdr");
  const ProgramRun run =
      runEmeg({"correct", folder / "run.vhdr", "--bcg", "--low-pass", "30", "--scale", "2"});
  ASSERT_NE(run.status, 2) << run.err;
  const MemoryRecording after(folder / "run_LP30_sc2_GRA_BCG.vhdr");
  EXPECT_EQ(after.samples[6], recording->samples[6]);
}

// What 32-bit floats do not hold exactly comes from the recording itself.
TEST(ChannelKinds, TriggersOfAnyValueComeBackSampleForSample) {
  const TestFolder folder;
  const auto recording = mixedRecording();
  recording->editableHeader().channels[6].stored = StoredIntegers{0.1, 0.05, -32768, 32767};
  recording->samples[6].assign(recording->samples[6].size(), 0.05);
  for (size_t t = 0; t < recording->samples[6].size(); t += 77) recording->samples[6][t] = 0.1 * 30000 + 0.05;
  recording->save(folder / "run.edf");
  for (const char* option : {"--quiet", "--decimate=3", "--rate=300"}) {
    ASSERT_EQ(runEmeg({"correct", folder / "run.edf", "-o", folder / "out.edf", "--force", option}).status,
              0);
    const MemoryRecording before(folder / "run.edf");
    const MemoryRecording after(folder / "out.edf");
    const double step = before.header().samplingFrequency / after.header().samplingFrequency;
    const auto nrOfOutputs = static_cast<size_t>(std::floor(39999 / step)) + 1;
    for (size_t k = 0; k < nrOfOutputs; ++k)
      ASSERT_EQ(after.samples[6][k],
                before.samples[6][static_cast<size_t>(std::floor(static_cast<double>(k) * step + 1e-9))])
          << option << " " << k;
  }
}

TEST(ChannelKinds, TriggersKeepTheirIntegersInEdfAndBdf) {
  const TestFolder folder;
  for (const char* name : {"run.bdf", "run.edf"}) {
    mixedRecording()->save(folder / name);
    const std::string output = folder / (std::string("out_") + name);
    const ProgramRun run =
        runEmeg({"correct", folder / name, "-o", output, "--decimate", "4", "--quiet", "--force"});
    ASSERT_EQ(run.status, 0) << run.err;
    const MemoryRecording before(folder / name);
    const MemoryRecording after(output);
    for (size_t t = 0; t < after.samples[6].size(); ++t)
      ASSERT_EQ(after.samples[6][t], before.samples[6][std::min(4 * t, before.samples[6].size() - 1)]) << t;
  }
}

TEST(ChannelKinds, AnEcgIsCorrectedAsWithoutHeartBeatCorrection) {
  const TestFolder folder;
  mixedRecording()->save(folder / "run.vhdr");
  ASSERT_NE(runEmeg({"correct", folder / "run.vhdr", "--bcg"}).status, 2);
  ASSERT_NE(runEmeg({"correct", folder / "run.vhdr"}).status, 2);
  const MemoryRecording with(folder / "run_GRA_BCG.vhdr");
  const MemoryRecording without(folder / "run_GRA.vhdr");
  EXPECT_EQ(with.samples[0], without.samples[0]);
  EXPECT_EQ(with.samples[7], without.samples[7]);
  EXPECT_NE(with.samples[1], without.samples[1]);
}

TEST(ChannelKinds, AnEcgHasNoPartInWhatIsFoundAndRemovedElsewhere) {
  const TestFolder folder;
  const auto recording = mixedRecording();
  recording->save(folder / "run.vhdr");
  for (double& value : recording->samples[0]) value = 0; // a different ECG
  recording->save(folder / "other.vhdr");
  for (const char* name : {"run.vhdr", "other.vhdr"})
    ASSERT_NE(runEmeg({"correct", folder / name, "--bcg", "--average-reference"}).status, 2);
  const MemoryRecording one(folder / "run_GRA_BCG.vhdr");
  const MemoryRecording other(folder / "other_GRA_BCG.vhdr");
  for (size_t c = 1; c < one.samples.size(); ++c) EXPECT_EQ(one.samples[c], other.samples[c]) << c;
}

TEST(ChannelKinds, TheAverageReferenceIsThatOfTheEegChannels) {
  const TestFolder folder;
  mixedRecording()->save(folder / "run.vhdr");
  ASSERT_NE(runEmeg({"correct", folder / "run.vhdr", "--average-reference"}).status, 2);
  const MemoryRecording after(folder / "run_GRA.vhdr");
  double largest = 0;
  for (size_t t = 0; t < after.samples[1].size(); ++t) {
    double sum = 0;
    for (size_t c = 1; c < 6; ++c) sum += after.samples[c][t];
    largest = std::max(largest, std::abs(sum));
  }
  EXPECT_LT(largest, 0.01);
  ASSERT_NE(runEmeg({"correct", folder / "run.vhdr", "-o", folder / "plain.vhdr"}).status, 2);
  EXPECT_EQ(after.samples[0], MemoryRecording(folder / "plain.vhdr").samples[0]);
}

} // namespace emeg
