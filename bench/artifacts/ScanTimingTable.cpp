// Measures how well the timing of simulated scans is found, and what the removal with the found timing
// leaves, against the removal with the true timing. Prints one line per kind, sampling frequency and source
// of the timing; docs/timing.md holds the table. Arguments: kinds to measure [all], --source NAME, --fs HZ,
// --first-seed N [1], --seeds N [5], --seconds S [60], --each.

#include "app/simulation/RandomGenerator.h"
#include "app/simulation/Simulation.h"
#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/templates/SegmentRemoval.h"
#include "artifacts/gradient/timing/choice/TimingChoice.h"
#include "dsp/FFTWorkspace.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace emeg;

constexpr int nrOfChannels = 4;
constexpr int correctedChannels = 2;
constexpr int32_t windowSlices = 150;

struct Kind {
  std::string name;
  Preset preset;
  bool isIdentifiable = true;
  std::function<void(SimulationParameters&)> change;
};

std::vector<Kind> allKinds() {
  const auto nothing = [](SimulationParameters&) {};
  return {
      {"gap", Preset::Gap, true, nothing},
      {"continuous", Preset::Continuous, true, nothing},
      {"fill", Preset::Fill, true, nothing},
      {"fill, no dead time", Preset::Fill, true, [](auto& p) { p.gradient->gapDuration = 0; }},
      {"two bursts", Preset::TwoBursts, true, nothing},
      {"equidistant, 5 %", Preset::Equidistant, true,
       [](auto& p) { p.gradient->firstSliceDifference = 0.05; }},
      {"equidistant, 10 %", Preset::Equidistant, true, nothing},
      {"equidistant, alike", Preset::Equidistant, false,
       [](auto& p) { p.gradient->firstSliceDifference = 0; }},
      {"multiband", Preset::Multiband, true, nothing},
      {"120 slices", Preset::ManySlices, true, nothing},
      {"180 slices", Preset::ManySlices, true, [](auto& p) { p.gradient->nrOfSlicesPerVolume = 180; }},
      {"3 volumes", Preset::Continuous, true, [](auto& p) { p.gradient->nrOfVolumes = 3; }},
      {"5 volumes", Preset::Equidistant, true, [](auto& p) { p.gradient->nrOfVolumes = 5; }},
      {"12 volumes", Preset::Continuous, true, [](auto& p) { p.gradient->nrOfVolumes = 12; }},
      {"spike", Preset::Continuous, true, [](auto& p) { p.disturbances.nrOfSpikes = 1; }},
      {"dropout", Preset::Continuous, true, [](auto& p) { p.disturbances.nrOfDropouts = 1; }},
      {"clipping", Preset::Continuous, true, [](auto& p) { p.disturbances.clipUv = 2000; }},
      {"pause", Preset::Continuous, true, [](auto& p) { p.gradient->nrOfScans = 2; }},
      {"three scans", Preset::Gap, true,
       [](auto& p) {
         p.gradient->nrOfScans = 3;
         p.gradient->pauseDuration = 3;
       }},
      {"below 200 uV", Preset::Continuous, true, [](auto& p) { p.gradient->peakUv = 150; }},
      {"cut at the start", Preset::Continuous, true, [](auto& p) { p.gradient->cutBefore = 0.9; }},
      {"cut at the end", Preset::Gap, true, [](auto& p) { p.gradient->endsInScan = true; }},
      {"cut at both ends", Preset::Equidistant, true,
       [](auto& p) {
         p.gradient->cutBefore = 1.1;
         p.gradient->endsInScan = true;
       }},
      {"10 us jitter", Preset::Continuous, true, [](auto& p) { p.gradient->onsetJitterRms = 10e-6; }},
  };
}

/// A scan as it is.
struct TrueScan {
  ScanTiming timing;
  int64_t firstWhole = 0;
  int64_t nrOfWhole = 0;
  ScanSegment segment;
};

struct Recording {
  double fs = 0;
  std::vector<std::vector<double>> recorded, clean;
  std::vector<TrueScan> scans;
};

