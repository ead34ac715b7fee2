#include "app/commands/EvaluationTables.h"

#include <algorithm>
#include <cmath>
#include <fmt/printf.h>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

/// Least and most of the values that are numbers.
struct Range {
  double least = 0;
  double most = 0;
  bool isEmpty = true;

  void add(double value) {
    if (std::isnan(value)) return;
    least = isEmpty ? value : std::min(least, value);
    most = isEmpty ? value : std::max(most, value);
    isEmpty = false;
  }
};

/// What rounds to zero is shown without a sign.
double atThreeDecimals(double value) {
  return std::round(value * 1000) / 1000 + 0.0;
}

/// Channels without artifact have nothing to measure.
std::string numberOrDash(int width, int decimals, double value) {
  return std::isnan(value) ? fmt::sprintf("%*s", width, "-") : fmt::sprintf("%*.*f", width, decimals, value);
}

void printSequence(std::ostream& out, const Evaluation& evaluation) {
  const SimulatedTruth& truth = evaluation.truth;
  const auto& found = evaluation.foundSequence;
  if (!truth.hasScan()) {
    out << "Scan: none.";
    if (evaluation.hasTranscript) out << (found ? " One was found all the same." : " None was found.");
    out << "\n\n";
    return;
  }
  out << fmt::sprintf("%-24s%16s", "Scan", "true");
  if (evaluation.hasTranscript) out << "           found";
  out << "\n";
  const auto count = [&](const char* name, int trueValue, int foundValue) {
    out << fmt::sprintf("  %-22s%16d", name, trueValue);
    if (found) out << fmt::sprintf("%16d", foundValue);
    out << "\n";
  };
  const auto seconds = [&](const char* name, double trueValue, double foundValue) {
    out << fmt::sprintf("  %-22s%14.7f s", name, trueValue);
    if (found) out << fmt::sprintf("%14.7f s", foundValue);
    out << "\n";
  };
  const MRSequence s = found.value_or(MRSequence());
  count("volumes", truth.scans.front().nrOfVolumes, s.nrOfVolumes);
  count("slices per volume", truth.nrOfSlicesPerVolume, s.nrOfSlicesPerVolume);
  seconds("volume duration", truth.volumeDuration, s.volumeDuration);
  seconds("slice duration", truth.sliceDuration, s.sliceDuration);
  seconds("first volume", truth.scans.front().firstVolumeOnset, s.firstTriggerTime);
  for (size_t i = 1; i < truth.scans.size(); ++i)
    out << fmt::sprintf("  scan %-17d%16d volumes from %.7f s\n", static_cast<int>(i + 1),
                        truth.scans[i].nrOfVolumes, truth.scans[i].firstVolumeOnset);
  if (evaluation.hasTranscript && !found) out << "  No sequence was found.\n";
  out << "\n";
}

void printResiduals(std::ostream& out, const Evaluation& evaluation) {
  out << fmt::sprintf("%-12s%16s%16s%16s%16s\n", "Channel", "artifact (uV)", "residual (uV)", "below (dB)",
                      "outside (uV)");
  Range range;
  for (const ChannelResidual& channel : evaluation.residuals) {
    range.add(channel.decibels());
    out << fmt::sprintf("%-12s%16.1f%16.2f", channel.name.c_str(), channel.artifactUv, channel.residualUv)
        << numberOrDash(16, 1, channel.decibels()) << fmt::sprintf("%16.2f\n", channel.outsideUv);
  }
  const size_t nrOfScans = evaluation.truth.scans.size();
  if (nrOfScans > 1) out << "\n";
  for (size_t i = 0; nrOfScans > 1 && i < nrOfScans; ++i) {
    Range ofScan;
    for (const ChannelResidual& channel : evaluation.residuals) ofScan.add(channel.scans[i].decibels());
    if (!ofScan.isEmpty)
      out << fmt::sprintf("In scan %d the residual lies %.1f to %.1f dB below the gradient artifact.",
                          static_cast<int>(i + 1), ofScan.least, ofScan.most)
          << "\n";
  }
  if (range.isEmpty)
    out << "\nNo channel has a gradient artifact.\n";
  else
    out << fmt::sprintf("\nThe residual lies %.1f to %.1f dB below the gradient artifact.\n", range.least,
                        range.most);
}

