#include "app/simulation/SimulationParameters.h"

#include "app/simulation/BurstWaveform.h"
#include "app/simulation/Electrodes.h"
#include "app/simulation/GradientArtifact.h"
#include "app/simulation/MovementBursts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <sstream>
#include <utility>

namespace emeg {

namespace {

constexpr std::array<std::pair<Preset, const char*>, 9> presetNames = {{{Preset::Gap, "gap"},
                                                                        {Preset::Continuous, "continuous"},
                                                                        {Preset::Bcg, "bcg"},
                                                                        {Preset::Both, "both"},
                                                                        {Preset::Fill, "fill"},
                                                                        {Preset::TwoBursts, "twobursts"},
                                                                        {Preset::Equidistant, "equidistant"},
                                                                        {Preset::Multiband, "multiband"},
                                                                        {Preset::ManySlices, "manyslices"}}};

constexpr double lowestSamplingFrequency = 100;
constexpr double highestSamplingFrequency = 100000;
constexpr double slowRate = 4000; // Hz; recordings below it are those of amplifiers with a wide pass band
constexpr double largestEctopicShare = 0.3; // beyond, hardly any regular interval is left

constexpr double multibandQuiet = 0.006; // seconds between excitations in which nothing is seen
constexpr double invisiblePart = 0.5;    // of a burst's edges: the outermost, below a hundredth of the peak

std::string rangeProblem(const char* what, double value, double low, double high, const char* unit) {
  if (value >= low && value <= high) return "";
  std::ostringstream text;
  text << what << " is " << value << unit << "; it must lie between " << low << " and " << high << unit
       << ".";
  return text.str();
}

template <typename... Texts>
std::string firstProblem(const Texts&... texts) {
  std::string first;
  ((first.empty() ? first = texts : first), ...);
  return first;
}

std::string problemWithEeg(const EegParameters& eeg) {
  // Without any noise the beats of two channels resemble each other in a way that no recording shows.
  return firstProblem(rangeProblem("The EEG's RMS", eeg.backgroundRmsUv, 0, 1000, " uV"),
                      rangeProblem("The alpha rhythm's amplitude", eeg.alphaPeakUv, 0, 1000, " uV"),
                      rangeProblem("The sensor noise", eeg.sensorNoiseRmsUv, 0.01, 1000, " uV"));
}

std::string problemWithLineNoise(const SimulationParameters& parameters) {
  return firstProblem(
      rangeProblem("The line noise's frequency", parameters.lineNoise.frequencyHz, 0,
                   parameters.samplingFrequency / 2, " Hz"),
      rangeProblem("The line noise's amplitude", parameters.lineNoise.amplitudeUv, 0, 100000, " uV"));
}

std::string problemWithWeakStretch(const WeakStretch& weak, double seconds) {
  return firstProblem(
      rangeProblem("The start of the weak stretch", weak.start, 0, seconds, " s"),
      rangeProblem("The length of the weak stretch", weak.duration, 0.1, seconds, " s"),
      rangeProblem("The end of the weak stretch", weak.start + weak.duration, 0, seconds, " s"),
      rangeProblem("The factor of the weak stretch", weak.factor, 0, 1, ""));
}

std::string problemWithHeart(const HeartParameters& heart, double seconds) {
  return firstProblem(rangeProblem("The heart rate", heart.beatsPerMinute, 30, 200, " beats per minute"),
                      rangeProblem("The RMSSD", heart.rmssd * 1000, 0, 200, " ms"),
                      rangeProblem("The heart beat artifact's peak", heart.peakUv, 0, 10000, " uV"),
                      rangeProblem("The share of ectopic beats", heart.ectopicShare * 100, 0,
                                   largestEctopicShare * 100, " %"),
                      heart.weak ? problemWithWeakStretch(*heart.weak, seconds) : std::string());
}

std::string problemWithEcg(const SimulationParameters& parameters) {
  if (!parameters.heart) return "An electrocardiogram needs a heart: use preset bcg or both.";
  if (parameters.nrOfChannels < 2) return "An electrocardiogram needs at least one channel of EEG beside it.";
  return firstProblem(rangeProblem("The R peaks' height", parameters.ecg->rPeakUv, -100000, 100000, " uV"),
                      rangeProblem("The T wave's height", parameters.ecg->tWave, 0, 10, " of R's"));
}

std::string problemWithMovement(const MovementParameters& movement, double seconds) {
  std::string peak = rangeProblem("The movements' peak", movement.peakUv, 1, 100000, " uV");
  if (!peak.empty()) return peak;
  std::ostringstream text;
  if (movement.nrOfBursts < 1)
    text << "The number of movement bursts is " << movement.nrOfBursts << "; it must be at least 1.";
  else if (const int64_t most = mostMovementBursts(seconds); movement.nrOfBursts > most)
    text << "A recording of " << seconds << " s has room for " << most << " movement bursts, not for "
         << movement.nrOfBursts << ".";
  return text.str();
}

std::string problemWithDeadChannels(const SimulationParameters& parameters) {
  std::ostringstream text;
  for (const int channel : parameters.deadChannels)
    if (text.str().empty() && (channel < 0 || channel >= parameters.nrOfChannels))
      text << "The index of a dead channel is " << channel << "; channels are counted from 0 to "
           << parameters.nrOfChannels - 1 << ".";
  return text.str();
}

std::string problemWithDisturbances(const DisturbanceParameters& disturbances, double seconds) {
  return firstProblem(
      rangeProblem("The number of spikes", disturbances.nrOfSpikes, 0, 10000, ""),
      rangeProblem("The spikes' peak", disturbances.spikeUv, 0, 10000000, " uV"),
      rangeProblem("The number of dropouts", disturbances.nrOfDropouts, 0, 10000, ""),
      rangeProblem("The length of a dropout", disturbances.dropoutDuration, 0.001, seconds, " s"),
      rangeProblem("The largest value that is recorded", disturbances.clipUv, 0, 10000000, " uV"));
}

std::string problemWithBurst(const GradientParameters& gradient, double samplingFrequency) {
  std::ostringstream text;
  const double end = gradient.secondBurstDelay + gradient.burstDuration;
  if (end > gradient.sliceDuration - gradient.leastQuiet)
    text << (gradient.secondBurstDelay > 0 ? "A second burst that ends after " : "A burst of ") << end * 1000
         << " ms leaves less than " << gradient.leastQuiet * 1000 << " ms of quiet in a slice of "
         << gradient.sliceDuration * 1000
         << " ms; make bursts shorter, or give the least quiet (negative: bursts may overlap).";
  else if (BurstWaveform::plateauDuration(gradient, samplingFrequency) < gradient.burstDuration / 4)
    text << "A burst of " << gradient.burstDuration * 1000 << " ms with a readout at " << gradient.readoutHz
         << " Hz cannot be sampled at " << samplingFrequency
         << " Hz without aliasing; use a higher sampling frequency, a lower readout frequency or longer "
            "bursts.";
  return text.str();
}

std::string problemWithVolumes(const GradientParameters& gradient, double seconds) {
  const int64_t fitting = nrOfVolumesThatFit(gradient, seconds);
  const int64_t wanted = gradient.nrOfVolumes.value_or(fitting);
  std::ostringstream text;
  if (gradient.nrOfVolumes && wanted < 1)
    text << "The number of volumes is " << wanted << "; it must be at least 1.";
  else if (fitting < std::max<int64_t>(1, wanted))
    text << "A recording of " << seconds << " s has room for " << fitting << " volumes of "
         << gradient.volumeDuration() << " s" << (gradient.nrOfScans > 1 ? " in each of its scans" : "")
         << " between its quiet stretches of " << gradient.quietBefore << " and " << gradient.quietAfter
         << " s; make it longer or ask for fewer volumes.";
  else if (const double duration = static_cast<double>(wanted) * gradient.volumeDuration();
           gradient.cutBefore >= duration)
    text << "A scan of " << duration << " s is over when the recording begins, " << gradient.cutBefore
         << " s after it; begin earlier or ask for more volumes.";
  else if (gradient.endsInScan && leastEndOfScans(gradient, wanted) <= seconds)
    text << "The recording of " << seconds << " s goes on longer than the scan, which ends after "
         << leastEndOfScans(gradient, wanted) << " s; make it shorter or ask for more volumes.";
  return text.str();
}

std::string problemWithTriggers(const ScannerTriggerParameters& triggers) {
  constexpr size_t longestName = 100; // bytes
  const bool isPrintable = std::none_of(triggers.name.begin(), triggers.name.end(), [](char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
  });
  if (triggers.name.empty() || triggers.name.size() > longestName || !isPrintable)
    return "The name of the scanner's markers must be 1 to 100 characters without line breaks.";
  return "";
}

std::string problemWithGradient(const GradientParameters& gradient, const SimulationParameters& parameters) {
  std::string range = firstProblem(
      rangeProblem("The number of slices per volume", gradient.nrOfSlicesPerVolume, 1, 1000, ""),
      rangeProblem("The slice duration", gradient.sliceDuration * 1000, 25, 10000, " ms"),
      rangeProblem("The gap after a volume", gradient.gapDuration * 1000, 0, 60000, " ms"),
      rangeProblem("The quiet stretch before the scan", gradient.quietBefore, 0.5, 3600, " s"),
      rangeProblem("The quiet stretch after the scan", gradient.quietAfter, 0.5, 3600, " s"),
      rangeProblem("The burst duration", gradient.burstDuration * 1000, 5, 10000, " ms"),
      rangeProblem("The artifact's peak", gradient.peakUv, 0, 1000000, " uV"),
      rangeProblem("The difference of each first slice", gradient.firstSliceDifference * 100, 0, 100, " %"),
      rangeProblem("The amplifier's low-pass", gradient.lowPassHz, 10, highestSamplingFrequency, " Hz"),
      rangeProblem("The readout's frequency", gradient.readoutHz, 10, highestSamplingFrequency, " Hz"),
      rangeProblem("The drift", gradient.driftRms * 100, 0, 50, " %"),
      rangeProblem("The delay of the second burst", gradient.secondBurstDelay * 1000, 0, 10000, " ms"),
      rangeProblem("The second burst relative to the first", gradient.secondBurstFactor, -10, 10, ""),
      rangeProblem("The least quiet in a slice", gradient.leastQuiet * 1000, -10000, 10000, " ms"),
      rangeProblem("The jitter of the volumes", gradient.onsetJitterRms * 1000, 0, 5, " ms"),
      rangeProblem("The number of scans", gradient.nrOfScans, 1, 100, ""),
      rangeProblem("The pause between scans", gradient.pauseDuration, 0.05, 3600, " s"),
      rangeProblem("What is over of the scan at the start", gradient.cutBefore, 0, 3600, " s"));
  if (!range.empty()) return range;
  return firstProblem(problemWithBurst(gradient, parameters.samplingFrequency),
                      problemWithVolumes(gradient, parameters.seconds));
}

} // namespace

std::optional<Preset> presetNamed(const std::string& name) {
  for (const auto& [preset, presetName] : presetNames)
    if (name == presetName) return preset;
  return std::nullopt;
}

std::string nameOf(Preset preset) {
  return presetNames[static_cast<size_t>(preset)].second;
}

std::string SimulationParameters::channelName(int channel) const {
  return isEcg(channel) ? "ECG" : electrodeName(channel);
}

bool SimulationParameters::isDead(int channel) const {
  return std::find(deadChannels.begin(), deadChannels.end(), channel) != deadChannels.end();
}

int64_t SimulationParameters::nrOfTimePoints() const {
  return static_cast<int64_t>(std::floor(seconds * samplingFrequency + 0.5));
}

SimulationParameters presetParameters(Preset preset, double samplingFrequency) {
  SimulationParameters parameters;
  parameters.preset = preset;
  parameters.samplingFrequency = static_cast<double>(static_cast<float>(samplingFrequency));
  if (preset != Preset::Bcg) {
    GradientParameters gradient;
    if (preset == Preset::Continuous || preset == Preset::Fill || preset == Preset::Equidistant) {
      gradient.nrOfSlicesPerVolume = 25;
      gradient.sliceDuration = 0.0720227;
      gradient.gapDuration = preset == Preset::Equidistant ? 0 : 0.0043;
    }
    if (preset == Preset::Equidistant) gradient.firstSliceDifference = 0.1;
    if (preset == Preset::TwoBursts) {
      gradient.burstDuration = 0.026;
      gradient.secondBurstDelay = 0.0381;
      gradient.leastQuiet = 0.005;
    }
    if (preset == Preset::Multiband) {
      gradient.nrOfSlicesPerVolume = 12;
      gradient.sliceDuration = 0.0625113;
      gradient.gapDuration = 0;
    }
    if (preset == Preset::ManySlices) {
      gradient.nrOfSlicesPerVolume = 120;
      gradient.sliceDuration = 0.0250061;
      gradient.gapDuration = 0.0502;
    }
    if (samplingFrequency < slowRate) {
      gradient.lowPassHz = std::min(560.0, 0.28 * samplingFrequency);
      gradient.readoutHz = std::min(500.0, 0.25 * samplingFrequency);
      gradient.driftRms = 0.01;
      if (preset == Preset::TwoBursts || preset == Preset::ManySlices)
        gradient.readoutHz = std::min(300.0, 0.15 * samplingFrequency);
    }
    parameters.gradient = gradient;
    fitBurstsToSlices(parameters);
  }
  if (preset == Preset::Bcg || preset == Preset::Both) parameters.heart = HeartParameters();
  return parameters;
}

/// Neighbouring windows of Fill add up to one everywhere; short slices, and those with short quiet between
/// them, overlap where the sampling frequency asks for long edges.
void fitBurstsToSlices(SimulationParameters& parameters) {
  if (!parameters.gradient) return;
  GradientParameters& gradient = *parameters.gradient;
  const double edges =
      gradient.burstDuration - BurstWaveform::plateauDuration(gradient, parameters.samplingFrequency);
  if (parameters.preset == Preset::Fill)
    gradient.burstDuration = gradient.sliceDuration + edges;
  else if (parameters.preset == Preset::TwoBursts)
    gradient.burstDuration = std::max(gradient.burstDuration, edges + 0.009);
  else if (parameters.preset == Preset::ManySlices)
    gradient.burstDuration = std::max(0.021, edges + 0.008);
  else if (parameters.preset == Preset::Multiband)
    gradient.burstDuration = gradient.sliceDuration - multibandQuiet + invisiblePart * edges;
  else
    return;
  gradient.leastQuiet = -gradient.sliceDuration;
}

std::string problemWith(const SimulationParameters& parameters) {
  const double longest =
      static_cast<double>(std::numeric_limits<int32_t>::max()) / std::max(1.0, parameters.samplingFrequency);
  std::string frame = firstProblem(
      rangeProblem("The number of channels", parameters.nrOfChannels, 1, maxNrOfSimulatedChannels, ""),
      rangeProblem("The sampling frequency", parameters.samplingFrequency, lowestSamplingFrequency,
                   highestSamplingFrequency, " Hz"),
      rangeProblem("The length of the recording", parameters.seconds, 1, std::floor(longest), " s"),
      problemWithEeg(parameters.eeg));
  if (!frame.empty()) return frame;
  return firstProblem(
      problemWithLineNoise(parameters), problemWithDeadChannels(parameters),
      parameters.movement ? problemWithMovement(*parameters.movement, parameters.seconds) : std::string(),
      parameters.heart ? problemWithHeart(*parameters.heart, parameters.seconds) : std::string(),
      parameters.ecg ? problemWithEcg(parameters) : std::string(),
      parameters.gradient ? problemWithGradient(*parameters.gradient, parameters) : std::string(),
      problemWithTriggers(parameters.triggers),
      problemWithDisturbances(parameters.disturbances, parameters.seconds));
}

} // namespace emeg
