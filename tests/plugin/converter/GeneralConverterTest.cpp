#include "tests/plugin/converter/Converters.h"
#include "tests/plugin/converter/LiteralSignals.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

std::vector<double> part(const std::vector<double>& signal, size_t first, size_t last) {
  return {signal.begin() + static_cast<std::ptrdiff_t>(first),
          signal.begin() + static_cast<std::ptrdiff_t>(last + 1)};
}

/// Filter, decimation, average reference and scaling of an interval, one plain step after the other.
Channels plainResult(const Channels& selected, size_t first, size_t last, const std::vector<PlainEdge>& edges,
                     int log2Length, size_t decimation, bool averageReference, double scale) {
  Channels output;
  for (const std::vector<double>& channel : selected) {
    const std::vector<double> filtered = plainFilter(part(channel, first, last), edges, log2Length);
    output.emplace_back();
    for (size_t j = 0; j < filtered.size(); j += decimation) output.back().push_back(filtered[j]);
  }
  for (size_t t = 0; averageReference && t < output[0].size(); ++t) {
    double mean = 0;
    for (const std::vector<double>& channel : output) mean += channel[t] / static_cast<double>(output.size());
    for (std::vector<double>& channel : output) channel[t] -= mean;
  }
  for (std::vector<double>& channel : output)
    for (double& sample : channel) sample *= scale;
  return output;
}

void expectClose(const Channels& actual, const Channels& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (size_t c = 0; c < actual.size(); ++c) {
    ASSERT_EQ(actual[c].size(), expected[c].size());
    for (size_t t = 0; t < actual[c].size(); ++t)
      ASSERT_NEAR(actual[c][t], expected[c][t], tolerance) << c << " " << t;
  }
}

ChannelDescription readCcd(const std::string& path) {
  ChannelDescription description;
  EXPECT_EQ(readCcdFile(path, description), CcdReadResult::Ok);
  return description;
}

class EverythingConverter : public LMTRPluginEMEGFileConverter {
public:
  EverythingConverter() : LMTRPluginEMEGFileConverter(testLogPrefix, true) {
    options.applyFilters = true;
    options.correctArtifacts = true;
    options.offerAverageReference = true;
    options.forceHeaderUpdate = false;
  }
  bool start() { return run(2, 1, 0); }
};

TEST(GeneralConverter, WithEveryDialogueAnsweredEqualsThePlainComputation) {
  const Recording recording = wavyRecording(5, 1000, 200);
  ChosenRecording chosen(recording);
  ScriptedHost& host = chosen.host;
  host.dialogIntegers = {{1, 4}}; // a custom selection, which the menu cannot reach
  // The same index is the low-pass mode later on, where the user shall be asked.
  host.onCall = [&](const std::string& call) {
    if (call == "parameter 2") host.dialogIntegers.clear();
  };
  host.integerAnswers = {3, 4, 1, 2, 0, 2, 1};    // channels 3, 0, 1; no artifact; decimation 2; a notch
  host.floatAnswers = {1000, 3500, 30, 4, 1, 44}; // interval; notch; high-pass; low-pass
  host.yesNoAnswers = {0, 0, 0, 1};               // keep "bad" channels; average reference
  EverythingConverter converter;
  ASSERT_TRUE(converter.start());
  EXPECT_TRUE(host.integerAnswers.empty() && host.floatAnswers.empty() && host.yesNoAnswers.empty());

  const std::string stem = chosen.folder.path("run1_3ch_1000-3500ms_HP1_LP44_NOTCH_dec2");
  const Recording output = readOutput(stem + ".ctc");
  EXPECT_EQ(output.samplingFrequency, 100.0);
  // 1 s at 200 Hz is sample 200, 3.5 s ends with sample 699; 10 more on each side make 520.
  const std::vector<PlainEdge> edges = {
      {false, 0.01, 2}, {true, 0.28, 2}, {false, 0.32, 2}, {true, 0.44, 2}, {true, 0.5, 3}};
  const Channels selected = {recording.samples[3], recording.samples[0], recording.samples[1]};
  expectClose(output.samples, plainResult(selected, 200, 699, edges, 10, 2, true, 1), 2e-4);

  const CcdHeader header = readCcd(stem + ".ccd").header;
  EXPECT_EQ(header.ctcFileName(), "run1_3ch_1000-3500ms_HP1_LP44_NOTCH_dec2.ctc");
  EXPECT_EQ(header.nrOfChannels(), 5);
  EXPECT_EQ(header.nrOfSelectedChannels(), 3);
  EXPECT_EQ(header.decimationFactor(), 2);
  EXPECT_EQ(header.samplingFrequency(), 100.0);
  EXPECT_EQ(header.intervalStartMs(), 1000.0);
  EXPECT_EQ(header.intervalEndMs(), 3500.0);
  EXPECT_EQ(header.intervalLengthMs(), 2500.0);
  EXPECT_EQ(header.nrOfTimePoints(), 250);
  EXPECT_TRUE(header.flag(CcdHeader::Flag::IntervalSelected));
  EXPECT_TRUE(header.flag(CcdHeader::Flag::Filtered));
  EXPECT_TRUE(header.flag(CcdHeader::Flag::AverageReferenced));
  EXPECT_FALSE(header.flag(CcdHeader::Flag::GradientCorrected));
  EXPECT_FALSE(header.flag(CcdHeader::Flag::LastSwitch));
  EXPECT_EQ(readFile(chosen.ctcPath()), recording.bytes());
  EXPECT_EQ(chosen.folder.names().size(), 3u) << "no chunk file remains";
}

