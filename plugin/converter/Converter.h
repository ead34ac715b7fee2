#pragma once

#include "artifacts/cardiac/search/BeatSearch.h"
#include "engine/Method.h"
#include "files/formats/ChunkFiles.h"
#include "plugin/converter/RunState.h"
#include "plugin/converter/messages/Messages.h"
#include "plugin/converter/messages/PathBuffer.h"
#include "plugin/converter/messages/RunValues.h"

#include <cstdint>
#include <string>

namespace emeg {

class BeatStrategy;
class TimingStrategy;

/// One run: reads a recording, asks for parameters, corrects it channel by channel and writes the result. An
/// operation that fails reports the failure and returns false; callers pass false upwards. A converter runs
/// once. Operations are declared in the order in which a run calls them.
class LMTRPluginEMEGFileConverter {
public:
  /// `logPrefix` starts every progress line; `littleEndianData` says how the data files store numbers.
  LMTRPluginEMEGFileConverter(const char* logPrefix, bool littleEndianData);
  virtual ~LMTRPluginEMEGFileConverter();
  LMTRPluginEMEGFileConverter(const LMTRPluginEMEGFileConverter&) = delete;
  LMTRPluginEMEGFileConverter& operator=(const LMTRPluginEMEGFileConverter&) = delete;

  // --- what a subclass may replace ---
  /// The whole run, for hosts of at least the given version.
  virtual bool run(int32_t major, int32_t minor, int32_t revision);
  virtual bool buildOutputName();
  virtual bool openInput();
  /// Called when the chunk files exist; its result is that of the parameter definition.
  virtual bool afterChunkFilesHook() { return true; }
  /// Called between the PRT and the CCD output.
  virtual bool firstOutputHook() { return true; }
  virtual bool secondOutputHook() { return true; }

  // --- state of the run ---
  RunOptions options;
  RunValues values;
  ProgressLog log;
  bool swapBytes = false; ///< the data's byte order is not the machine's
  int32_t requiredMajorVersion = 0;
  int32_t requiredMinorVersion = 0;
  int32_t requiredRevision = 0;
  PathBuffer inputPathBuffer;  ///< the CTC path that was chosen; chunk files are named after it
  PathBuffer outputPathBuffer; ///< the same path, then the output CTC's; output files are named after it
  InputRecording input;
  ChannelTable channels;
  ChannelSelection selection;
  StageSwitches switches;
  FilterChoice filters;
  int32_t scalingOrder = 0;
  std::vector<double> averageReferenceWeights; ///< one per output channel
  SampleSpan span;
  ChunkLayout chunkLayout;
  ChunkFiles chunkFiles;
  ProtocolList protocolList;
  Method method = asThePluginDoes; ///< of the engine
  MRSequence sequence;
  FoundBeats beats; ///< positions in samples of the series at the reduced rate

  // --- converter/steps: the run sequence ---
  bool checkHostVersion(int32_t major, int32_t minor, int32_t revision);
  bool defineParameters();

  // --- files/steps: input ---
  bool chooseInputFiles(std::string& ctcPath);
  bool readChannelDescription(const std::string& ccdPath);
  void loadProtocols(const std::string& prtPath);
  bool openCtcFile(const std::string& ctcPath);
  void completeChannelRecords();

  // --- converter/steps: parameter dialogues ---
  bool askParameters();
  bool askChannelChoice();
  bool buildChannelLists();
  bool selectCustomChannels(const char* typeWord, const std::vector<int32_t>& typeChannels,
                            std::vector<int32_t>& positions);
  bool askTimeInterval();
  bool askArtifactCorrection();
  bool askFilters();
  bool askDecimation();
  bool askNotches(int32_t mode);
  bool askCutOff(int32_t mode, const char* edgeName, int dialogIndex, double& cutOff);
  bool askScalingAndReference();
  void applyScalingOrder();
  bool deriveSampleSpan();
  bool checkRunIsPossible();

  // --- converter/steps: what follows from the answers ---
  bool computeChunkLayout();
  bool checkOutputPath();
  bool createChunks();
  int64_t nrOfMissingTimePoints() const;
  bool holdsSelectedChannels() const;
  bool fillChunk(int chunk, std::vector<float>& chunkSamples);
  bool fillFromBlocks(int chunk, std::vector<float>& chunkSamples);
  bool fillFromChannels(int64_t start, int64_t count, std::vector<float>& chunkSamples);

  // --- converter/correction: the engine's shell ---
  /// The role of an output channel.
  ChannelRole roleOf(int32_t outputChannel) const;
  virtual bool processChannels();
  /// The same with other ways to the scanner's timing and to the heart beats.
  bool correctChannels(TimingStrategy& timing, BeatStrategy& beatStrategy);
  bool writeCtc(int32_t dataType, int32_t dataOrganisation);
  bool writeProtocols();
  bool writeProtocol(Protocol& protocol);
  bool customiseProtocol(const Protocol& protocol, std::vector<std::string>& labels,
                         std::vector<double>& delaysUs);
  bool writeCcd();
  void updateChannelDescription();
  bool finishRun();
};

/// The EEG converter: adds nothing to its base.
class LMTRPluginEEGFileConverter : public LMTRPluginEMEGFileConverter {
public:
  using LMTRPluginEMEGFileConverter::LMTRPluginEMEGFileConverter;
};

/// The converter of the artifact plug-in: the run without the two output hooks.
class EMEGArtifactPreprocessor : public LMTRPluginEEGFileConverter {
public:
  using LMTRPluginEEGFileConverter::LMTRPluginEEGFileConverter;
  bool run(int32_t major, int32_t minor, int32_t revision) override;
};

} // namespace emeg
