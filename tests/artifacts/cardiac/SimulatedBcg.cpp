#include "tests/artifacts/cardiac/SimulatedBcg.h"

#include "app/simulation/Simulation.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/FrequencyFilter.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double tolerance = 0.1; // seconds

FilterResponse edge(EdgeKind kind, double hz, double samplingFrequency, int32_t log2N) {
  FilterStageList stages;
  stages.addFilterStage(kind, 2 * hz / samplingFrequency, 3.0);
  return makeFilterResponse(stages, log2N);
}

/// For every beat the distance to the nearest pulse.
std::vector<double> delaysOf(const std::vector<double>& beats, const std::vector<double>& pulses) {
  std::vector<double> delays;
  for (const double beat : beats) {
    const auto later = std::lower_bound(pulses.begin(), pulses.end(), beat);
    if (later != pulses.end()) delays.push_back(*later - beat);
  }
  return delays;
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// How many of `these` lie within the tolerance of one of `those`; every one of those is used once.
size_t matches(const std::vector<double>& these, const std::vector<double>& those, double limit) {
  size_t count = 0;
  auto next = those.begin();
  for (const double x : these) {
    while (next != those.end() && *next < x - limit) ++next;
    if (next != those.end() && *next <= x + limit) {
      ++count;
      ++next;
    }
  }
  return count;
}

} // namespace

SimulatedBcg simulateBcg(const SimulationParameters& parameters) {
  Simulation simulation(parameters);
  SimulatedBlock block;
  simulation.next(parameters.nrOfTimePoints(), block);
  const double fs = parameters.samplingFrequency;
  const int64_t n = block.nrOfTimePoints;
  const auto step = std::max<int64_t>(static_cast<int64_t>(std::floor(fs / 250.0)), 1);
  int32_t log2N = 4;
  while ((int64_t{1} << log2N) < n + n / 4) ++log2N;
  const FilterResponse highPass = edge(EdgeKind::HighPass, 1.0, fs, log2N);
  const FilterResponse lowPass = edge(EdgeKind::LowPass, 35.0, fs, log2N);

  SimulatedBcg result;
  result.length = (n - 1) / step + 1;
  result.rate = static_cast<float>(fs / static_cast<double>(step));
  std::vector<double> signal(size_t{1} << log2N);
  FFTWorkspace workspace;
  for (int c = 0; c < block.nrOfChannels; ++c) {
    for (int64_t i = 0; i < n; ++i)
      signal[static_cast<size_t>(i)] = static_cast<double>(static_cast<float>(block.recorded(c, i)));
    filterSignalFFT(signal.data(), n, highPass, workspace);
    filterSignalFFT(signal.data(), n, lowPass, workspace);
    std::vector<double> series;
    std::vector<double> artifact;
    for (int64_t i = 0; i < n; i += step) {
      series.push_back(static_cast<double>(static_cast<float>(signal[static_cast<size_t>(i)])));
      artifact.push_back(block.pulse[block.indexOf(c, i)]);
    }
    series.push_back(0.0);
    result.series.push_back(std::move(series));
    result.artifact.push_back(std::move(artifact));
  }
  for (size_t i = 0; i < simulation.pulse()->beats().times.size(); ++i) {
    const double onset = simulation.pulse()->onset(i) * static_cast<double>(result.rate);
    if (onset >= 0 && onset < static_cast<double>(result.length)) result.beats.push_back(onset);
  }
  return result;
}

SimulationParameters healthyHeart(double beatsPerMinute, uint64_t seed) {
  SimulationParameters parameters = presetParameters(Preset::Bcg, 500);
  parameters.seed = seed;
  parameters.nrOfChannels = 8;
  parameters.seconds = 180;
  parameters.eeg.alphaPeakUv = 0;
  parameters.heart->beatsPerMinute = beatsPerMinute;
  return parameters;
}

CardiacScore scoreOf(const SimulatedBcg& recording, const std::vector<double>& pulses,
                     const std::vector<std::vector<double>>& estimates) {
  CardiacScore score;
  if (pulses.size() < 2) return score;
  const auto rate = static_cast<double>(recording.rate);
  const double limit = tolerance * rate;
  const double delay = median(delaysOf(recording.beats, pulses));
  std::vector<double> expected;
  for (const double beat : recording.beats)
    if (beat + delay >= pulses.front() - limit && beat + delay <= pulses.back() + limit)
      expected.push_back(beat + delay);
  const size_t found = matches(expected, pulses, limit);
  score.sensitivity = static_cast<double>(found) / static_cast<double>(expected.size());
  score.positivePredictivity = static_cast<double>(found) / static_cast<double>(pulses.size());
  score.delay = delay / rate;

  double leftOfAll = 0;
  double allOfAll = 0;
  score.explainedLeast = 1;
  score.explainedMost = -1e9;
  const auto first = static_cast<size_t>(pulses.front());
  const auto last = static_cast<size_t>(pulses.back());
  for (size_t c = 0; c < estimates.size(); ++c) {
    double left = 0;
    double all = 0;
    for (size_t i = first; i < last; ++i) {
      const double artifact = recording.artifact[c][i];
      left += (artifact - estimates[c][i]) * (artifact - estimates[c][i]);
      all += artifact * artifact;
    }
    if (all == 0) continue;
    leftOfAll += left;
    allOfAll += all;
    score.explainedLeast = std::min(score.explainedLeast, 1 - left / all);
    score.explainedMost = std::max(score.explainedMost, 1 - left / all);
  }
  score.explained = 1 - leftOfAll / allOfAll;
  return score;
}

} // namespace emeg
