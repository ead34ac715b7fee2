#pragma once

#include "plugin/converter/Converter.h"
#include "tests/plugin/converter/Recordings.h"
#include "tests/plugin/converter/ScriptedHost.h"

#include <string>
#include <vector>

namespace emeg {

inline constexpr const char* testLogPrefix = "// EMEG artifacts > ";

/// A log line of the run: the prefix and the message.
inline std::string line(const std::string& message) {
  return testLogPrefix + message;
}

/// The converter with the options of the artifact plug-in.
class PluginConverter : public EMEGArtifactPreprocessor {
public:
  explicit PluginConverter(bool littleEndianData = true)
      : EMEGArtifactPreprocessor(testLogPrefix, littleEndianData) {
    options.isEEG = true;
    options.selectChannels = false;
    options.selectTimeInterval = false;
    options.applyFilters = false;
    options.correctArtifacts = true;
    options.applyScaling = true;
    options.offerAverageReference = false;
    options.forceHeaderUpdate = false;
  }
  bool start() { return EMEGArtifactPreprocessor::run(2, 1, 0); }
};

/// The general converter with everything switched off that a test does not ask for.
class QuietConverter : public LMTRPluginEMEGFileConverter {
public:
  explicit QuietConverter(bool littleEndianData = true)
      : LMTRPluginEMEGFileConverter(testLogPrefix, littleEndianData) {
    options.selectChannels = false;
    options.selectTimeInterval = false;
    options.applyScaling = false;
    options.forceHeaderUpdate = false;
  }
  bool start() { return LMTRPluginEMEGFileConverter::run(2, 1, 0); }
};

/// A folder with "run1.ctc" and a host whose user chooses it, without CCD and PRT.
struct ChosenRecording {
  explicit ChosenRecording(const Recording& recording) : ChosenRecording(recording.bytes()) {}
  explicit ChosenRecording(const std::string& bytes) {
    writeFile(ctcPath(), bytes);
    host.fileAnswers = {"", "", ctcPath()};
  }
  std::string ctcPath() const { return folder.path("run1.ctc"); }

  TestFolder folder;
  ScriptedHost host;
};

/// A converter whose recording is there without any file: the parameter dialogues alone.
template <typename Converter>
void pretendInput(Converter& converter, int nrOfChannels, int64_t nrOfTimePoints, double samplingFrequency) {
  converter.inputPathBuffer = PathBuffer("run1.ctc");
  converter.outputPathBuffer = PathBuffer("run1.ctc");
  converter.input.nrOfTimePoints = nrOfTimePoints;
  converter.input.fileSize = nrOfTimePoints * nrOfChannels * converter.input.bytesPerSample;
  converter.values.samplingFrequency = samplingFrequency;
  converter.values.samplingInterval = 1 / samplingFrequency;
  converter.channels.nrOfChannels = nrOfChannels;
  converter.channels.nrOfEEGChannels = nrOfChannels;
  const auto count = static_cast<size_t>(nrOfChannels);
  converter.channels.channelScale.assign(count, 1.0);
  converter.channels.channelOffset.assign(count, 0.0);
  for (int c = 0; c < nrOfChannels; ++c)
    converter.channels.channelDescription.channelRecords.push_back(
        CcdChannelRecord::make(CcdChannelRecord::defaultName(c), 0, samplingFrequency));
}

} // namespace emeg
