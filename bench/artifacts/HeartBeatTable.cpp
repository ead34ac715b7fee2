// How much of the heart beat artifact goes with the plug-in's settings and with those that keep the EEG where
// there are no beats, and how good the beats are that are carried to the edges of the recording. Prints
// tables of docs/heart-beats.md. Arguments: first seed, number of seeds [101 20].

#include "app/simulation/HeartBeats.h"
#include "artifacts/cardiac/model/PulseModel.h"
#include "artifacts/cardiac/search/BeatSearch.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace emeg {
namespace {

struct Case {
  std::string name;
  double beatsPerMinute = 65;
  double seconds = 120;
  int nrOfChannels = 16;
  double rmssd = 0.030;
  double ectopicShare = 0;
  double alphaUv = 0;
  double movementUv = 0;
  double peakUv = 80;
};

SimulationParameters parametersOf(const Case& what, uint64_t seed) {
  SimulationParameters parameters = healthyHeart(what.beatsPerMinute, seed);
  parameters.seconds = what.seconds;
  parameters.nrOfChannels = what.nrOfChannels;
  parameters.eeg.alphaPeakUv = what.alphaUv;
  parameters.heart->rmssd = what.rmssd;
  parameters.heart->ectopicShare = what.ectopicShare;
  parameters.heart->peakUv = what.peakUv;
  if (what.movementUv > 0) parameters.movement = MovementParameters{what.movementUv, 5};
  return parameters;
}

/// Places of all true beats, those whose artifact began in front of the recording, too.
std::vector<double> truePlaces(const SimulationParameters& parameters, const SimulatedBcg& recording,
                               double delay) {
  std::vector<double> places;
  for (const double time : HeartBeats::draw(*parameters.heart, parameters.seed, parameters.seconds).times) {
    const double place = (time + parameters.heart->pulseDelay + delay) * static_cast<double>(recording.rate);
    if (place >= 0 && place <= static_cast<double>(recording.length - 1)) places.push_back(place);
  }
  return places;
}

int matched(const std::vector<double>& these, const std::vector<double>& those, double limit) {
  return static_cast<int>(std::count_if(these.begin(), these.end(), [&](double x) {
    return std::any_of(those.begin(), those.end(), [&](double y) { return std::abs(x - y) <= limit; });
  }));
}

/// Squares of the artifact and of what is left of it, over all channels.
struct Energies {
  double artifact = 0;
  double left = 0;
  void add(const SimulatedBcg& recording, const std::vector<std::vector<double>>& estimates,
           PositionRange samples) {
    for (size_t c = 0; c < estimates.size(); ++c) {
      for (auto i = static_cast<size_t>(samples.begin); i < static_cast<size_t>(samples.end); ++i) {
        const double truth = recording.artifact[c][i];
        artifact += truth * truth;
        left += (truth - estimates[c][i]) * (truth - estimates[c][i]);
      }
    }
  }
  double explained() const { return artifact > 0 ? 1 - left / artifact : 0; }
};

struct Figures {
  std::vector<double> insideBefore, insideAfter, wholeBefore, wholeAfter, modelled, modelledAfter;
  int missing = 0, reached = 0, carried = 0, right = 0, none = 0;
};

std::vector<std::vector<double>> estimatesOf(const SimulatedBcg& recording, const PulseModel& model) {
  std::vector<std::vector<double>> estimates = recording.series;
  for (std::vector<double>& estimate : estimates) model.replaceByEstimate(estimate, recording.length);
  return estimates;
}

void addCarried(const SimulationParameters& parameters, const SimulatedBcg& recording,
                const FoundBeats& found, Figures& figures) {
  const std::vector<double>& all = found.positions;
  const std::vector<double> selected(all.begin() + found.nrOfCarriedInFront,
                                     all.end() - found.nrOfCarriedBehind);
  std::vector<double> carried(all.begin(), all.begin() + found.nrOfCarriedInFront);
  carried.insert(carried.end(), all.end() - found.nrOfCarriedBehind, all.end());
  const double delay = scoreOf(recording, selected, {}).delay;
  const double limit = 0.1 * static_cast<double>(recording.rate);
  std::vector<double> missing;
  for (const double place : truePlaces(parameters, recording, delay))
    if (place < selected.front() - limit || place > selected.back() + limit) missing.push_back(place);
  figures.missing += static_cast<int>(missing.size());
  figures.reached += matched(missing, carried, limit);
  figures.carried += static_cast<int>(carried.size());
  figures.right += matched(carried, missing, limit);
}

void addSeed(const Case& what, uint64_t seed, Figures& figures) {
  const SimulationParameters parameters = parametersOf(what, seed);
  const SimulatedBcg recording = simulateBcg(parameters);
  const FoundBeats found = findBeats(recording.view(), unlimitedBeatSearch());
  const std::vector<double> selected(found.positions.begin() + found.nrOfCarriedInFront,
                                     found.positions.end() - found.nrOfCarriedBehind);
  if (selected.size() < 3) {
    ++figures.none;
    return;
  }
  addCarried(parameters, recording, found, figures);

  const PulseModel before(selected, found.period.period);
  const PulseModel after(found.positions, found.period.period, keepingBeatModel(recording.rate));
  const auto estimatesBefore = estimatesOf(recording, before);
  const auto estimatesAfter = estimatesOf(recording, after);
  const PositionRange span{static_cast<int64_t>(selected.front()), static_cast<int64_t>(selected.back())};
  const PositionRange whole{0, recording.length};
  Energies energies[5];
  energies[0].add(recording, estimatesBefore, span);
  energies[1].add(recording, estimatesAfter, span);
  energies[2].add(recording, estimatesBefore, whole);
  energies[3].add(recording, estimatesAfter, whole);
  double modelled = 0;
  for (const PositionRange& stretch : after.modelledStretches(recording.length)) {
    energies[4].add(recording, estimatesAfter, stretch);
    modelled += static_cast<double>(stretch.end - stretch.begin);
  }
  figures.insideBefore.push_back(energies[0].explained());
  figures.insideAfter.push_back(energies[1].explained());
  figures.wholeBefore.push_back(energies[2].explained());
  figures.wholeAfter.push_back(energies[3].explained());
  figures.modelledAfter.push_back(energies[4].explained());
  figures.modelled.push_back(modelled / static_cast<double>(recording.length));
}

double meanOf(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

std::string meanAndLeast(const std::vector<double>& values) {
  if (values.empty()) return "-";
  char text[64];
  std::snprintf(text, sizeof text, "%.3f (%.3f)", meanOf(values),
                *std::min_element(values.begin(), values.end()));
  return text;
}

std::string shareOf(int part, int all) {
  char text[64];
  std::snprintf(text, sizeof text, "%d of %d", part, all);
  return text;
}

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const double rate : {45.0, 60.0, 75.0, 100.0}) {
    Case what;
    what.name = std::to_string(static_cast<int>(rate)) + " beats per minute";
    what.beatsPerMinute = rate;
    all.push_back(what);
  }
  const auto add = [&](const char* name, auto change) {
    Case what;
    what.name = name;
    change(what);
    all.push_back(what);
  };
  add("RMSSD 5 ms", [](Case& c) { c.rmssd = 0.005; });
  add("RMSSD 100 ms", [](Case& c) { c.rmssd = 0.1; });
  add("ectopic beats, 5 %", [](Case& c) { c.ectopicShare = 0.05; });
  add("alpha rhythm, 30 uV", [](Case& c) { c.alphaUv = 30; });
  add("5 movements, 300 uV", [](Case& c) { c.movementUv = 300; });
  add("artifact of 40 uV", [](Case& c) { c.peakUv = 40; });
  add("60 s", [](Case& c) { c.seconds = 60; });
  add("180 s, 32 channels", [](Case& c) {
    c.seconds = 180;
    c.nrOfChannels = 32;
  });
  return all;
}

} // namespace
} // namespace emeg

