#pragma once

#include "app/simulation/ScanTiming.h"
#include "app/simulation/SimulationParameters.h"
#include "engine/Correction.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace emeg {

using Channels = std::vector<std::vector<double>>;

/// A simulated recording of channels that are all alike, with its truth.
struct EngineRecording {
  RecordingShape shape;
  Channels recorded; ///< microvolts
  Channels clean;    ///< without gradient and heart beat artifact
  Channels pulse;    ///< the heart beat artifact
  std::vector<ScanTiming> timings;

  double rate() const { return shape.samplingFrequency; }
  int64_t length() const { return shape.nrOfSamples; }
};

/// `change` may be empty.
EngineRecording simulateRecording(Preset preset, double rate, double seconds, int nrOfChannels,
                                  const std::function<void(SimulationParameters&)>& change = {});

/// Two scans with a pause between them, of 382 s at 250 Hz: three stretches.
const EngineRecording& twoScans();
/// A heart without a scanner, of 70 s at 500 Hz.
const EngineRecording& heartAlone();

/// Channels without any truth.
EngineRecording recordingOf(Channels channels, double rate);

/// Known timing and a window that lets a stretch be short.
CorrectionSettings settingsFor(const EngineRecording& recording);

/// Keeps what passes, and how it was cut.
class KeepingSink : public CorrectedSink {
public:
  explicit KeepingSink(int nrOfChannels) : channels(static_cast<size_t>(nrOfChannels)) {}
  void take(int64_t count, std::span<const double> values) override;
  Channels channels;
  std::vector<int64_t> counts;
};

struct Corrected {
  Channels channels;
  std::vector<int64_t> counts; ///< of the blocks that the sink took
  Findings findings;
  double rate = 0;
};

/// Gives a correction all samples, `blockLength` time points at a time, or in blocks of odd lengths (0).
void takeInAll(Correction& correction, const EngineRecording& recording, int64_t blockLength = 0);

/// The whole way with a store in memory.
Corrected corrected(const EngineRecording& recording, const CorrectionSettings& settings);
Corrected corrected(const EngineRecording& recording, const CorrectionSettings& settings, ChannelStore& store,
                    Observer& observer, int64_t blockLength = 0);

/// RMS over samples from ... to - 1; to < 0: to the end.
double rmsOf(const std::vector<double>& samples, int64_t from = 0, int64_t to = -1);
std::vector<double> differenceOf(const std::vector<double>& a, const std::vector<double>& b);
/// As stored: 32-bit floats.
std::vector<double> asStored(const std::vector<double>& samples);

} // namespace emeg