void printBeats(std::ostream& out, const Evaluation& evaluation) {
  const SimulatedTruth& truth = evaluation.truth;
  const auto inside = std::count_if(truth.beatTimes.begin(), truth.beatTimes.end(),
                                    [&](double time) { return time >= 0 && time < truth.seconds; });
  out << fmt::sprintf("Heart\n  %-22s%16d\n", "beats", static_cast<int>(inside));
  if (!evaluation.heartPulses) {
    out << "  Beats are not judged: " << evaluation.triggerFile
        << " is not there or holds no HeartPulseTriggers.\n";
    return;
  }
  const std::vector<double>& pulses = *evaluation.heartPulses;
  out << fmt::sprintf("  %-22s%16d", "pulses found", static_cast<int>(pulses.size()));
  if (!pulses.empty()) out << fmt::sprintf("   (from %.3f to %.3f s)", pulses.front(), pulses.back());
  out << "\n";
  if (!evaluation.beats) {
    out << "  Beats are not judged: that takes two pulses.\n";
    return;
  }
  const BeatAgreement& beats = *evaluation.beats;
  out << fmt::sprintf("  %-22s%16d\n", "beats in that span", static_cast<int>(beats.nrOfTrueBeats))
      << fmt::sprintf("  %-22s%16d\n", "matched", static_cast<int>(beats.nrOfMatched))
      << fmt::sprintf("  %-22s%13.1f ms\n", "delay", beats.delay * 1000)
      << fmt::sprintf("  %-22s%13.1f ms\n", "largest timing error", beats.largestError * 1000)
      << fmt::sprintf("  %-22s%13.1f ms\n", "RMS timing error", beats.rmsError * 1000);
}

void printHeart(std::ostream& out, const Evaluation& evaluation) {
  printBeats(out, evaluation);
  out << fmt::sprintf("\n%-12s%16s%16s%16s\n", "Channel", "artifact (uV)", "residual (uV)", "explained");
  Range range;
  for (const ChannelExplained& channel : evaluation.explained) {
    range.add(channel.explained());
    out << fmt::sprintf("%-12s%16.2f%16.2f", channel.name.c_str(), channel.artifactUv, channel.residualUv)
        << numberOrDash(16, 3, atThreeDecimals(channel.explained())) << "\n";
  }

  out << "\nBeats: ";
  if (const auto& beats = evaluation.beats)
    out << fmt::sprintf("sensitivity %.3f, positive predictivity %.3f (tolerance %.0f ms, delay %.0f ms)",
                        beats->sensitivity(), beats->positivePredictivity(), beatTolerance * 1000,
                        beats->delay * 1000);
  else
    out << "not judged";
  out << "; artifact explained ";
  if (range.isEmpty)
    out << "nowhere: no channel has any";
  else
    out << fmt::sprintf("%.3f to %.3f, in all %.3f", atThreeDecimals(range.least),
                        atThreeDecimals(range.most), atThreeDecimals(explainedInAll(evaluation.explained)));
  if (!evaluation.beats) out << " (whole recording)";
  out << "\n";
}

} // namespace

void printEvaluation(std::ostream& out, const Evaluation& evaluation) {
  printSequence(out, evaluation);
  if (evaluation.truth.hasScan()) printResiduals(out, evaluation);
  if (evaluation.truth.hasScan() && evaluation.truth.hasHeart()) out << "\n";
  if (evaluation.truth.hasHeart()) printHeart(out, evaluation);
}

std::string evaluationJson(const Evaluation& evaluation) {
  using Json = nlohmann::ordered_json;
  Json json = Json::object();
  if (evaluation.truth.hasScan()) {
    Json& channels = json["gradient"]["channels"] = Json::array();
    for (const ChannelResidual& channel : evaluation.residuals) {
      channels.push_back({{"name", channel.name},
                          {"artifactUv", channel.artifactUv},
                          {"residualUv", channel.residualUv},
                          {"decibels", channel.decibels()},
                          {"outsideUv", channel.outsideUv}});
      Json& scans = channels.back()["scans"] = Json::array();
      for (const ScanResidual& scan : channel.scans)
        scans.push_back({{"artifactUv", scan.artifactUv},
                         {"residualUv", scan.residualUv},
                         {"decibels", scan.decibels()}});
    }
  }
  if (evaluation.truth.hasHeart()) {
    Json& heart = json["heart"];
    heart["pulses"] = nullptr;
    if (evaluation.heartPulses) heart["pulses"] = evaluation.heartPulses->size();
    heart["beats"] = nullptr;
    if (const auto& beats = evaluation.beats)
      heart["beats"] = {
          {"trueInSpan", beats->nrOfTrueBeats},  {"matched", beats->nrOfMatched},
          {"sensitivity", beats->sensitivity()}, {"positivePredictivity", beats->positivePredictivity()},
          {"tolerance", beatTolerance},          {"delay", beats->delay},
          {"largestError", beats->largestError}, {"rmsError", beats->rmsError}};
    heart["explained"] = explainedInAll(evaluation.explained);
    Json& channels = heart["channels"] = Json::array();
    for (const ChannelExplained& channel : evaluation.explained)
      channels.push_back({{"name", channel.name},
                          {"artifactUv", channel.artifactUv},
                          {"residualUv", channel.residualUv},
                          {"explained", channel.explained()}});
  }
  return json.dump(2) + "\n";
}

} // namespace emeg
