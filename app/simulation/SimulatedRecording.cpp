#include "app/simulation/SimulatedRecording.h"

#include "app/simulation/CtcRecording.h"
#include "app/simulation/RecordingDescription.h"
#include "app/simulation/ScannerTriggers.h"
#include "app/simulation/Simulation.h"
#include "files/exchange/FileExtension.h"
#include "files/exchange/RecordingWriter.h"
#include "files/formats/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

namespace emeg {

namespace {

namespace fs = std::filesystem;

/// The range that a 24-bit file gets: steps of 1/32 microvolt.
constexpr double rangeOf24BitsUv = 262143;

bool isCtc(const std::string& path) {
  return path.ends_with(".ctc");
}

/// Values per block and part (8 MB of doubles), and its most time points.
constexpr int64_t valuesPerBlock = 1 << 20;
constexpr int64_t longestBlock = 1 << 16;

/// Full paths of the files that a target asks for; empty ones are not written.
struct RecordingPaths {
  std::string recording, ccd, prt, clean, pulse, truth;

  std::vector<std::string> all() const {
    std::vector<std::string> paths;
    for (const std::string& path : {clean, pulse, truth, prt, ccd, recording})
      if (!path.empty()) paths.push_back(path);
    return paths;
  }
  RecordingFileNames names() const {
    const auto nameOf = [](const std::string& path) { return fs::path(path).filename().string(); };
    return {nameOf(recording), nameOf(ccd), nameOf(prt), nameOf(clean), nameOf(pulse), nameOf(truth)};
  }
};

RecordingPaths pathsOf(const SimulationParameters& parameters, const RecordingTarget& target) {
  const std::string stem = withoutExtension(target.path);
  RecordingPaths paths;
  paths.recording = target.path;
  if (target.withCcd && isCtc(target.path)) paths.ccd = stem + ".ccd";
  if (target.withPrt && isCtc(target.path)) paths.prt = stem + ".prt";
  if (target.withTruth) {
    paths.truth = stem + "_truth.json";
    paths.clean = stem + "_clean.ctc";
    if (parameters.heart) paths.pulse = stem + "_pulse.ctc";
  }
  return paths;
}

std::string failure(const std::string& path) {
  const int error = errno;
  return "Cannot write \"" + path + "\": " + (error != 0 ? std::strerror(error) : "unknown error") + ".";
}

void removeFiles(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    std::error_code ignored;
    fs::remove(path, ignored);
  }
}

/// All files of one recording while they are being written.
class Recording {
public:
  Recording(const SimulationParameters& parameters, const RecordingTarget& target)
      : simulation_(parameters), sizes_(simulation_), storage_(target.storage),
        paths_(pathsOf(parameters, target)), overwrite_(target.overwrite), withMarkers_(target.withPrt) {
    if (simulation_.gradient() != nullptr && withMarkers_)
      triggers_ = scannerTriggers(parameters, *simulation_.gradient());
  }

  std::string create() {
    CtcHeader header;
    header.nrOfChannels = simulation_.parameters().nrOfChannels;
    header.nrOfTimePoints = static_cast<int32_t>(simulation_.parameters().nrOfTimePoints());
    header.samplingFrequency = static_cast<float>(simulation_.parameters().samplingFrequency);
    if (!paths_.clean.empty() && !clean_.create(paths_.clean, header, 1)) return failure(paths_.clean);
    if (!paths_.pulse.empty() && !pulse_.create(paths_.pulse, header, 1)) return failure(paths_.pulse);
    if (!isCtc(paths_.recording)) return createExchanged();
    header.dataType = storage_.dataType;
    header.dataOrganisation = storage_.dataOrganisation;
    if (!recorded_.create(paths_.recording, header, storage_.microvoltsPerUnit))
      return failure(paths_.recording);
    return "";
  }

  std::string writeSamples(const std::function<void(double)>& progress) {
    const SimulationParameters& parameters = simulation_.parameters();
    const int64_t blockLength = std::min(longestBlock, valuesPerBlock / parameters.nrOfChannels);
    const auto total = static_cast<double>(parameters.nrOfTimePoints());
    SimulatedBlock block;
    while (simulation_.next(blockLength, block)) {
      sizes_.add(block);
      const int64_t first = block.firstTimePoint;
      const int64_t count = block.nrOfTimePoints;
      if (!paths_.clean.empty() && !clean_.write(first, count, block.clean)) return failure(paths_.clean);
      if (!paths_.pulse.empty() && !pulse_.write(first, count, block.pulse)) return failure(paths_.pulse);
      sum_.resize(block.clean.size());
      for (int c = 0; c < block.nrOfChannels; c++)
        for (int64_t t = 0; t < count; t++) sum_[block.indexOf(c, t)] = block.recorded(c, t);
      if (exchanged_)
        exchanged_->write(count, sum_);
      else if (!recorded_.write(first, count, sum_))
        return failure(paths_.recording);
      progress(static_cast<double>(first + count) / total);
    }
    return "";
  }