TrueScan trueScan(const ScanTiming& timing, double seconds, double active, double fs) {
  TrueScan scan;
  scan.timing = timing;
  while (timing.volumeOnset(scan.firstWhole) < 0) ++scan.firstWhole;
  int64_t last = timing.nrOfVolumes - 1;
  while (timing.sliceOnset(last, timing.nrOfSlicesPerVolume - 1) + active > seconds) --last;
  scan.nrOfWhole = last - scan.firstWhole + 1;
  ScanSegment& segment = scan.segment;
  segment.begin = std::max(0.0, timing.firstVolumeOnset * fs);
  segment.end = std::min(seconds, timing.end()) * fs;
  segment.firstVolumeOnset = timing.volumeOnset(scan.firstWhole) * fs;
  segment.volumeDuration = timing.volumeDuration * fs;
  segment.sliceDuration = timing.sliceDuration * fs;
  segment.nrOfSlicesPerVolume = timing.nrOfSlicesPerVolume;
  segment.nrOfVolumes = static_cast<int32_t>(scan.nrOfWhole);
  segment.beginsInVolume = scan.firstWhole > 0;
  segment.endsInVolume = last + 1 < timing.nrOfVolumes && timing.volumeOnset(last + 1) < seconds;
  return scan;
}

Recording simulate(const Kind& kind, double fs, uint64_t seed, double seconds) {
  SimulationParameters parameters = presetParameters(kind.preset, fs);
  parameters.seed = seed;
  parameters.seconds = seconds;
  parameters.nrOfChannels = nrOfChannels;
  kind.change(parameters);
  const std::string problem = problemWith(parameters);
  if (!problem.empty()) {
    std::fprintf(stderr, "%s at %g Hz: %s\n", kind.name.c_str(), fs, problem.c_str());
    std::exit(2);
  }
  Recording recording;
  recording.fs = fs;
  recording.recorded.resize(nrOfChannels);
  recording.clean.resize(nrOfChannels);
  Simulation simulation(parameters);
  SimulatedBlock block;
  while (simulation.next(1 << 16, block))
    for (int c = 0; c < nrOfChannels; c++)
      for (int64_t t = 0; t < block.nrOfTimePoints; t++) {
        recording.recorded[static_cast<size_t>(c)].push_back(block.recorded(c, t));
        recording.clean[static_cast<size_t>(c)].push_back(block.clean[block.indexOf(c, t)]);
      }
  const double active = parameters.gradient->secondBurstDelay + parameters.gradient->burstDuration;
  for (const ScanTiming& timing : simulation.gradient()->timings())
    recording.scans.push_back(trueScan(timing, seconds, std::min(active, timing.sliceDuration), fs));
  return recording;
}

std::vector<double> corrected(const std::vector<double>& channel, const std::vector<ScanSegment>& scans,
                              double fs, bool volumeWise) {
  std::vector<double> estimate(channel.size(), 0.0);
  SegmentRemoval(scans, fs, volumeWise, windowSlices).estimate(channel, estimate);
  std::vector<double> result = channel;
  for (size_t t = 0; t < result.size(); t++) result[t] -= estimate[t];
  return result;
}

double residualDb(const Recording& recording, const std::vector<ScanSegment>& scans, bool volumeWise) {
  double artifact = 0, residual = 0;
  for (size_t c = 0; c < correctedChannels; c++) {
    const std::vector<double> after = corrected(recording.recorded[c], scans, recording.fs, volumeWise);
    for (const TrueScan& scan : recording.scans) {
      const auto n = static_cast<double>(after.size());
      const auto from = static_cast<size_t>(std::clamp(scan.timing.firstVolumeOnset * recording.fs, 0.0, n));
      const auto to = static_cast<size_t>(std::clamp(scan.timing.end() * recording.fs, 0.0, n));
      for (size_t t = from; t < to; t++) {
        artifact += std::pow(recording.recorded[c][t] - recording.clean[c][t], 2);
        residual += std::pow(after[t] - recording.clean[c][t], 2);
      }
    }
  }
  return 10 * std::log10(residual / artifact);
}

/// Where the timing comes from.
enum class Source { Blind, VolumeMarkers, SliceMarkers, Given };
constexpr std::pair<Source, const char*> sources[] = {{Source::Blind, "blind"},
                                                      {Source::VolumeMarkers, "volume markers"},
                                                      {Source::SliceMarkers, "slice markers"},
                                                      {Source::Given, "given TR"}};

