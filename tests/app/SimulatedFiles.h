#pragma once

#include "files/formats/CtcFile.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace emeg {

/// A folder for one test that goes with everything in it.
class TestFolder {
public:
  TestFolder();
  ~TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }
  /// Names of the files in it, sorted.
  std::vector<std::string> fileNames() const;

private:
  std::string path_;
};

std::string bytesOf(const std::string& path);

/// A CTC file read without the writer's code: samples as stored, channel after channel.
struct ReadRecording {
  CtcHeader header;
  size_t fileSize = 0;
  std::vector<double> samples;

  double at(int channel, int64_t timePoint) const {
    return samples[static_cast<size_t>(channel * int64_t{header.nrOfTimePoints} + timePoint)];
  }
};
ReadRecording readRecording(const std::string& path);

nlohmann::json readTruth(const std::string& path);

/// What a run of the command line gave.
struct ProgramRun {
  int status = 0;
  std::string out;
  std::string err;
};
ProgramRun runEmeg(const std::vector<std::string>& arguments);

} // namespace emeg