  std::string writeDescriptions() {
    const SimulationParameters& parameters = simulation_.parameters();
    const RecordingFileNames names = paths_.names();
    if (!paths_.ccd.empty()) {
      const auto bytes = encodeCcdFile(describeChannels(parameters, names.ctc, names.prt));
      if (!ccd_.create(paths_.ccd) || !ccd_.write(bytes.data(), bytes.size())) return failure(paths_.ccd);
    }
    if (!paths_.prt.empty()) {
      const std::string text = protocolText(parameters, triggers_, names.ctc);
      if (!prt_.create(paths_.prt) || !prt_.write(text.data(), text.size())) return failure(paths_.prt);
    }
    if (!paths_.truth.empty()) {
      const std::string text = truthText(simulation_, sizes_, names, storage_, triggers_.size());
      if (!truth_.create(paths_.truth) || !truth_.write(text.data(), text.size()))
        return failure(paths_.truth);
    }
    return "";
  }

  /// The recording itself comes last: where it is, everything is.
  std::string commit() {
    std::vector<std::string> committed;
    std::string problem;
    const auto commitFile = [&](auto& file, const std::string& path) {
      if (path.empty() || !problem.empty()) return;
      if (file.commit())
        committed.push_back(path);
      else
        problem = failure(path);
    };
    commitFile(clean_, paths_.clean);
    commitFile(pulse_, paths_.pulse);
    commitFile(truth_, paths_.truth);
    commitFile(prt_, paths_.prt);
    commitFile(ccd_, paths_.ccd);
    if (!exchanged_) commitFile(recorded_, paths_.recording);
    if (exchanged_ && problem.empty()) {
      try {
        exchanged_->finish();
      } catch (const RecordingError& error) {
        problem = error.what();
      }
    }
    if (!problem.empty()) removeFiles(committed);
    return problem;
  }

private:
  /// A file of another format than CTC.
  std::string createExchanged() {
    RecordingHeader header = describeRecording(simulation_.parameters(), triggers_);
    if (!withMarkers_) header.markers.clear();
    WriteOptions options;
    options.overwrite = overwrite_;
    if (needsRanges(paths_.recording, header)) options.ranges = ranges();
    exchanged_ = createRecording(paths_.recording, header, options);
    return "";
  }

  /// 24 bits hold whatever can be simulated; for 16 the whole recording is simulated once more.
  std::vector<ValueRange> ranges() const {
    const SimulationParameters& parameters = simulation_.parameters();
    const auto nrOfChannels = static_cast<size_t>(parameters.nrOfChannels);
    if (extensionOf(paths_.recording) == ".bdf")
      return std::vector<ValueRange>(nrOfChannels, {-rangeOf24BitsUv, rangeOf24BitsUv});
    std::vector<ValueRange> ranges(nrOfChannels);
    Simulation rehearsal(parameters);
    SimulatedBlock block;
    while (rehearsal.next(std::min(longestBlock, valuesPerBlock / parameters.nrOfChannels), block)) {
      for (int c = 0; c < block.nrOfChannels; c++) {
        ValueRange& range = ranges[static_cast<size_t>(c)];
        for (int64_t t = 0; t < block.nrOfTimePoints; t++) {
          range.smallest = std::min(range.smallest, block.recorded(c, t));
          range.largest = std::max(range.largest, block.recorded(c, t));
        }
      }
    }
    return ranges;
  }

  Simulation simulation_;
  PartSizes sizes_;
  SampleStorage storage_;
  RecordingPaths paths_;
  bool overwrite_;
  bool withMarkers_;
  std::vector<int64_t> triggers_;
  CtcRecording recorded_, clean_, pulse_;
  std::unique_ptr<RecordingWriter> exchanged_; ///< instead of recorded_ for another format
  OutputFile ccd_, prt_, truth_;
  std::vector<double> sum_;
};

} // namespace

bool isRecordingPath(const std::string& path) {
  return isCtc(path)
             ? fs::path(path).filename() != ".ctc"
             : extensionOf(path) == ".vhdr" || extensionOf(path) == ".edf" || extensionOf(path) == ".bdf";
}

std::string writeRecording(const SimulationParameters& parameters, const RecordingTarget& target,
                           const std::function<void(double)>& progress) {
  if (!target.overwrite) {
    for (const std::string& path : pathsOf(parameters, target).all()) {
      std::error_code ignored;
      if (fs::exists(fs::symlink_status(path, ignored)))
        return "\"" + path + "\" exists already; choose another name or allow it to be replaced (--force).";
    }
  }

  try {
    Recording recording(parameters, target);
    std::string problem = recording.create();
    if (problem.empty()) problem = recording.writeSamples(progress);
    if (problem.empty()) problem = recording.writeDescriptions();
    if (problem.empty()) problem = recording.commit();
    return problem;
  } catch (const RecordingError& error) {
    return error.what();
  }
}

} // namespace emeg
