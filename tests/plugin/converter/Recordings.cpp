#include "tests/plugin/converter/Recordings.h"

#include "files/formats/CtcFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace emeg {

namespace fs = std::filesystem;

std::string Recording::sampleBytes() const {
  const auto sampleSize = static_cast<size_t>(bytesPerWrittenSample(dataType));
  std::string bytes(samples.size() * static_cast<size_t>(nrOfTimePoints()) * sampleSize, '\0');
  for (int64_t c = 0; c < nrOfChannels(); ++c) {
    for (int64_t t = 0; t < nrOfTimePoints(); ++t) {
      const int64_t place = dataOrganisation == 1 ? c * nrOfTimePoints() + t : t * nrOfChannels() + c;
      storeSample(dataType, samples[static_cast<size_t>(c)][static_cast<size_t>(t)], bytes.data(), place);
    }
  }
  return bytes;
}

std::string Recording::bytes() const {
  return ctcBytes(dataType, dataOrganisation, nrOfChannels(), static_cast<int32_t>(nrOfTimePoints()),
                  static_cast<float>(samplingFrequency), sampleBytes());
}

Recording countingRecording(int nrOfChannels, int nrOfTimePoints, double samplingFrequency) {
  Recording recording;
  recording.samplingFrequency = samplingFrequency;
  for (int c = 0; c < nrOfChannels; ++c) {
    recording.samples.emplace_back();
    for (int t = 0; t < nrOfTimePoints; ++t) recording.samples.back().push_back(1000.0 * c + t);
  }
  return recording;
}

Recording wavyRecording(int nrOfChannels, int nrOfTimePoints, double samplingFrequency) {
  Recording recording;
  recording.samplingFrequency = samplingFrequency;
  for (int c = 0; c < nrOfChannels; ++c) {
    recording.samples.emplace_back();
    for (int t = 0; t < nrOfTimePoints; ++t) {
      const double seconds = t / samplingFrequency;
      const double value = 40.0 + 5.0 * c + 30.0 * std::sin(2.1 * seconds + c) +
                           20.0 * std::cos((40.0 + 3.0 * c) * seconds) +
                           6.0 * std::sin(0.9 * samplingFrequency * seconds * (1.0 + 0.05 * c));
      recording.samples.back().push_back(static_cast<double>(static_cast<float>(value)));
    }
  }
  return recording;
}

std::string ctcBytes(int32_t dataType, int32_t dataOrganisation, int nrOfChannels, int32_t nrOfTimePoints,
                     float samplingFrequency, const std::string& sampleBytes) {
  CtcHeader header;
  header.dataType = dataType;
  header.dataOrganisation = dataOrganisation;
  header.nrOfChannels = nrOfChannels;
  header.nrOfTimePoints = nrOfTimePoints;
  header.samplingFrequency = samplingFrequency;
  const std::array<unsigned char, ctcHeaderSize> bytes = encodeCtcHeader(header);
  return std::string(bytes.begin(), bytes.end()) + sampleBytes;
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream.flush()) throw std::runtime_error("cannot write " + path);
}

std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + path);
  std::stringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

bool exists(const std::string& path) {
  return fs::exists(path);
}

Recording readOutput(const std::string& path) {
  const std::string bytes = readFile(path);
  if (bytes.size() < ctcHeaderSize) throw std::runtime_error("no header in " + path);
  std::array<unsigned char, ctcHeaderSize> headerBytes{};
  std::memcpy(headerBytes.data(), bytes.data(), ctcHeaderSize);
  const CtcHeader header = decodeCtcHeader(headerBytes);
  if (header.dataType != 1 || header.dataOrganisation != 2)
    throw std::runtime_error("not floats, multiplexed: " + path);
  const auto nrOfChannels = static_cast<size_t>(header.nrOfChannels);
  const auto nrOfTimePoints = static_cast<size_t>(header.nrOfTimePoints);
  if (bytes.size() != ctcHeaderSize + nrOfChannels * nrOfTimePoints * sizeof(float))
    throw std::runtime_error("not the length that its header says: " + path);

  Recording recording;
  recording.samplingFrequency = static_cast<double>(header.samplingFrequency);
  recording.samples.assign(nrOfChannels, std::vector<double>(nrOfTimePoints));
  for (size_t t = 0; t < nrOfTimePoints; ++t) {
    for (size_t c = 0; c < nrOfChannels; ++c) {
      float value = 0;
      std::memcpy(&value, bytes.data() + ctcHeaderSize + (t * nrOfChannels + c) * sizeof(float),
                  sizeof(float));
      recording.samples[c][t] = static_cast<double>(value);
    }
  }
  return recording;
}

std::string protocolText(const std::string& resolution, const std::vector<std::string>& conditions) {
  std::string text = "\r\nFileVersion:        2\r\n\r\nResolutionOfTime:   " + resolution +
                     "\r\n\r\nNrOfConditions:     " + std::to_string(conditions.size());
  for (const std::string& condition : conditions) text += "\r\n\r\n" + condition;
  return text;
}

} // namespace emeg
