#include "app/correct/ConverterRun.h"

#include "app/correct/PulseFigures.h"
#include "app/correct/TimedConverter.h"
#include "artifacts/cardiac/PulseDelay.h"
#include "converter/steps/MachineResources.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr const char* logPrefix = "// EMEG artifacts > ";

// Beats of a heart that is faster than any, for the whole recording.
constexpr double mostBeatsPerSecond = 4;

bool wantsFilters(const HostAnswers::Dialogue& dialogue) {
  return dialogue.highPass > 0 || dialogue.lowPass > 0 || !dialogue.notches.empty() ||
         dialogue.decimationFactor > 1;
}

/// The plug-in's converter with the stages that no dialogue switches on.
class EmegConverter : public TimedConverter {
public:
  EmegConverter(const ConverterJob& job, Findings& found)
      : TimedConverter(logPrefix, job.timing), job_(job), found_(found) {
    options.isEEG = true;
    options.selectChannels = false;
    options.selectTimeInterval = false;
    options.applyFilters = wantsFilters(job.dialogue);
    options.correctArtifacts = true;
    options.applyScaling = true;
    options.offerAverageReference = true;
    options.forceHeaderUpdate = false;
    options.parametersFromDialog = true;
    channels.roles = job.roles;
    cardiac.pulseCapacity =
        std::max(cardiac.pulseCapacity, static_cast<size_t>(job.seconds * mostBeatsPerSecond) + 1);
  }

private:
  bool openInput() override {
    if (!TimedConverter::openInput()) return false;
    values.samplingFrequency = job_.samplingFrequency;
    values.samplingInterval = 1 / job_.samplingFrequency;
    return true;
  }

  // What the dialogues cannot say.
  bool afterChunkFilesHook() override {
    if (!job_.removeGradient) switches.correctGradient = false;
    if (job_.lineFrequencies.empty()) return true;
    if (!hasMemoryForSinusoids()) return false;
    switches.removeLineSinusoids = true;
    switches.correctionNeeded = true;
    filters.notchFrequencies = job_.lineFrequencies;
    return true;
  }

  /// The check of the run does not know of a stage that no dialogue switches on.
  bool hasMemoryForSinusoids() const {
    constexpr uint64_t tablesPerSinusoid = 2;
    constexpr uint64_t otherBuffers = 10;
    MachineResources needed;
    needed.memory = (tablesPerSinusoid * job_.lineFrequencies.size() + otherBuffers) * sizeof(double) *
                    static_cast<uint64_t>(span.nrOfIntervalTimePoints);
    const std::string shortage =
        describeShortage(needed, availableResources(inputPathBuffer.path()), inputPathBuffer.path());
    return shortage.empty() || showError(shortage);
  }

  bool detectHeartPulses() override {
    if (job_.stopWithoutSequence && sequence.sliceDuration == 0) return false;
    // Medians over many channels have more minima than one series below 35 Hz; two samples apart is the most.
    cardiac.candidatesPerSecond = buffers.bcgRate / 2;
    const bool isBlind = job_.beats.source == BeatSource::Blind;
    if (!(isBlind ? TimedConverter::detectHeartPulses() : useKnownBeats())) return false;
    found_.pulseSampleRate = static_cast<double>(buffers.bcgRate);
    found_.plausibility = measurePlausibility({buffers.bcgSeries, buffers.bcgLength, buffers.bcgRate},
                                              pulsesInEeg(), cardiac.period.period);
    found_.beatsPerMinute = cardiac.period.beatsPerMinute(buffers.bcgRate);
    found_.pulseListIsFull = cardiac.pulsePositions.size() >= cardiac.pulseCapacity;
    for (const double position : cardiac.pulsePositions)
      found_.pulseTimes.push_back(position * static_cast<double>(buffers.bcgInterval));
    return true;
  }

  /// In place of period, detection signal and selection. Markers are made of what is found, not of the
  /// converter's protocol.
  bool useKnownBeats() {
    const BcgSeries series{buffers.bcgSeries, buffers.bcgLength, buffers.bcgRate};
    KnownBeats known = findKnownBeats(job_.beats, buffers.ecgSeries, series);
    if (!known.problem.empty()) return showError(known.problem);
    cardiac.period = known.period;
    cardiac.pulsePositions = known.pulses.positions;
    delays_ = std::move(known.delays);
    for (const int32_t delay : delays_)
      found_.pulseDelays.push_back(delay * static_cast<double>(buffers.bcgInterval));
    found_.knownPulses = std::move(known.pulses);
    return checkPulseModelIsPossible();
  }

  /// Where the artifact is in most channels.
  std::vector<double> pulsesInEeg() const {
    if (delays_.empty()) return cardiac.pulsePositions;
    std::vector<int32_t> delays = delays_;
    std::sort(delays.begin(), delays.end());
    return delayedPulses(cardiac.pulsePositions, delays[delays.size() / 2], buffers.bcgLength);
  }

  void buildPulseModel(int32_t pulseChannel) override {
    std::vector<double>& series = buffers.bcgSeries[static_cast<size_t>(pulseChannel)];
    const std::vector<double> before = series;
    std::vector<double> pulses = cardiac.pulsePositions;
    if (delays_.empty()) {
      TimedConverter::buildPulseModel(pulseChannel);
    } else {
      pulses = delayedPulses(pulses, delays_[static_cast<size_t>(pulseChannel)], buffers.bcgLength);
      PulseModel(pulses, cardiac.period.period).replaceByEstimate(series, buffers.bcgLength);
    }
    found_.pulseFigures.push_back(measurePulseFigures(before, series, pulses, buffers.bcgLength));
  }

  const ConverterJob& job_;
  Findings& found_;
  std::vector<int32_t> delays_; ///< of known beats, per pulse channel
};

} // namespace

ConverterOutcome runConverter(const ConverterJob& job, const std::function<void(const std::string&)>& log) {
  ConverterOutcome outcome;
  HostAnswers answers(job.dialogue, log);
  EmegConverter converter(job, outcome.found);
  outcome.finished = converter.run(2, 1, 0);
  outcome.found.timing = converter.foundScans();
  outcome.outputPath = converter.outputPathBuffer.path();
  outcome.errors = answers.errors();
  return outcome;
}

std::string outputSuffixOf(const HostAnswers::Dialogue& dialogue, const NamedSelection& selection) {
  LMTRPluginEMEGFileConverter converter("", true);
  converter.options.selectChannels = selection.nrOfChannels > 0;
  converter.options.selectTimeInterval = selection.hasInterval;
  converter.options.applyFilters = wantsFilters(dialogue);
  converter.options.correctArtifacts = true;
  converter.selection.nrOfSelectedChannels = selection.nrOfChannels;
  converter.values.intervalStartMs = static_cast<float>(selection.startMs);
  converter.values.intervalEndMs = static_cast<float>(selection.endMs);
  converter.filters.highPassCutOff = dialogue.highPass;
  converter.filters.lowPassCutOff = dialogue.lowPass;
  converter.filters.nrOfNotches = static_cast<int32_t>(dialogue.notches.size());
  converter.filters.decimationFactor = dialogue.decimationFactor;
  converter.scalingOrder = dialogue.scalingOrder;
  converter.switches.correctGradient = true;
  converter.switches.correctBCG = dialogue.correctBcg;
  converter.buildOutputName();
  return converter.values.outputSuffix;
}

} // namespace emeg
