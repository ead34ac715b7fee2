#include "files/formats/OutputFile.h"
#include "files/formats/ProtocolFile.h"
#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

#include <cerrno>

namespace emeg {

namespace {
constexpr float longestDelayMs = 3000;
constexpr const char* cannotOpen = "Error accessing PRT file.";
constexpr const char* cannotWrite = "Error writing file: ";
} // namespace

bool LMTRPluginEMEGFileConverter::writeProtocols() {
  if (protocolList.protocols.empty()) return true;
  log.logProgress("Writing PRT");
  for (Protocol& protocol : protocolList.protocols)
    if (!writeProtocol(protocol)) return false;
  return true;
}

bool LMTRPluginEMEGFileConverter::writeProtocol(Protocol& protocol) {
  const std::string path = outputPathBuffer.withEnding(values.outputSuffix + protocol.name + ".prt");
  OutputFile file;
  if (!file.create(path)) return reportFileError(cannotOpen);

  assignMissingColours(protocol);
  const float startUs = values.intervalStartMs * 1000.0f;
  const float endUs = values.intervalEndMs * 1000.0f;
  cutToInterval(protocol, static_cast<double>(startUs), static_cast<double>(endUs));

  std::vector<std::string> labels;
  labels.reserve(protocol.conditions.size());
  for (int c = 0; c < protocol.nrOfConditions(); ++c) labels.push_back(conditionLabel(protocol, c));
  std::vector<double> delaysUs(labels.size(), 0.0);
  if (protocol.interactive && !customiseProtocol(protocol, labels, delaysUs)) return false;

  const std::string text =
      formatProtocol(protocol, inputPathBuffer.path(),
                     timeFactorOf(protocol.resolutionOfTime, values.samplingFrequency), labels, delaysUs);
  if (!file.write(text.data(), text.size())) return reportFileError(cannotWrite);
  // A name too long for the file system shows only here: the unfinished file's name is cut to what fits.
  if (!file.commit()) return reportFileError(errno == ENAMETOOLONG ? cannotOpen : cannotWrite);
  if (protocol.name.empty()) channels.channelDescription.header.setPrtFileName(namePartOf(path));
  return true;
}

/// Asks for other condition names and for delays, where the user wants that.
bool LMTRPluginEMEGFileConverter::customiseProtocol(const Protocol& protocol,
                                                    std::vector<std::string>& labels,
                                                    std::vector<double>& delaysUs) {
  const std::string question = formatText("Writing protocol (%d conditions).<br>"
                                          "Do you want to customize condition names and delays?",
                                          protocol.nrOfConditions());
  const int parameter = host::dialogIntegerParameter(5);
  const int answer = parameter >= 1 ? parameter - 1 : host::yesNoMessageBox(question.c_str());
  if (answer <= 0) return true;

  for (size_t c = 1; c < labels.size(); ++c) {
    const std::string namePrompt = formatText("Please provide alternate name for %s.", labels[c].c_str());
    labels[c] = host::textInput(namePrompt.c_str(), labels[c]);
    if (labels[c].empty()) return abortRun(log);
    const std::string delayPrompt = formatText("Please provide a delay (in ms) for %s.<br>"
                                               "Leave 0 to keep header information.",
                                               labels[c].c_str());
    const float delayMs = host::floatInput(delayPrompt.c_str(), 0, 0, longestDelayMs);
    if (!(delayMs >= 0)) return abortRun(log);
    delaysUs[c] = static_cast<double>(delayMs) * 1000;
  }
  return true;
}

} // namespace emeg
