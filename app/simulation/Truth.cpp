#include "app/simulation/Truth.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using Json = nlohmann::ordered_json;

std::vector<double> rootMeans(const std::vector<double>& squares, int64_t count) {
  std::vector<double> roots;
  roots.reserve(squares.size());
  for (const double sum : squares)
    roots.push_back(count > 0 ? std::sqrt(sum / static_cast<double>(count)) : 0.0);
  return roots;
}

Json filesOf(const RecordingFileNames& names) {
  Json files;
  files["recording"] = names.ctc;
  if (!names.ccd.empty()) files["channelDescription"] = names.ccd;
  if (!names.prt.empty()) files["protocol"] = names.prt;
  if (!names.clean.empty()) files["clean"] = names.clean;
  if (!names.pulse.empty()) files["pulse"] = names.pulse;
  return files;
}

Json eegOf(const Simulation& simulation, const PartSizes& sizes) {
  const EegParameters& eeg = simulation.parameters().eeg;
  Json json;
  json["backgroundRmsUv"] = eeg.backgroundRmsUv;
  json["alphaPeakUv"] = eeg.alphaPeakUv;
  json["sensorNoiseRmsUv"] = eeg.sensorNoiseRmsUv;
  json["cleanRmsUv"] = sizes.cleanRms();
  return json;
}

Json lineNoiseOf(const Simulation& simulation) {
  const LineNoiseParameters& line = simulation.parameters().lineNoise;
  Json json;
  json["frequencyHz"] = line.frequencyHz;
  json["amplitudeUv"] = line.frequencyHz > 0 ? line.amplitudeUv : 0.0;
  json["phases"] = simulation.lineNoise().phases();
  return json;
}

/// One of the scans. Volumes without jitter begin at equal distances.
Json scanOf(const SimulationParameters& parameters, const GradientArtifact& gradient, size_t scan) {
  const ScanTiming& timing = gradient.timings()[scan];
  const double activity = std::min(timing.sliceDuration, parameters.gradient->secondBurstDelay +
                                                             parameters.gradient->burstDuration);
  int64_t nrOfWhole = 0;
  std::vector<double> factors, onsets;
  bool isRegular = true;
  for (int64_t v = 0; v < timing.nrOfVolumes; v++) {
    factors.push_back(gradient.driftFactor(timing.volumeOnset(v)));
    onsets.push_back(gradient.volumeOnset(scan, v));
    isRegular = isRegular && onsets.back() == timing.volumeOnset(v);
    const double lastSlice = onsets.back() + (timing.nrOfSlicesPerVolume - 1) * timing.sliceDuration;
    if (onsets.back() >= 0 && lastSlice + activity <= parameters.seconds) nrOfWhole++;
  }
  Json json;
  json["nrOfVolumes"] = timing.nrOfVolumes;
  json["nrOfWholeVolumes"] = nrOfWhole; // that the recording does not cut
  json["firstVolumeOnset"] = timing.firstVolumeOnset;
  json["endOfScan"] = timing.end();
  if (!isRegular) json["volumeOnsets"] = onsets;
  json["driftFactorAtVolumes"] = factors;
  return json;
}

Json gradientOf(const Simulation& simulation, const PartSizes& sizes) {
  const GradientParameters& parameters = *simulation.parameters().gradient;
  const GradientArtifact& gradient = *simulation.gradient();
  const ScanTiming& timing = gradient.timing();
  Json json;
  json["nrOfVolumes"] = timing.nrOfVolumes;
  json["nrOfSlicesPerVolume"] = timing.nrOfSlicesPerVolume;
  json["volumeDuration"] = timing.volumeDuration;
  json["sliceDuration"] = timing.sliceDuration;
  json["gapDuration"] = parameters.gapDuration;
  json["firstVolumeOnset"] = timing.firstVolumeOnset;
  json["endOfScan"] = gradient.timings().back().end();
  json["scans"] = Json::array();
  for (size_t scan = 0; scan < gradient.timings().size(); scan++)
    json["scans"].push_back(scanOf(simulation.parameters(), gradient, scan));
  if (parameters.cutBefore > 0) json["cutBefore"] = parameters.cutBefore;
  if (parameters.endsInScan) json["endsInScan"] = true;
  if (parameters.secondBurstDelay > 0) {
    json["secondBurstDelay"] = parameters.secondBurstDelay;
    json["secondBurstFactor"] = parameters.secondBurstFactor;
  }
  if (parameters.onsetJitterRms > 0) json["onsetJitterRms"] = parameters.onsetJitterRms;
  json["burstDuration"] = parameters.burstDuration;
  json["peakUv"] = parameters.peakUv;
  json["firstSliceDifference"] = parameters.firstSliceDifference;
  json["lowPassHz"] = parameters.lowPassHz;
  json["readoutHz"] = parameters.readoutHz;
  json["driftRms"] = parameters.driftRms;
  json["driftFactorAtVolumes"] = json["scans"][0]["driftFactorAtVolumes"];
  json["gains"] = gradient.gains();
  json["rmsUv"] = sizes.gradientRms();
  return json;
}

