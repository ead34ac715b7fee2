#pragma once

#include <emeg/emeg.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// EEG with a scan of 12 volumes of 10 slices, TR 1.05 s, from 2 s on. Microvolts, channel after channel.
struct SimulatedSignal {
  explicit SimulatedSignal(int channels = 2);

  static constexpr double rate = 2000;
  static constexpr int64_t samples = 36000;
  static constexpr int volumes = 12;
  static constexpr int slices = 10;
  static constexpr double volumeDuration = 1.05;
  static constexpr double firstOnset = 2;

  int channels;
  std::vector<double> brain;
  std::vector<double> recorded;
};

struct FreeHandle {
  void operator()(emeg_settings* handle) const { emeg_settings_free(handle); }
  void operator()(emeg_recording* handle) const { emeg_recording_free(handle); }
  void operator()(emeg_correction* handle) const { emeg_correction_free(handle); }
};
using SettingsHandle = std::unique_ptr<emeg_settings, FreeHandle>;
using RecordingHandle = std::unique_ptr<emeg_recording, FreeHandle>;
using CorrectionHandle = std::unique_ptr<emeg_correction, FreeHandle>;

SettingsHandle newSettings();
/// EEG channels "EEG0", "EEG1", ...
RecordingHandle describe(const SimulatedSignal& signal);
/// A correction at the defaults that has all samples.
CorrectionHandle correctionOf(const SimulatedSignal& signal, const emeg_settings* settings = nullptr,
                              const char* scratchFile = nullptr);
/// Its result, channel after channel.
std::vector<double> resultOf(emeg_correction* correction, int channels);

double rms(const std::vector<double>& values);
std::vector<double> difference(const std::vector<double>& left, const std::vector<double>& right);
