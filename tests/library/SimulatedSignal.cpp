#include "tests/library/SimulatedSignal.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace {

constexpr double sliceDuration = 0.08;
constexpr double burstDuration = 0.05;

/// The burst of a slice, `seconds` behind its onset.
double burstAt(double seconds) {
  if (seconds < 0 || seconds > burstDuration) return 0;
  const double envelope = std::sin(std::numbers::pi * seconds / burstDuration);
  return 1500 * envelope * std::sin(2 * std::numbers::pi * 230 * seconds);
}

double artifactAt(double seconds) {
  const double inScan = seconds - SimulatedSignal::firstOnset;
  const double volume = std::floor(inScan / SimulatedSignal::volumeDuration);
  if (volume < 0 || volume >= SimulatedSignal::volumes) return 0;
  const double inVolume = inScan - volume * SimulatedSignal::volumeDuration;
  const double slice = std::floor(inVolume / sliceDuration);
  return slice < SimulatedSignal::slices ? burstAt(inVolume - slice * sliceDuration) : 0;
}

} // namespace

SimulatedSignal::SimulatedSignal(int nrOfChannels) : channels(nrOfChannels) {
  std::mt19937 generator(7);
  std::normal_distribution<double> noise(0, 1);
  for (int c = 0; c < channels; ++c) {
    for (int64_t t = 0; t < samples; ++t) {
      const double seconds = static_cast<double>(t) / rate;
      brain.push_back(20 * std::sin(2 * std::numbers::pi * (9.7 + c) * seconds) + noise(generator));
      recorded.push_back(brain.back() + (1 + 0.3 * c) * artifactAt(seconds));
    }
  }
}

SettingsHandle newSettings() {
  emeg_settings* settings = nullptr;
  EXPECT_EQ(emeg_settings_create(&settings), EMEG_OK);
  return SettingsHandle(settings);
}

RecordingHandle describe(const SimulatedSignal& signal) {
  emeg_recording* created = nullptr;
  EXPECT_EQ(emeg_recording_create(SimulatedSignal::rate, SimulatedSignal::samples, &created), EMEG_OK);
  RecordingHandle recording(created);
  for (int c = 0; c < signal.channels; ++c)
    EXPECT_EQ(emeg_recording_add_channel(created, ("EEG" + std::to_string(c)).c_str(), EMEG_EEG), EMEG_OK);
  return recording;
}

CorrectionHandle correctionOf(const SimulatedSignal& signal, const emeg_settings* settings,
                              const char* scratchFile) {
  const SettingsHandle defaults = newSettings();
  const RecordingHandle recording = describe(signal);
  emeg_correction* created = nullptr;
  EXPECT_EQ(emeg_correction_create(settings != nullptr ? settings : defaults.get(), recording.get(),
                                   scratchFile, &created),
            EMEG_OK)
      << emeg_correction_error(created);
  CorrectionHandle correction(created);
  const emeg_layout layout{EMEG_DOUBLE, 1, SimulatedSignal::samples, 1};
  EXPECT_EQ(emeg_correction_give(created, signal.recorded.data(), &layout, SimulatedSignal::samples), EMEG_OK)
      << emeg_correction_error(created);
  return correction;
}

std::vector<double> resultOf(emeg_correction* correction, int channels) {
  int64_t samples = 0;
  EXPECT_EQ(emeg_correction_output(correction, &samples, nullptr), EMEG_OK);
  std::vector<double> result(static_cast<size_t>(samples * channels));
  const emeg_layout layout{EMEG_DOUBLE, 1, static_cast<ptrdiff_t>(samples), 1};
  EXPECT_EQ(emeg_correction_run(correction, result.data(), &layout, samples), EMEG_OK)
      << emeg_correction_error(correction);
  return result;
}

double rms(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value * value;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

std::vector<double> difference(const std::vector<double>& left, const std::vector<double>& right) {
  std::vector<double> result;
  for (size_t i = 0; i < left.size(); ++i) result.push_back(left[i] - right.at(i));
  return result;
}
