#pragma once

#include "app/simulation/SimulatedRecording.h"
#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace emeg {

/// What the command line of `emeg simulate` says; what it does not say comes from the preset.
struct SimulateOptions {
  std::string preset;
  RecordingTarget target;
  bool noCcd = false;
  bool noPrt = false;
  bool noTruth = false;

  std::optional<uint64_t> seed;
  std::optional<int> channels;
  std::optional<double> seconds, fs;
  std::optional<double> eegUv, alphaUv, noiseUv;
  std::optional<double> lineHz, lineUv;

  std::optional<int64_t> volumes;
  std::optional<int> slices;
  std::optional<double> sliceMs, gapMs, quietBefore, quietAfter, burstMs, peakUv, firstSlicePercent;
  std::optional<double> lowPassHz, readoutHz, driftPercent;
  std::optional<double> secondBurstMs, secondBurstFactor, leastQuietMs, jitterUs;
  std::optional<int> scans;
  std::optional<double> pauseSeconds, cutStart;
  bool endsInScan = false;
  std::string markers = "none"; ///< what a marker of the scanner stands for: "volume", "slice"
  std::optional<std::string> markerName;

  std::optional<double> heartRate, rmssdMs, pulsePeakUv, ectopicPercent;
  std::optional<std::string> weak;
  bool ecg = false;

  std::optional<double> movementUv;
  std::optional<int64_t> movementCount;
  std::vector<int> deadChannels;

  std::optional<int> spikes, dropouts;
  std::optional<double> spikeUv, dropoutMs, clipUv;
};

/// Declares the preset, the name of the recording and all options; `options` must outlive the parser.
void declareSimulateOptions(CLI::App& app, SimulateOptions& options);

/// Groups of the options that have a meaning with some presets only.
inline constexpr const char* scanOptionGroup = "Scan (all presets but bcg)";
inline constexpr const char* heartOptionGroup = "Heart (presets bcg, both)";

/// "START,SECONDS" or "START,SECONDS,FACTOR"; nothing for another text.
std::optional<WeakStretch> weakStretchFrom(const std::string& text);

} // namespace emeg
