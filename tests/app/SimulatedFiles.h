#pragma once

#include "files/formats/CtcFile.h"
#include "tests/TestFolder.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace emeg {

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
