#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"
#include "plugin/converter/run/MachineResources.h"

#include <algorithm>
#include <cerrno>

namespace emeg {

namespace {

constexpr int32_t largestLog2FftLength = 31;
constexpr double lowestCorrectableFrequency = 10; // Hz: the low-frequency rest has ten values a second

/// Values of a channel's pulse model per sample of its series, in a regular heart's recording.
constexpr uint64_t pulseModelOversampling = 6;

/// What the run will allocate and write, a little generously.
MachineResources neededResources(const LMTRPluginEMEGFileConverter& converter) {
  const SampleSpan& span = converter.span;
  const auto samples = static_cast<uint64_t>(span.nrOfIntervalTimePoints);
  const auto processed = static_cast<uint64_t>(span.nrOfProcessedTimePoints());
  const auto transform = static_cast<uint64_t>(span.fftLength);
  const auto selected = static_cast<uint64_t>(converter.selection.nrOfSelectedChannels);
  const auto perChunk = static_cast<uint64_t>(span.timePointsPerChunk);
  const auto inputChannels = static_cast<uint64_t>(converter.channels.nrOfChannels);
  const auto sampleSize = static_cast<uint64_t>(converter.input.bytesPerSample);
  const StageSwitches& switches = converter.switches;

  const uint64_t chunking = perChunk * (selected * sizeof(float) + inputChannels * sampleSize);
  uint64_t correcting = 0;
  if (switches.correctionNeeded) {
    correcting = processed * sizeof(float) + std::max(transform, samples) * sizeof(double);
    correcting += 4 * (samples + 2) * sizeof(double); // splines
    if (switches.filteringNeeded) correcting += transform * sizeof(float);
    if (switches.filteringNeeded || switches.anyArtifactCorrection) correcting += 4 * transform; // FFT tables
    if (switches.anyArtifactCorrection) correcting += transform * sizeof(float);
    if (switches.correctGradient)
      correcting += samples * sizeof(double) + transform * (sizeof(double) + sizeof(float));
    if (switches.useAverageReference || switches.correctBCG) correcting += samples * sizeof(float);
    if (switches.correctBCG) {
      const auto bcgRate = 500.0; // the reduced rate lies below twice 250 Hz
      const double seconds = static_cast<double>(samples) * converter.values.samplingInterval;
      const auto perChannel = static_cast<uint64_t>(seconds * bcgRate) + 2;
      correcting += selected * perChannel * (sizeof(double) + sizeof(float)); // series and detection signal
      correcting += selected * static_cast<uint64_t>(seconds * 10 + 2) * sizeof(double); // low-frequency rest
      correcting += pulseModelOversampling * perChannel * sizeof(double);
      correcting += transform * sizeof(float);
    }
  }
  const uint64_t writing = 2 * perChunk * selected * sizeof(float);

  MachineResources needed;
  needed.memory = std::max({chunking, correcting, writing});
  needed.disk = perChunk * selected * sizeof(float) * ChunkFiles::nrOfChunks +
                static_cast<uint64_t>(span.nrOfOutputTimePoints) * selected * sizeof(float);
  return needed;
}

} // namespace

bool LMTRPluginEMEGFileConverter::checkRunIsPossible() {
  // A header that promises far more than the file holds would only seem to need more memory than there is.
  if (2 * nrOfMissingTimePoints() > input.nrOfTimePoints || !holdsSelectedChannels()) {
    errno = 0;
    return reportFileError("Error reading file: ");
  }
  if (switches.anyArtifactCorrection && values.samplingFrequency < lowestCorrectableFrequency) {
    return showError(
        formatText("The sampling frequency of %s is %g Hz: artifact correction needs at least %.0f Hz.",
                   inputPathBuffer.path().c_str(), values.samplingFrequency, lowestCorrectableFrequency));
  }
  if (filters.stagesOverflowed) {
    return showError(formatText("The filters have more than %d edges (every notch has two).<br>"
                                "Please ask for fewer notches.",
                                FilterStageList::capacity));
  }
  if (span.log2FftLength > largestLog2FftLength) {
    return showError(formatText("The recording %s is too long: %.0f time points can be filtered at the most.",
                                inputPathBuffer.path().c_str(), 2147483648.0));
  }
  const std::string shortage = describeShortage(
      neededResources(*this), availableResources(inputPathBuffer.path()), inputPathBuffer.path());
  return shortage.empty() || showError(shortage);
}

} // namespace emeg
