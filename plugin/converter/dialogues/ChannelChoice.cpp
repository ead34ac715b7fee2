#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

#include <numeric>

namespace emeg {

namespace {

// Channel menu answers and host dialogue codes do not agree; these are the codes.
enum EEGCode { AllEEG = 1, AllEEGToo = 2, CustomEEG = 4 };
enum MEGCode {
  AllGradiometers = 1,
  AllGradiometersToo = 3,
  CustomGradiometers = 4,
  AllMagnetometers = 5,
  CustomMagnetometers = 7,
  AllMEG = 8
};

std::vector<int32_t> firstNumbers(int count) {
  std::vector<int32_t> numbers(static_cast<size_t>(count > 0 ? count : 0));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

int32_t sizeOf(const std::vector<int32_t>& list) {
  return static_cast<int32_t>(list.size());
}

} // namespace

bool LMTRPluginEMEGFileConverter::askChannelChoice() {
  if (!options.selectChannels) return true;
  selection.channelChoice = host::dialogIntegerParameter(1);
  if (selection.channelChoice > 0) return true;

  std::string prompt =
      formatText("Total number of channels: %d.<br>"
                 "                    - %d stimulation channels;<br>"
                 "                    - %d MEG gradiometer channels;<br>"
                 "                    - %d MEG magnetometer channels;<br>"
                 "                    - %d EEG channels;<br><br>"
                 "                    - %d EOG, %d EMG, %d ECG and %d respiration channels;<br>"
                 "                    - %d other channels.<br><br>",
                 channels.nrOfChannels, channels.nrOfStimulationChannels, channels.nrOfGradiometers,
                 channels.nrOfMagnetometers, channels.nrOfEEGChannels, channels.nrOfEOGChannels,
                 channels.nrOfEMGChannels, channels.nrOfECGChannels, channels.nrOfRespirationChannels,
                 channels.nrOfOtherChannels);
  if (options.isEEG) {
    prompt += "Would you like to export:<br>"
              "                        - 1: all EEG channels?<br>"
              "                        - 2: a custom selection of EEG channels?";
  } else {
    prompt += "Would you like to export:<br>"
              "                        - 1: all gradiometer channels?<br>"
              "                        - 2: a custom selection of gradiometer channels?<br>"
              "                        - 3: all magnetometer channels?<br>"
              "                        - 4: a custom selection of magnetometer channels?<br>"
              "                        - 5: all gradiometer and magnetometer channels?";
  }
  selection.channelChoice = host::integerInput(prompt.c_str(), 1, 1, options.isEEG ? 2 : 5);
  return selection.channelChoice > 0 || abortRun(log);
}

bool LMTRPluginEMEGFileConverter::buildChannelLists() {
  const int32_t choice = selection.channelChoice;
  selection.selectedChannels.clear();
  selection.selectedGradiometers.clear();
  selection.selectedMagnetometers.clear();

  if (!options.selectChannels) {
    selection.selectedChannels = firstNumbers(channels.nrOfChannels);
  } else if (options.isEEG) {
    const std::vector<int32_t> eegChannels = firstNumbers(channels.nrOfEEGChannels);
    if (choice == AllEEG || choice == AllEEGToo) selection.selectedChannels = eegChannels;
    if (choice == CustomEEG && !selectCustomChannels("EEG", eegChannels, selection.selectedChannels))
      return false;
  } else {
    const std::vector<int32_t>& gradiometers = channels.gradiometerChannelIndices;
    const std::vector<int32_t>& magnetometers = channels.magnetometerChannelIndices;
    if (choice == AllGradiometers || choice == AllGradiometersToo || choice == AllMEG)
      selection.selectedGradiometers = firstNumbers(sizeOf(gradiometers));
    if (choice == AllMagnetometers || choice == AllMEG)
      selection.selectedMagnetometers = firstNumbers(sizeOf(magnetometers));
    if (choice == CustomGradiometers &&
        !selectCustomChannels("gradiometer", gradiometers, selection.selectedGradiometers))
      return false;
    if (choice == CustomMagnetometers &&
        !selectCustomChannels("magnetometer", magnetometers, selection.selectedMagnetometers))
      return false;
    for (const int32_t position : selection.selectedGradiometers)
      selection.selectedChannels.push_back(gradiometers[static_cast<size_t>(position)]);
    for (const int32_t position : selection.selectedMagnetometers)
      selection.selectedChannels.push_back(magnetometers[static_cast<size_t>(position)]);
  }

  selection.nrOfSelectedGradiometers = sizeOf(selection.selectedGradiometers);
  selection.nrOfSelectedMagnetometers = sizeOf(selection.selectedMagnetometers);
  selection.nrOfSelectedChannels = sizeOf(selection.selectedChannels);
  selection.channelSubset = selection.nrOfSelectedChannels != channels.nrOfChannels;
  return selection.nrOfSelectedChannels >= 1 || showError("No channels found!");
}

/// `typeChannels` maps positions within the type to channel numbers; the chosen positions come back.
bool LMTRPluginEMEGFileConverter::selectCustomChannels(const char* typeWord,
                                                       const std::vector<int32_t>& typeChannels,
                                                       std::vector<int32_t>& positions) {
  const int32_t available = sizeOf(typeChannels);
  if (available < 1) return true; // nothing to choose from: "No channels found!" follows
  const std::string countPrompt =
      formatText("Please indicate the number of %s channels to select [1 - %d].", typeWord, available);
  const int32_t count = host::integerInput(countPrompt.c_str(), 1, 1, available);
  if (count < 1 || count > available) return abortRun(log);

  int32_t defaultNumber = 1;
  for (int32_t i = 1; i <= count;) {
    const std::string prompt = formatText("Please indicate channel #%d/%d.<br>"
                                          "Channel number should stay within the interval [1 - %d].",
                                          i, count, available);
    const int32_t number = host::integerInput(prompt.c_str(), defaultNumber, 1, available);
    if (number < 1 || number > available) return abortRun(log);
    const int32_t channel = typeChannels[static_cast<size_t>(number - 1)];
    if (!channels.channelDescription.channelRecords[static_cast<size_t>(channel)].good()) {
      const std::string question = formatText("The channel %d was marked as bad in the %s file.<br>"
                                              "Do you want to discard it?",
                                              number, channels.inputFileName.c_str());
      if (host::yesNoMessageBox(question.c_str()) == 1) continue;
    }
    positions.push_back(number - 1);
    defaultNumber = number + 1;
    ++i;
  }
  return true;
}

} // namespace emeg
