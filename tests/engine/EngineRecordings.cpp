#include "tests/engine/EngineRecordings.h"

#include "app/simulation/Simulation.h"
#include "engine/store/MemoryStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace emeg {

EngineRecording simulateRecording(Preset preset, double rate, double seconds, int nrOfChannels,
                                  const std::function<void(SimulationParameters&)>& change) {
  SimulationParameters parameters = presetParameters(preset, rate);
  if (parameters.gradient) { // long slices, which low rates can hold
    parameters.gradient->nrOfSlicesPerVolume = rate < 400 ? 6 : 12;
    parameters.gradient->sliceDuration = rate < 400 ? 0.3000568 : 0.1500284;
    parameters.gradient->burstDuration = rate < 400 ? 0.26 : 0.12;
  }
  parameters.seconds = seconds;
  parameters.nrOfChannels = nrOfChannels;
  if (change) change(parameters);
  EXPECT_EQ(problemWith(parameters), "");
  EngineRecording recording;
  recording.shape.samplingFrequency = parameters.samplingFrequency;
  recording.shape.nrOfSamples = parameters.nrOfTimePoints();
  recording.shape.roles.resize(static_cast<size_t>(nrOfChannels));
  for (Channels* channels : {&recording.recorded, &recording.clean, &recording.pulse})
    channels->resize(static_cast<size_t>(nrOfChannels));
  Simulation simulation(parameters);
  SimulatedBlock block;
  while (simulation.next(1 << 16, block))
    for (int c = 0; c < nrOfChannels; ++c)
      for (int64_t t = 0; t < block.nrOfTimePoints; ++t) {
        const auto channel = static_cast<size_t>(c);
        recording.recorded[channel].push_back(block.recorded(c, t));
        recording.clean[channel].push_back(block.clean[block.indexOf(c, t)]);
        recording.pulse[channel].push_back(block.pulse[block.indexOf(c, t)]);
      }
  if (simulation.gradient() != nullptr) recording.timings = simulation.gradient()->timings();
  return recording;
}

const EngineRecording& twoScans() {
  static const EngineRecording recording =
      simulateRecording(Preset::Continuous, 250, 382, 3, [](SimulationParameters& p) {
        p.gradient->nrOfScans = 2;
        p.gradient->nrOfVolumes = 95;
        p.gradient->pauseDuration = 12.3;
        p.gradient->cutBefore = 1.3;
      });
  return recording;
}

const EngineRecording& heartAlone() {
  static const EngineRecording recording = simulateRecording(Preset::Bcg, 500, 70, 4);
  return recording;
}

EngineRecording recordingOf(Channels channels, double rate) {
  EngineRecording recording;
  recording.shape.samplingFrequency = rate;
  recording.shape.nrOfSamples = static_cast<int64_t>(channels.front().size());
  recording.shape.roles.resize(channels.size());
  recording.recorded = std::move(channels);
  return recording;
}

CorrectionSettings settingsFor(const EngineRecording& recording) {
  CorrectionSettings settings;
  settings.timing.windowSlices = 40;
  if (recording.timings.empty()) return settings;
  settings.timing.markerKind = MarkerKind::Volume;
  for (const ScanTiming& timing : recording.timings)
    for (int64_t v = 0; v < timing.nrOfVolumes; ++v)
      if (timing.volumeOnset(v) >= 0)
        settings.timing.markers.push_back(std::ceil(timing.volumeOnset(v) * recording.rate()));
  settings.timing.given.nrOfSlicesPerVolume = recording.timings.front().nrOfSlicesPerVolume;
  return settings;
}

void KeepingSink::take(int64_t count, std::span<const double> values) {
  counts.push_back(count);
  const auto length = static_cast<size_t>(count);
  ASSERT_EQ(values.size(), length * channels.size());
  for (size_t c = 0; c < channels.size(); ++c) {
    const auto part = values.subspan(c * length, length);
    channels[c].insert(channels[c].end(), part.begin(), part.end());
  }
}

void takeInAll(Correction& correction, const EngineRecording& recording, int64_t blockLength) {
  const int64_t oddLengths[] = {1, 4097, 3, 0, 511, 20001};
  size_t next = 0;
  std::vector<double> values;
  for (int64_t done = 0; done < recording.length();) {
    const int64_t wanted = blockLength > 0 ? blockLength : oddLengths[next++ % std::size(oddLengths)];
    const int64_t count = std::min(wanted, recording.length() - done);
    values.clear();
    for (const std::vector<double>& channel : recording.recorded)
      values.insert(values.end(), channel.begin() + done, channel.begin() + done + count);
    correction.takeIn(count, values);
    done += count;
  }
}

Corrected corrected(const EngineRecording& recording, const CorrectionSettings& settings) {
  MemoryStore store(recording.shape.nrOfChannels(), Correction::storeLength(settings, recording.shape));
  Observer observer;
  return corrected(recording, settings, store, observer);
}

Corrected corrected(const EngineRecording& recording, const CorrectionSettings& settings, ChannelStore& store,
                    Observer& observer, int64_t blockLength) {
  Correction correction(settings, recording.shape, store, observer);
  takeInAll(correction, recording, blockLength);
  correction.find();
  KeepingSink sink(recording.shape.nrOfChannels());
  correction.correct(sink);
  EXPECT_EQ(static_cast<int64_t>(sink.channels.front().size()), correction.nrOfOutputs());
  return {std::move(sink.channels), std::move(sink.counts), correction.findings(), correction.outputRate()};
}

double rmsOf(const std::vector<double>& samples, int64_t from, int64_t to) {
  if (to < 0) to = static_cast<int64_t>(samples.size());
  double sum = 0;
  for (int64_t t = from; t < to; ++t) sum += std::pow(samples[static_cast<size_t>(t)], 2);
  return std::sqrt(sum / static_cast<double>(to - from));
}

std::vector<double> differenceOf(const std::vector<double>& a, const std::vector<double>& b) {
  EXPECT_EQ(a.size(), b.size());
  std::vector<double> difference(std::min(a.size(), b.size()));
  for (size_t i = 0; i < difference.size(); ++i) difference[i] = a[i] - b[i];
  return difference;
}

std::vector<double> asStored(const std::vector<double>& samples) {
  const std::vector<float> floats(samples.begin(), samples.end());
  return {floats.begin(), floats.end()};
}

} // namespace emeg
