#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"

namespace emeg {

namespace {

constexpr const char* choicePrompt =
    "Please make a choice for EEG-fMRI artifact correction:\n"
    "1 - Correct MRI gradient artifact only.\n"
    "2 - Correct MRI gradient artifact and BCG artifact (experimental)\n"
    "\n"
    "Please Note: BCG artifact correction is only experimental and its use may lead to instability or "
    "unsatisfactory results.\n"
    "In such cases, please use the general purpose ICA or OBS methods (available among the other EEG-MEG "
    "plugins)\n";

constexpr const char* volumeWisePrompt = "Should artifact correction be performed volume-wise (preferred)?\n"
                                         "Otherwise it will be performed slice-wise.";

} // namespace

bool LMTRPluginEMEGFileConverter::askArtifactCorrection() {
  switches.correctSaturations = false;
  switches.correctGradient = false;
  switches.correctBCG = false;
  switches.correctOcular = false;

  // Asked even where the answer has no effect.
  const int choice = host::integerInput(choicePrompt, 1, 1, 2);
  if (choice < 0) {
    // No abort: with nothing else to do the run ends by itself.
    options.correctArtifacts = false;
    host::logText("// EMEG artifacts > No choice made. Exiting plugin.");
    return true;
  }
  if (!options.correctArtifacts) return true;
  if (choice != 1 && choice != 2) return true;

  switches.correctGradient = true;
  switches.correctBCG = choice == 2;
  switches.volumeWise = -1; // stays so when the question is cancelled, and counts as volume-wise
  switches.volumeWise = host::yesNoMessageBox(volumeWisePrompt);
  return true;
}

} // namespace emeg
