#include "tests/app/correct/MemoryRecording.h"

#include "files/exchange/RecordingWriter.h"
#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace emeg {

MemoryRecording::MemoryRecording(const std::string& path) {
  const auto reader = openRecording(path);
  header_ = reader->header();
  for (RecordingChannel& channel : header_.channels) channel.stored.reset();
  const auto length = static_cast<size_t>(header_.nrOfTimePoints);
  std::vector<double> values(length * header_.channels.size());
  reader->read(0, header_.nrOfTimePoints, values);
  for (size_t c = 0; c < header_.channels.size(); ++c) {
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(c * length);
    samples.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(length));
  }
}

void MemoryRecording::addChannel(const std::string& name, ChannelKind kind,
                                 const std::function<double(int64_t)>& valueAt) {
  RecordingChannel channel;
  channel.name = name;
  channel.kind = kind;
  channel.unit = "uV";
  header_.channels.push_back(channel);
  std::vector<double> values(static_cast<size_t>(header_.nrOfTimePoints));
  for (size_t t = 0; t < values.size(); ++t) values[t] = valueAt(static_cast<int64_t>(t));
  samples.push_back(std::move(values));
}

void MemoryRecording::addMarker(const std::string& type, const std::string& description, double onset,
                                double duration) {
  RecordingMarker marker;
  marker.type = type;
  marker.description = description;
  marker.onset = onset;
  marker.duration = duration;
  header_.markers.push_back(marker);
  std::stable_sort(header_.markers.begin(), header_.markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
}

void MemoryRecording::save(const std::string& path) {
  WriteOptions options;
  options.overwrite = true;
  if (needsRanges(path, header_)) options.ranges = measureRanges(*this, [](double) {});
  const auto writer = createRecording(path, header_, options);
  std::vector<double> values(static_cast<size_t>(header_.nrOfTimePoints) * samples.size());
  read(0, header_.nrOfTimePoints, values);
  writer->write(header_.nrOfTimePoints, values);
  writer->finish();
}

void MemoryRecording::readBlock(int64_t first, int64_t count, std::span<double> values) {
  for (size_t c = 0; c < samples.size(); ++c)
    std::copy_n(samples[c].begin() + first, count,
                values.begin() + static_cast<std::ptrdiff_t>(c * static_cast<size_t>(count)));
}

namespace {

std::unique_ptr<MemoryRecording> simulated(const std::string& preset) {
  const TestFolder folder;
  const std::string path = folder / "recording.ctc";
  const ProgramRun run = runEmeg({"simulate", preset, path, "--fs", "1000", "--seconds", "40", "--channels",
                                  "6", "--seed", "5", "--no-truth", "--no-prt"});
  if (run.status != 0) throw std::runtime_error(run.err);
  auto recording = std::make_unique<MemoryRecording>(path);
  recording->editableHeader().files.clear();
  return recording;
}

} // namespace

const MemoryRecording& scanRecording() {
  static const std::unique_ptr<MemoryRecording> recording = simulated("gap");
  return *recording;
}

const MemoryRecording& heartRecording() {
  static const std::unique_ptr<MemoryRecording> recording = simulated("both");
  return *recording;
}

std::unique_ptr<MemoryRecording> copyOf(const MemoryRecording& recording) {
  auto copy = std::make_unique<MemoryRecording>();
  copy->editableHeader() = recording.header();
  copy->samples = recording.samples;
  return copy;
}

double rmsDifference(const std::vector<double>& a, const std::vector<double>& b) {
  const size_t length = std::min(a.size(), b.size());
  double squares = 0;
  for (size_t i = 0; i < length; ++i) squares += (a[i] - b[i]) * (a[i] - b[i]);
  return std::sqrt(squares / static_cast<double>(length));
}

double amplitudeAt(const std::vector<double>& signal, double hz, double samplingFrequency) {
  double re = 0;
  double im = 0;
  for (size_t i = 0; i < signal.size(); ++i) {
    const double phase = 2 * std::numbers::pi * hz * static_cast<double>(i) / samplingFrequency;
    re += signal[i] * std::cos(phase);
    im += signal[i] * std::sin(phase);
  }
  return 2 * std::hypot(re, im) / static_cast<double>(signal.size());
}

} // namespace emeg
