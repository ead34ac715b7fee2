#include "artifacts/gradient/timing/ScanDetection.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double sameDuration = 1e-4; // relative

bool agree(const ScanSegment& a, const ScanSegment& b) {
  return a.nrOfSlicesPerVolume == b.nrOfSlicesPerVolume && a.nrOfVolumes == b.nrOfVolumes &&
         a.isCountIdentifiable == b.isCountIdentifiable &&
         std::fabs(a.volumeDuration - b.volumeDuration) < sameDuration * a.volumeDuration;
}

bool hasDurationOf(const ScanSegment& a, const ScanSegment& b) {
  return std::fabs(a.volumeDuration - b.volumeDuration) < sameDuration * b.volumeDuration ||
         std::fabs(a.sliceDuration - b.sliceDuration) < sameDuration * b.sliceDuration;
}

bool overlap(const ScanSegment& a, const ScanSegment& b) {
  const double shared = std::min(a.end, b.end) - std::max(a.begin, b.begin);
  return shared > 0.5 * std::min(a.end - a.begin, b.end - b.begin);
}

template <typename Value>
double medianOf(const std::vector<const ScanSegment*>& scans, Value valueOf) {
  std::vector<double> values;
  values.reserve(scans.size());
  for (const ScanSegment* scan : scans) values.push_back(valueOf(*scan));
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  return (values[(n - 1) / 2] + values[n / 2]) / 2;
}

/// A party stands for what it found. Where nothing told a channel the count, it does not outvote two others
/// that found the same one.
double weightOf(const std::vector<const ScanSegment*>& party) {
  const bool knowsCount = party.size() > 1 && party.front()->isCountIdentifiable;
  double weight = 0;
  for (const ScanSegment* scan : party) weight += (1 + 0.1 * scan->explainedByVolume) * (knowsCount ? 4 : 1);
  return weight;
}

ScanSegment merged(const std::vector<const ScanSegment*>& party, int32_t asked) {
  ScanSegment scan = *party.front();
  scan.begin = medianOf(party, [](const auto& s) { return s.begin; });
  scan.end = medianOf(party, [](const auto& s) { return s.end; });
  scan.volumeDuration = medianOf(party, [](const auto& s) { return s.volumeDuration; });
  scan.sliceDuration = medianOf(party, [](const auto& s) { return s.sliceDuration; });
  // Onsets that a whole volume or slice separates are no errors of measurement: the median is one of them.
  scan.firstVolumeOnset = medianOf(party, [](const auto& s) { return s.firstVolumeOnset; });
  scan.explainedByVolume = medianOf(party, [](const auto& s) { return s.explainedByVolume; });
  scan.explainedBySlice = medianOf(party, [](const auto& s) { return s.explainedBySlice; });
  scan.beginsInVolume =
      2 * std::count_if(party.begin(), party.end(), [](const auto* s) { return s->beginsInVolume; }) >
      static_cast<int64_t>(party.size());
  scan.endsInVolume =
      2 * std::count_if(party.begin(), party.end(), [](const auto* s) { return s->endsInVolume; }) >
      static_cast<int64_t>(party.size());
  scan.nrOfChannelsAgreeing = static_cast<int32_t>(party.size());
  scan.nrOfChannelsAsked = asked;
  return scan;
}

ScanSegment elected(const std::vector<const ScanSegment*>& candidates, int32_t asked) {
  std::vector<std::vector<const ScanSegment*>> parties;
  for (const ScanSegment* candidate : candidates) {
    const auto party = std::find_if(parties.begin(), parties.end(),
                                    [&](const auto& members) { return agree(*members.front(), *candidate); });
    if (party == parties.end())
      parties.push_back({candidate});
    else
      party->push_back(candidate);
  }
  const auto winner = std::max_element(
      parties.begin(), parties.end(), [](const auto& a, const auto& b) { return weightOf(a) < weightOf(b); });
  return merged(*winner, asked);
}

} // namespace

std::vector<ScanSegment> voteOnScans(const std::vector<std::vector<ScanSegment>>& scansOfChannels,
                                     int32_t leastAgreeing) {
  const auto asked = static_cast<int32_t>(scansOfChannels.size());
  std::vector<const ScanSegment*> open;
  for (const auto& scans : scansOfChannels)
    for (const ScanSegment& scan : scans) open.push_back(&scan);
  // The longest first: parts of it that other channels took for scans of their own belong to it.
  std::stable_sort(open.begin(), open.end(),
                   [](const auto* a, const auto* b) { return a->end - a->begin > b->end - b->begin; });
  std::vector<ScanSegment> result;
  while (!open.empty()) {
    std::vector<const ScanSegment*> together, others;
    for (const ScanSegment* scan : open) (overlap(*open.front(), *scan) ? together : others).push_back(scan);
    // What one channel of many sees is no scan.
    if (3 * static_cast<int32_t>(together.size()) >= asked) {
      const ScanSegment scan = elected(together, asked);
      const auto agreeing = std::count_if(together.begin(), together.end(), [&](const ScanSegment* other) {
        return hasDurationOf(*other, scan);
      });
      if (agreeing >= leastAgreeing) result.push_back(scan);
    }
    open = others;
  }
  std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.begin < b.begin; });
  return result;
}

} // namespace emeg
