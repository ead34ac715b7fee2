#pragma once

#include "files/exchange/RecordingReader.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace emeg {

/// A recording whose samples a test can see and change: samples[c][t] in microvolts.
class MemoryRecording : public RecordingReader {
public:
  MemoryRecording() = default;
  /// Everything of a recording.
  explicit MemoryRecording(const std::string& path);

  RecordingHeader& editableHeader() { return header_; }
  std::vector<std::vector<double>> samples;

  /// Adds a channel with the value of every time point.
  void addChannel(const std::string& name, ChannelKind kind, const std::function<double(int64_t)>& valueAt);
  void addMarker(const std::string& type, const std::string& description, double onset, double duration = 0);
  /// Writes it in the format of the extension.
  void save(const std::string& path);

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override;
};

/// A recording of a scan without heart beats (six channels, 1 kHz, 40 s), made once and kept for all tests.
const MemoryRecording& scanRecording();
/// The same with heart beats.
const MemoryRecording& heartRecording();

/// A copy to change.
std::unique_ptr<MemoryRecording> copyOf(const MemoryRecording& recording);

/// Root mean square of the difference of two channels over their common length.
double rmsDifference(const std::vector<double>& a, const std::vector<double>& b);
/// Amplitude of a sinusoid in a signal.
double amplitudeAt(const std::vector<double>& signal, double hz, double samplingFrequency);

} // namespace emeg
