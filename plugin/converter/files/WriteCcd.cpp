#include "files/formats/OutputFile.h"
#include "plugin/converter/Converter.h"

#include <algorithm>

namespace emeg {

namespace {

void setFlagIf(CcdHeader& header, CcdHeader::Flag flag, bool on) {
  if (on) header.setFlag(flag);
}

} // namespace

/// The header tells what this run changed; everything else stays as it was read.
void LMTRPluginEMEGFileConverter::updateChannelDescription() {
  CcdHeader& header = channels.channelDescription.header;
  std::vector<CcdChannelRecord>& records = channels.channelDescription.channelRecords;
  const bool all = options.forceHeaderUpdate;
  const bool restricted = switches.intervalRestricted;
  const bool decimated = filters.decimationFactor >= 2;

  if (all || selection.channelSubset) {
    header.setNrOfSelectedChannels(selection.nrOfSelectedChannels);
    // By position: the first records are marked, whichever channels were selected.
    const size_t marked = std::min(records.size(), static_cast<size_t>(selection.nrOfSelectedChannels));
    for (size_t i = 0; i < marked; ++i) records[i].setProcessed(true);
  }
  if (all || restricted) {
    const float lengthMs = values.intervalEndMs - values.intervalStartMs;
    header.setIntervalStartMs(static_cast<double>(values.intervalStartMs));
    header.setIntervalEndMs(static_cast<double>(values.intervalEndMs));
    header.setIntervalLengthMs(static_cast<double>(lengthMs));
  }
  if (all || decimated) {
    header.setDecimationFactor(filters.decimationFactor);
    header.setSamplingFrequency(values.samplingFrequency);
  }
  if (all || restricted || decimated)
    header.setNrOfTimePoints(static_cast<int32_t>(span.nrOfOutputTimePoints));

  using Flag = CcdHeader::Flag;
  setFlagIf(header, Flag::IntervalSelected, restricted);
  setFlagIf(header, Flag::Filtered, switches.filteringNeeded);
  setFlagIf(header, Flag::AverageReferenced, switches.useAverageReference);
  setFlagIf(header, Flag::FourthSwitch, switches.correctSaturations);
  setFlagIf(header, Flag::GradientCorrected, switches.correctGradient);
  setFlagIf(header, Flag::BcgCorrected, switches.correctBCG);
  setFlagIf(header, Flag::OcularCorrected, switches.correctOcular);
  setFlagIf(header, Flag::LastSwitch, switches.scalingNeeded);
}

bool LMTRPluginEMEGFileConverter::writeCcd() {
  if (!switches.processingNeeded && !switches.rewriteNeeded) return true;
  log.logProgress("Writing CCD");
  OutputFile file;
  if (!file.create(outputPathBuffer.withEnding(values.outputSuffix + ".ccd")))
    return reportFileError("Error accessing CCD file.");
  updateChannelDescription();
  const std::vector<unsigned char> bytes = encodeCcdFile(channels.channelDescription);
  return (file.write(bytes.data(), bytes.size()) && file.commit()) || reportFileError("Error writing file: ");
}

} // namespace emeg