Json heartOf(const Simulation& simulation, const PartSizes& sizes) {
  const SimulationParameters& parameters = simulation.parameters();
  const PulseArtifact& pulse = *simulation.pulse();
  std::vector<double> beatTimes;
  std::vector<double> pulseOnsets;
  const auto inside = [&](double time) { return time >= 0 && time < parameters.seconds; };
  for (size_t i = 0; i < pulse.beats().times.size(); i++) {
    if (inside(pulse.beats().times[i])) beatTimes.push_back(pulse.beats().times[i]);
    if (inside(pulse.onset(i))) pulseOnsets.push_back(pulse.onset(i));
  }
  std::vector<double> ectopicBeatTimes;
  for (const size_t i : pulse.beats().ectopic)
    if (inside(pulse.beats().times[i])) ectopicBeatTimes.push_back(pulse.beats().times[i]);
  std::vector<double> peaks;
  peaks.reserve(static_cast<size_t>(parameters.nrOfChannels));
  for (int c = 0; c < parameters.nrOfChannels; c++) peaks.push_back(pulse.peak(c));
  Json json;
  json["beatsPerMinute"] = parameters.heart->beatsPerMinute;
  json["rmssd"] = parameters.heart->rmssd;
  json["pulseDelay"] = parameters.heart->pulseDelay;
  json["peakUv"] = parameters.heart->peakUv;
  json["amplitudeJitter"] = parameters.heart->amplitudeJitter;
  if (parameters.heart->ectopicShare > 0) {
    json["ectopicShare"] = parameters.heart->ectopicShare;
    json["ectopicBeatTimes"] = ectopicBeatTimes;
  }
  if (const auto& ecg = parameters.ecg)
    json["ecg"] = {
        {"channel", parameters.nrOfChannels - 1}, {"rPeakUv", ecg->rPeakUv}, {"tWave", ecg->tWave}};
  if (const auto& weak = parameters.heart->weak)
    json["weak"] = {{"start", weak->start}, {"duration", weak->duration}, {"factor", weak->factor}};
  json["channelPeaksUv"] = peaks;
  json["rmsUv"] = sizes.pulseRms();
  json["beatTimes"] = beatTimes;
  json["pulseOnsets"] = pulseOnsets;
  json["allBeatTimes"] = pulse.beats().times;
  return json;
}

const char* nameOf(ScannerTriggerParameters::Per per) {
  return per == ScannerTriggerParameters::Per::Slice ? "slice" : "volume";
}

void addDisturbances(Json& json, const Simulation& simulation) {
  const DisturbanceParameters& parameters = simulation.parameters().disturbances;
  const Disturbances& disturbances = simulation.disturbances();
  if (!disturbances.spikeTimes().empty()) {
    json["spikeTimes"] = disturbances.spikeTimes();
    json["spikeUv"] = parameters.spikeUv;
  }
  if (!disturbances.dropoutTimes().empty()) {
    json["dropoutTimes"] = disturbances.dropoutTimes();
    json["dropoutDuration"] = parameters.dropoutDuration;
  }
  if (parameters.clipUv > 0) json["clipUv"] = parameters.clipUv;
}

Json movementOf(const Simulation& simulation) {
  const MovementBursts& movement = *simulation.movement();
  Json json;
  json["peakUv"] = simulation.parameters().movement->peakUv;
  json["bursts"] = Json::array();
  for (const MovementBursts::Burst& burst : movement.bursts())
    json["bursts"].push_back({{"onset", burst.onset}, {"duration", burst.duration}});
  json["channelPeaksUv"] = movement.channelPeaks();
  return json;
}

} // namespace