/// Markers as recordings have them: 1.3 ms late, cut down to whole samples, one of 40 missing, one of 50
/// doubled, one of 60 with a stray one behind it.
std::vector<double> markersOf(const Recording& recording, bool perSlice, uint64_t seed) {
  RandomGenerator random(seed, RandomGenerator::Purpose::Disturbances, 77);
  const double seconds = static_cast<double>(recording.recorded.front().size()) / recording.fs;
  std::vector<double> markers;
  for (const TrueScan& scan : recording.scans)
    for (int64_t v = 0; v < scan.timing.nrOfVolumes; v++)
      for (int s = 0; s < (perSlice ? scan.timing.nrOfSlicesPerVolume : 1); s++) {
        const double time = scan.timing.sliceOnset(v, s) + 0.0013;
        if (time < 0 || time >= seconds || random.uniform() < 1.0 / 40) continue;
        const double sample = std::floor(time * recording.fs);
        markers.push_back(sample);
        if (random.uniform() < 1.0 / 50) markers.push_back(sample);
        if (random.uniform() < 1.0 / 60)
          markers.push_back(
              std::floor(sample + random.uniform(0.1, 0.9) * scan.timing.sliceDuration * recording.fs));
      }
  return markers;
}

/// What the quiet between the slices of the first channel shows.
MRSequence sequenceFromQuiet(const Recording& recording) {
  const std::vector<double>& channel = recording.recorded.front();
  const size_t n = channel.size();
  std::vector<double> b(n), c(n), d(n);
  computeSplineCoefficients(channel.data(), b.data(), c.data(), d.data(), static_cast<int64_t>(n));
  FFTWorkspace workspace;
  return detectMRSequence({channel.data(), b.data(), c.data(), d.data(), static_cast<int64_t>(n)},
                          recording.fs, static_cast<int32_t>(std::bit_width(n)), workspace,
                          [](const std::string&) {});
}

/// The choice that a correction makes.
std::vector<ScanSegment> find(const Recording& recording, Source source, uint64_t seed) {
  const ScanTiming& timing = recording.scans.front().timing;
  TimingRequest request;
  if (source == Source::VolumeMarkers || source == Source::SliceMarkers) {
    const bool perSlice = source == Source::SliceMarkers;
    request.markerKind = perSlice ? MarkerKind::Slice : MarkerKind::Volume;
    request.markers = markersOf(recording, perSlice, seed);
    request.given.nrOfSlicesPerVolume = timing.nrOfSlicesPerVolume;
  }
  if (source == Source::Given) {
    // As set at the scanner: whole milliseconds.
    request.given.volumeDuration = std::round(timing.volumeDuration * 1000) / 1000;
    request.given.nrOfSlicesPerVolume = timing.nrOfSlicesPerVolume;
    if (recording.scans.size() == 1)
      request.given.firstOnset = timing.volumeOnset(recording.scans.front().firstWhole);
  }
  const ChannelReader read = [&](int channel, std::vector<double>& samples) {
    samples = recording.recorded[static_cast<size_t>(channel)];
  };
  const MRSequence fromQuiet = request.isBlind() ? sequenceFromQuiet(recording) : MRSequence();
  return chooseTiming(fromQuiet, request, read, nrOfChannels, recording.fs, [](const std::string&) {}).scans;
}

struct Outcome {
  bool isExact = false;
  double drift = 0; ///< samples that the found volumes gain or lose from the first to the last one
  double onset = 0; ///< samples by which the first onset is late
  double lossSliceWise = 0, lossVolumeWise = 0, truthDb = 0; ///< dB
  double seconds = 0;
};

Outcome judge(bool isIdentifiable, const Recording& recording, const std::vector<ScanSegment>& found,
              bool each) {
  Outcome outcome;
  outcome.isExact = found.size() == recording.scans.size();
  std::vector<ScanSegment> truth;
  for (const TrueScan& scan : recording.scans) truth.push_back(scan.segment);
  for (size_t i = 0; i < std::min(found.size(), recording.scans.size()); i++) {
    const TrueScan& scan = recording.scans[i];
    const bool counts = found[i].nrOfVolumes == scan.nrOfWhole &&
                        found[i].nrOfSlicesPerVolume == scan.timing.nrOfSlicesPerVolume;
    if (isIdentifiable) outcome.isExact = outcome.isExact && counts && found[i].isCountIdentifiable;
    if (!isIdentifiable) outcome.isExact = outcome.isExact && !found[i].isCountIdentifiable;
    const double samplesPerVolume = scan.timing.volumeDuration * recording.fs;
    const double volumes = samplesPerVolume * found[i].nrOfVolumes * found[i].nrOfSlicesPerVolume /
                           scan.timing.nrOfSlicesPerVolume;
    const double trueDuration = isIdentifiable ? samplesPerVolume * found[i].nrOfVolumes : volumes;
    const double drift = found[i].volumeDuration * found[i].nrOfVolumes - trueDuration;
    if (std::fabs(drift) > std::fabs(outcome.drift)) outcome.drift = drift;
    const double onset = found[i].firstVolumeOnset - scan.timing.volumeOnset(scan.firstWhole) * recording.fs;
    if (std::fabs(onset) > std::fabs(outcome.onset)) outcome.onset = onset;
    if (each)
      std::printf(
          "    scan %zu: %d x %d (true %ld x %d), identifiable %d, parts %d %d, S %.4f (%.4f), drift %.5f, "
          "onset %.2f, begin %.0f end %.0f, explained %.4f %.4f, votes %d\n",
          i, found[i].nrOfVolumes, found[i].nrOfSlicesPerVolume, scan.nrOfWhole,
          scan.timing.nrOfSlicesPerVolume, found[i].isCountIdentifiable, found[i].beginsInVolume,
          found[i].endsInVolume, found[i].sliceDuration, scan.timing.sliceDuration * recording.fs, drift,
          onset, found[i].begin, found[i].end, found[i].explainedByVolume, found[i].explainedBySlice,
          found[i].nrOfChannelsAgreeing);
  }
  const double trueSlices = residualDb(recording, truth, false);
  const double trueVolumes = residualDb(recording, truth, true);
  outcome.truthDb = trueSlices;
  outcome.lossSliceWise = residualDb(recording, found, false) - trueSlices;
  outcome.lossVolumeWise = residualDb(recording, found, true) - trueVolumes;
  return outcome;
}

} // namespace

