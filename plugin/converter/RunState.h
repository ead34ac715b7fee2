#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"
#include "dsp/FilterStages.h"
#include "engine/ChannelRole.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/CcdFile.h"
#include "files/formats/CtcFile.h"
#include "files/formats/Protocol.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace emeg {

/// What the converter offers and asks. Set before the run; the defaults are those of a general converter.
struct RunOptions {
  bool isEEG = true; ///< EEG, otherwise MEG
  bool selectChannels = true;
  bool selectTimeInterval = true;
  bool applyFilters = false;
  bool correctArtifacts = false;
  bool applyScaling = true;
  bool offerAverageReference = false;
  bool forceHeaderUpdate = true;     ///< rewrite the CCD header's values even when unchanged
  bool parametersFromDialog = false; ///< values come first from the host's plug-in dialogue
};

/// The recording that is read.
struct InputRecording {
  BinaryFile ctcFile;
  int64_t fileSize = 0;
  int64_t dataOffset = 0; ///< byte of the first sample
  bool multiplexedInput = true;
  SampleFormat inputSampleFormat = SampleFormat::Float32; ///< the converter's own dataType code
  int bytesPerSample = 4;
  int64_t nrOfTimePoints = 0;
  std::vector<int64_t>
      channelDataOffsets; ///< channel after channel only: byte of each channel's first sample
};

/// One record, scale and offset per input channel.
struct ChannelTable {
  int nrOfChannels = 0;
  int nrOfStimulationChannels = 0;
  int nrOfGradiometers = 0;
  int nrOfMagnetometers = 0;
  int nrOfEEGChannels = 0;
  int nrOfEOGChannels = 0;
  int nrOfEMGChannels = 0;
  int nrOfECGChannels = 0;
  int nrOfRespirationChannels = 0;
  int nrOfOtherChannels = 0;
  std::vector<int32_t> gradiometerChannelIndices; ///< channel numbers of the gradiometers
  std::vector<int32_t> magnetometerChannelIndices;
  ChannelDescription channelDescription; ///< header, records and extra records
  std::vector<double> channelScale;      ///< output = sample x scale + offset
  std::vector<double> channelOffset;
  std::vector<ChannelRole> roles;    ///< may be shorter than the table, or empty: the others are all alike
  std::string inputFileName = "CCD"; ///< the file in which a channel is marked as bad
};

/// Which channels go out, in output order.
struct ChannelSelection {
  int32_t channelChoice = 0;
  int32_t nrOfSelectedChannels = 0;
  int32_t nrOfSelectedGradiometers = 0;
  int32_t nrOfSelectedMagnetometers = 0;
  std::vector<int32_t> selectedChannels;      ///< channel numbers
  std::vector<int32_t> selectedGradiometers;  ///< positions in the gradiometer list
  std::vector<int32_t> selectedMagnetometers; ///< positions in the magnetometer list
  bool channelSubset = false;
};

/// Stages of the correction, and what follows from them.
struct StageSwitches {
  bool correctSaturations = false;
  bool correctGradient = false;
  bool correctBCG = false;
  bool correctOcular = false;
  bool removeLineSinusoids = false;
  bool useAverageReference = false;
  int32_t volumeWise = 0; ///< 0: slice by slice; anything else: volume by volume

  bool filteringNeeded = false;
  bool scalingNeeded = false;
  bool intervalRestricted = false;
  bool anyArtifactCorrection = false;
  bool correctionNeeded = false;
  bool processingNeeded = false;
  bool rewriteNeeded = false;
};

/// Answers of the filter dialogues and the edges that follow from them.
struct FilterChoice {
  int32_t decimationFactor = 1;
  int32_t filterOrder = 2;
  int32_t nrOfNotches = 0;
  std::vector<double> notchFrequencies; ///< Hz
  std::vector<double> notchWidths;      ///< Hz
  double highPassCutOff = 0;            ///< Hz; 0: off
  double lowPassCutOff = 0;             ///< Hz; 0: off
  FilterStageList stages;
  bool stagesOverflowed = false; ///< more edges were asked for than a filter holds
};

/// The samples of a run. Time points count from the start of the recording at the input rate.
struct SampleSpan {
  float durationMs = 0;
  int64_t firstTimePoint = 0;
  int64_t lastTimePoint = 0;
  int64_t nrOfIntervalTimePoints = 0;
  int64_t nrOfOutputTimePoints = 0; ///< after decimation
  int64_t marginTimePoints = 0;
  int64_t firstProcessedTimePoint = 0; ///< the interval widened by the margin, inside the recording
  int64_t lastProcessedTimePoint = 0;
  int32_t log2FftLength = 0;
  int64_t fftLength = 0;
  int64_t timePointsPerChunk = 0;

  int64_t nrOfProcessedTimePoints() const { return lastProcessedTimePoint - firstProcessedTimePoint + 1; }
};

/// A stretch of input that holds whole time points of all channels.
struct SourceChunk {
  BinaryFile* stream = nullptr;
  int64_t byteOffset = 0;
};

/// Where the time points of one chunk file come from.
struct ChunkSource {
  int64_t firstSourceChunk = 0;
  int64_t lastSourceChunk = 0;
  int64_t offsetInFirst = 0; ///< time points
  int64_t offsetInLast = 0;
};

/// The map from chunk files to the input; empty for input that is stored channel after channel.
struct ChunkLayout {
  int64_t sourceChunkLength = 0; ///< time points
  int64_t valuesPerSourceChunk = 0;
  int64_t nrOfSourceChunks = 0; ///< 0: the CTC file itself is the source
  std::vector<ChunkSource> sources;
  std::vector<SourceChunk> sourceChunks;
};

/// The protocols of a run, in writing order.
struct ProtocolList {
  bool prtPresent = false;
  std::vector<Protocol> protocols;
  int currentProtocol = -1;
  double timeFactor = 0; ///< microseconds per second, set with the trigger protocol

  Protocol& current() { return protocols[static_cast<size_t>(currentProtocol)]; }
  void append(Protocol protocol) {
    protocols.push_back(std::move(protocol));
    currentProtocol = static_cast<int>(protocols.size()) - 1;
  }
};

} // namespace emeg