PartSizes::PartSizes(const Simulation& simulation)
    : cleanSquares_(static_cast<size_t>(simulation.parameters().nrOfChannels)),
      pulseSquares_(static_cast<size_t>(simulation.parameters().nrOfChannels)) {
  if (simulation.gradient() == nullptr) return;
  const double fs = simulation.parameters().samplingFrequency;
  const auto inRecording = [&](double time) {
    return std::clamp<int64_t>(static_cast<int64_t>(std::ceil(time * fs)), 0,
                               simulation.parameters().nrOfTimePoints());
  };
  for (const ScanTiming& timing : simulation.gradient()->timings())
    nrOfScanTimePoints_ += inRecording(timing.end()) - inRecording(timing.firstVolumeOnset);
  gains_ = simulation.gradient()->gains();
}

void PartSizes::add(const SimulatedBlock& block) {
  nrOfTimePoints_ += block.nrOfTimePoints;
  for (int64_t t = 0; t < block.nrOfTimePoints; t++) {
    const double burst = block.bursts[static_cast<size_t>(t)];
    burstSquares_ += burst * burst;
  }
  for (int c = 0; c < block.nrOfChannels; c++) {
    for (int64_t t = 0; t < block.nrOfTimePoints; t++) {
      const size_t index = block.indexOf(c, t);
      cleanSquares_[static_cast<size_t>(c)] += block.clean[index] * block.clean[index];
      pulseSquares_[static_cast<size_t>(c)] += block.pulse[index] * block.pulse[index];
    }
  }
}

std::vector<double> PartSizes::cleanRms() const {
  return rootMeans(cleanSquares_, nrOfTimePoints_);
}

std::vector<double> PartSizes::gradientRms() const {
  // Bursts lie inside the scans only: their squares over the whole recording are those over the scans.
  std::vector<double> squares;
  for (const double gain : gains_) squares.push_back(gain * gain * burstSquares_);
  return rootMeans(squares, nrOfScanTimePoints_);
}

std::vector<double> PartSizes::pulseRms() const {
  return rootMeans(pulseSquares_, nrOfTimePoints_);
}

std::string truthText(const Simulation& simulation, const PartSizes& sizes, const RecordingFileNames& names,
                      const SampleStorage& storage, size_t nrOfTriggers) {
  const SimulationParameters& parameters = simulation.parameters();
  std::vector<std::string> channelNames;
  channelNames.reserve(static_cast<size_t>(parameters.nrOfChannels));
  for (int c = 0; c < parameters.nrOfChannels; c++) channelNames.push_back(parameters.channelName(c));

  Json json;
  json["preset"] = nameOf(parameters.preset);
  json["seed"] = parameters.seed;
  json["samplingFrequency"] = parameters.samplingFrequency;
  json["nrOfChannels"] = parameters.nrOfChannels;
  json["nrOfTimePoints"] = parameters.nrOfTimePoints();
  json["seconds"] = parameters.seconds;
  json["channelNames"] = channelNames;
  json["files"] = filesOf(names);
  json["dataType"] = storage.dataType;
  json["dataOrganisation"] = storage.dataOrganisation;
  json["microvoltsPerUnit"] = storage.microvoltsPerUnit;
  json["eeg"] = eegOf(simulation, sizes);
  json["lineNoise"] = lineNoiseOf(simulation);
  if (simulation.movement() != nullptr) json["movement"] = movementOf(simulation);
  addDisturbances(json, simulation);
  if (!parameters.deadChannels.empty()) json["deadChannels"] = parameters.deadChannels;
  if (simulation.gradient() != nullptr) json["gradient"] = gradientOf(simulation, sizes);
  if (nrOfTriggers > 0)
    json["scannerMarkers"] = {{"name", parameters.triggers.name},
                              {"per", nameOf(parameters.triggers.per)},
                              {"nrOfMarkers", nrOfTriggers}};
  if (simulation.pulse() != nullptr) json["heart"] = heartOf(simulation, sizes);
  return json.dump(2) + "\n";
}

} // namespace emeg