int main(int argc, char** argv) {
  std::vector<std::string> wanted, wantedSources;
  std::vector<double> rates;
  int firstSeed = 1;
  int seeds = 5;
  double seconds = 60;
  bool each = false;
  for (int i = 1; i < argc; i++) {
    const std::string argument = argv[i];
    const auto number = [&] { return i + 1 < argc ? std::atof(argv[++i]) : 0; };
    if (argument == "--fs")
      rates.push_back(number());
    else if (argument == "--first-seed")
      firstSeed = static_cast<int>(number());
    else if (argument == "--seeds")
      seeds = static_cast<int>(number());
    else if (argument == "--seconds")
      seconds = number();
    else if (argument == "--each")
      each = true;
    else if (argument == "--source")
      wantedSources.push_back(i + 1 < argc ? argv[++i] : "");
    else
      wanted.push_back(argument);
  }
  if (rates.empty()) rates = {1000, 2000, 5000};
  std::printf(
      "| Kind | Timing | Hz | Exact | Drift over the scan (samples) | Onset (samples) | Slice-wise (dB) | "
      "Volume-wise (dB) | True timing, slice-wise (dB) | s per channel "
      "|\n|---|---|---|---|---|---|---|---|---|---|\n");
  for (const Kind& kind : allKinds()) {
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), kind.name) == wanted.end()) continue;
    for (const auto& [source, sourceName] : sources) {
      if (!wantedSources.empty() &&
          std::find(wantedSources.begin(), wantedSources.end(), sourceName) == wantedSources.end())
        continue;
      for (const double fs : rates) {
        int exact = 0;
        Outcome worst;
        worst.truthDb = -1000;
        worst.lossSliceWise = worst.lossVolumeWise = -1000;
        for (int seed = firstSeed; seed < firstSeed + seeds; seed++) {
          const Recording recording = simulate(kind, fs, static_cast<uint64_t>(seed), seconds);
          const auto start = std::chrono::steady_clock::now();
          const std::vector<ScanSegment> found = find(recording, source, static_cast<uint64_t>(seed));
          const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
          const Outcome outcome =
              judge(kind.isIdentifiable || source != Source::Blind, recording, found, each);
          if (outcome.isExact) exact++;
          if (std::fabs(outcome.drift) > std::fabs(worst.drift)) worst.drift = outcome.drift;
          if (std::fabs(outcome.onset) > std::fabs(worst.onset)) worst.onset = outcome.onset;
          worst.lossSliceWise = std::max(worst.lossSliceWise, outcome.lossSliceWise);
          worst.lossVolumeWise = std::max(worst.lossVolumeWise, outcome.lossVolumeWise);
          worst.truthDb = std::max(worst.truthDb, outcome.truthDb);
          worst.seconds = std::max(worst.seconds, taken.count() / nrOfChannels);
        }
        std::printf("| %s | %s | %g | %d of %d | %.4f | %.1f | %+.2f | %+.2f | %.1f | %.2f |\n",
                    kind.name.c_str(), sourceName, fs, exact, seeds, worst.drift, worst.onset,
                    worst.lossSliceWise, worst.lossVolumeWise, worst.truthDb, worst.seconds);
        std::fflush(stdout);
      }
    }
  }
  return 0;
}
