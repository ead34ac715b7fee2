#include "files/formats/ProtocolFile.h"
#include "files/formats/TriggerMarkers.h"
#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

#include <array>
#include <cerrno>
#include <cmath>

namespace emeg {

namespace {

/// The path cut at its last '.', if that lies behind the last separator.
std::string withoutExtension(const std::string& path) {
  const std::string name = namePartOf(path);
  const size_t dot = name.find_last_of('.');
  return dot == std::string::npos ? path : path.substr(0, path.size() - name.size() + dot);
}

} // namespace

bool LMTRPluginEMEGFileConverter::openInput() {
  std::string ctcPath;
  return chooseInputFiles(ctcPath) && openCtcFile(ctcPath);
}

bool LMTRPluginEMEGFileConverter::chooseInputFiles(std::string& ctcPath) {
  std::string ccdPath;
  std::string prtPath;
  const bool ccdChosen =
      host::openFileName("Please select a CCD file...", "*.ccd", "CCD files (*.ccd)", ccdPath);
  if (ccdChosen) {
    if (!readChannelDescription(ccdPath)) return false;
    const CcdHeader& header = channels.channelDescription.header;
    prtPath = folderPartOf(ccdPath) + header.prtFileName();
    ctcPath = folderPartOf(ccdPath) + header.ctcFileName();
    protocolList.prtPresent = true; // also when the stored name is empty
  } else {
    protocolList.prtPresent =
        host::openFileName("Please select a PRT file...", "*.prt", "PRT files (*.prt)", prtPath);
  }
  if (protocolList.prtPresent) loadProtocols(prtPath);
  if (ccdChosen) return true;
  return host::openFileName("Please select a CTC file...", "*.ctc", "CTC files (*.ctc)", ctcPath) ||
         showError("This plugin requires a CTC file.");
}

bool LMTRPluginEMEGFileConverter::readChannelDescription(const std::string& ccdPath) {
  switch (readCcdFile(ccdPath, channels.channelDescription)) {
  case CcdReadResult::Ok:
    return true;
  case CcdReadResult::CannotOpen:
    return reportFileError("Error accessing CCD file.");
  case CcdReadResult::Truncated:
    break;
  }
  return reportFileError("Error reading file: ");
}

/// The main protocol and the triggers of an earlier run beside it; what cannot be opened is skipped.
void LMTRPluginEMEGFileConverter::loadProtocols(const std::string& prtPath) {
  const std::string basePath = withoutExtension(prtPath);
  for (const char* suffix : {"", triggerProtocolName})
    if (std::optional<Protocol> protocol = loadProtocol(basePath, suffix))
      protocolList.append(std::move(*protocol));
}

bool LMTRPluginEMEGFileConverter::openCtcFile(const std::string& ctcPath) {
  constexpr const char* cannotOpen = "Error accessing CTC file.";
  inputPathBuffer = PathBuffer(ctcPath);
  outputPathBuffer = PathBuffer(ctcPath);
  if (!input.ctcFile.openForReading(ctcPath)) return reportFileError(cannotOpen);
  if (ctcPath.size() < PathBuffer::endingLength) {
    errno = EINVAL;
    return reportFileError(cannotOpen);
  }

  std::array<unsigned char, ctcHeaderSize> bytes{};
  input.fileSize = input.ctcFile.size();
  if (input.fileSize < 0 || !input.ctcFile.seek(0) || !input.ctcFile.read(bytes.data(), bytes.size()))
    return reportFileError("Error reading file: ");
  const CtcHeader header = decodeCtcHeader(bytes);
  input.dataOffset = ctcHeaderSize;
  input.inputSampleFormat = inputSampleFormatOf(header.dataType);
  if (input.inputSampleFormat == SampleFormat::Unsupported) return showError("Unsupported data type");
  input.bytesPerSample = bytesPerSampleOf(input.inputSampleFormat);
  input.multiplexedInput = header.dataOrganisation != 1;
  input.nrOfTimePoints = header.nrOfTimePoints;
  values.samplingFrequency = static_cast<double>(header.samplingFrequency);
  values.samplingInterval = 1 / values.samplingFrequency;
  if (!std::isfinite(values.samplingFrequency) || !(values.samplingFrequency > 0)) {
    return showError(formatText("The sampling frequency of %s is %g Hz: it must be a positive number.",
                                ctcPath.c_str(), values.samplingFrequency));
  }
  if (input.nrOfTimePoints < 1) {
    return showError(formatText("%s holds no samples: its header counts %d time points.", ctcPath.c_str(),
                                header.nrOfTimePoints));
  }

  channels.nrOfChannels = header.nrOfChannels;
  channels.nrOfEEGChannels = header.nrOfChannels;
  channels.nrOfStimulationChannels = 0;
  const int nrOfChannels = std::max(channels.nrOfChannels, 0);
  channels.channelScale.assign(static_cast<size_t>(nrOfChannels), 1.0);
  channels.channelOffset.assign(static_cast<size_t>(nrOfChannels), 0.0);
  if (!input.multiplexedInput) {
    for (int64_t c = 0; c < nrOfChannels; ++c)
      input.channelDataOffsets.push_back(input.dataOffset + c * input.nrOfTimePoints * input.bytesPerSample);
  }
  for (Protocol& protocol : protocolList.protocols)
    scaleTimes(protocol, 1 / timeFactorOf(protocol.resolutionOfTime, values.samplingFrequency));
  completeChannelRecords();
  return true;
}

/// Without a CCD every channel gets a default record, and so does a channel that a CCD does not describe.
/// Such channels count as marked bad on purpose: choosing them one by one asks for each.
void LMTRPluginEMEGFileConverter::completeChannelRecords() {
  ChannelDescription& description = channels.channelDescription;
  for (int c = static_cast<int>(description.channelRecords.size()); c < channels.nrOfChannels; ++c) {
    constexpr int typeOfCtcInput = 0;
    CcdChannelRecord record =
        CcdChannelRecord::make(CcdChannelRecord::defaultName(c), typeOfCtcInput, values.samplingFrequency);
    record.setGood(false);
    description.channelRecords.push_back(record);
  }
  description.header.setNrOfChannels(static_cast<int>(description.channelRecords.size()));
}

} // namespace emeg