TEST(GeneralConverter, WithEveryParameterFromTheHostsDialogueEqualsThePlainComputation) {
  const Recording recording = wavyRecording(4, 600, 200);
  ChosenRecording chosen(recording);
  ScriptedHost& host = chosen.host;
  // High-pass, channels and low-pass (one index), notch, order, decimation, scaling, reference.
  host.dialogIntegers = {{0, 2}, {1, 2}, {2, 2}, {3, 3}, {4, 3}, {5, 6}, {6, 2}};
  host.dialogFloats = {{0, 0.8f}, {1, 60.0f}, {2, 20.0f}, {3, 5.0f}};
  host.integerAnswers = {0}; // the artifact choice has no parameter
  EverythingConverter converter;
  converter.options.parametersFromDialog = true;
  ASSERT_TRUE(converter.start());
  EXPECT_EQ(host.questions().size(), 4u) << "three files and the artifact choice";

  const std::string stem = chosen.folder.path("run1_4ch_0-3000ms_HP1_LP60_NOTCH_dec3_sc6");
  const Recording output = readOutput(stem + ".ctc");
  EXPECT_EQ(output.nrOfTimePoints(), 200);
  EXPECT_FLOAT_EQ(static_cast<float>(output.samplingFrequency), static_cast<float>(200.0 / 3));
  const std::vector<PlainEdge> edges = {{false, static_cast<double>(0.8f) / 100, 3},
                                        {true, 0.175, 3},
                                        {false, 0.225, 3},
                                        {true, 1.0 / 3, 3},
                                        {true, 0.6, 3}};
  expectClose(output.samples, plainResult(recording.samples, 0, 599, edges, 10, 3, true, 1e6), 200);
  const CcdHeader header = readCcd(stem + ".ccd").header;
  EXPECT_TRUE(header.flag(CcdHeader::Flag::LastSwitch));
  EXPECT_FALSE(header.flag(CcdHeader::Flag::IntervalSelected));
}

TEST(GeneralConverter, ScalingAloneMultipliesTheSamples) {
  const Recording recording = countingRecording(3, 333);
  ChosenRecording chosen(recording);
  QuietConverter converter;
  converter.options.applyScaling = true;
  converter.options.parametersFromDialog = true;
  chosen.host.integerAnswers = {0, 3};
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_sc3.ctc"));
  ASSERT_EQ(output.nrOfTimePoints(), 333);
  for (size_t c = 0; c < 3; ++c)
    for (size_t t = 0; t < 333; ++t) EXPECT_EQ(output.samples[c][t], recording.samples[c][t] * 1000);
}

TEST(GeneralConverter, AChannelSubsetAloneCopiesTheChosenChannels) {
  const Recording recording = countingRecording(5, 100);
  ChosenRecording chosen(recording);
  QuietConverter converter;
  converter.options.selectChannels = true;
  chosen.host.dialogIntegers = {{1, 4}};
  chosen.host.integerAnswers = {2, 5, 2, 0};
  chosen.host.yesNoAnswers = {0, 0};
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_2ch.ctc"));
  EXPECT_EQ(output.samples, (Channels{recording.samples[4], recording.samples[1]}));
}

TEST(GeneralConverter, AnIntervalAloneCopiesItsSamplesFromAnyOrganisation) {
  for (const int32_t organisation : {1, 2}) {
    Recording recording = countingRecording(3, 500);
    recording.dataOrganisation = organisation;
    recording.dataType = 3;
    ChosenRecording chosen(recording);
    QuietConverter converter;
    converter.options.selectTimeInterval = true;
    chosen.host.floatAnswers = {1230, 2000};
    chosen.host.integerAnswers = {0};
    ASSERT_TRUE(converter.start());
    const Recording output = readOutput(chosen.folder.path("run1_1230-2000ms.ctc"));
    ASSERT_EQ(output.nrOfTimePoints(), 77);
    for (size_t c = 0; c < 3; ++c) EXPECT_EQ(output.samples[c], part(recording.samples[c], 123, 199));
  }
}

TEST(GeneralConverter, DecimationWritesNoMoreChunksThanItNeeds) {
  const Recording recording = wavyRecording(2, 640, 100);
  ChosenRecording chosen(recording);
  QuietConverter converter;
  converter.options.applyFilters = true;
  chosen.host.integerAnswers = {0, 20, 0};
  chosen.host.floatAnswers = {0, 0};
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_dec20.ctc"));
  EXPECT_EQ(output.nrOfTimePoints(), 32);
  EXPECT_EQ(output.samplingFrequency, 5.0);
  expectClose(output.samples, plainResult(recording.samples, 0, 639, {{true, 0.05, 3}}, 10, 20, false, 1),
              2e-4);
}

} // namespace
} // namespace emeg
