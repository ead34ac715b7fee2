#include "tests/app/SimulatedFiles.h"

#include "app/Program.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace emeg {

namespace {

template <typename Sample>
double sampleAt(const std::string& bytes, size_t index) {
  Sample sample;
  std::memcpy(&sample, bytes.data() + ctcHeaderSize + index * sizeof(Sample), sizeof(Sample));
  return static_cast<double>(sample);
}

} // namespace

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

ReadRecording readRecording(const std::string& path) {
  const std::string bytes = bytesOf(path);
  ReadRecording recording;
  recording.fileSize = bytes.size();
  std::array<unsigned char, ctcHeaderSize> header{};
  std::memcpy(header.data(), bytes.data(), std::min(bytes.size(), header.size()));
  recording.header = decodeCtcHeader(header);

  const auto channels = static_cast<size_t>(recording.header.nrOfChannels);
  const auto points = static_cast<size_t>(recording.header.nrOfTimePoints);
  const auto width = static_cast<size_t>(bytesPerWrittenSample(recording.header.dataType));
  if (bytes.size() != ctcHeaderSize + channels * points * width)
    throw std::runtime_error("wrong size: " + path);
  recording.samples.resize(channels * points);
  for (size_t c = 0; c < channels; c++) {
    for (size_t t = 0; t < points; t++) {
      const size_t index = recording.header.dataOrganisation == 1 ? c * points + t : t * channels + c;
      double& sample = recording.samples[c * points + t];
      if (recording.header.dataType == 1) sample = sampleAt<float>(bytes, index);
      if (recording.header.dataType == 2) sample = sampleAt<double>(bytes, index);
      if (recording.header.dataType == 3) sample = sampleAt<int16_t>(bytes, index);
    }
  }
  return recording;
}

nlohmann::json readTruth(const std::string& path) {
  return nlohmann::json::parse(bytesOf(path));
}

ProgramRun runEmeg(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  ProgramRun run;
  run.status = runProgram(arguments, out, err);
  run.out = out.str();
  run.err = err.str();
  return run;
}

} // namespace emeg