int main(int argc, char** argv) {
  const uint64_t first = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 101;
  const uint64_t count = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 20;
  std::printf(
      "| Recording | Not selected | Carried | Carried right | Span, before | Span, after | Modelled, after "
      "| Whole, before | Whole, after | Modelled share | Without beats |\n"
      "|---|---|---|---|---|---|---|---|---|---|---|\n");
  for (const emeg::Case& what : emeg::cases()) {
    emeg::Figures f;
    for (uint64_t seed = first; seed < first + count; ++seed) emeg::addSeed(what, seed, f);
    std::printf("| %s | %d | %s | %s | %s | %s | %s | %s | %s | %s | %d |\n", what.name.c_str(), f.missing,
                emeg::shareOf(f.reached, f.missing).c_str(), emeg::shareOf(f.right, f.carried).c_str(),
                emeg::meanAndLeast(f.insideBefore).c_str(), emeg::meanAndLeast(f.insideAfter).c_str(),
                emeg::meanAndLeast(f.modelledAfter).c_str(), emeg::meanAndLeast(f.wholeBefore).c_str(),
                emeg::meanAndLeast(f.wholeAfter).c_str(), emeg::meanAndLeast(f.modelled).c_str(), f.none);
    std::fflush(stdout);
  }
  return 0;
}
