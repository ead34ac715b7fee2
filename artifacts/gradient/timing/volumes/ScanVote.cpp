#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double sameDuration = 1e-4; // relative
constexpr double sameOnset = 0.5;     // of a slice; more is another slice's onset and no error of measurement

/// What one channel found.
struct Vote {
  size_t channel = 0;
  const ScanSegment* scan = nullptr;
};

using Votes = std::vector<Vote>;

double lengthOf(const ScanSegment& scan) {
  return scan.end - scan.begin;
}

double sharedBy(const ScanSegment& a, const ScanSegment& b) {
  return std::min(a.end, b.end) - std::max(a.begin, b.begin);
}

/// Both describe the same stretch of time.
bool areAtTheSameTime(const ScanSegment& a, const ScanSegment& b) {
  return sharedBy(a, b) > 0.5 * std::max(lengthOf(a), lengthOf(b));
}

/// They cannot both be there.
bool exclude(const ScanSegment& a, const ScanSegment& b) {
  return sharedBy(a, b) > 0.5 * std::min(lengthOf(a), lengthOf(b));
}

bool areEqual(double a, double b) {
  return std::fabs(a - b) < sameDuration * a;
}

/// The same volumes at the same time; where nothing tells the count, which is then a choice, the same slices.
bool agree(const ScanSegment& a, const ScanSegment& b) {
  if (!areAtTheSameTime(a, b) || a.isCountIdentifiable != b.isCountIdentifiable) return false;
  if (!a.isCountIdentifiable) return areEqual(a.sliceDuration, b.sliceDuration);
  return a.nrOfSlicesPerVolume == b.nrOfSlicesPerVolume && areEqual(a.volumeDuration, b.volumeDuration);
}

/// The same scan, of which they differ in what slices make a volume, or what makes a slice.
bool agreeOnADuration(const ScanSegment& a, const ScanSegment& b) {
  return areAtTheSameTime(a, b) &&
         (areEqual(a.sliceDuration, b.sliceDuration) || areEqual(a.volumeDuration, b.volumeDuration));
}

bool haveSameCounts(const ScanSegment& a, const ScanSegment& b) {
  return a.nrOfVolumes == b.nrOfVolumes && a.nrOfSlicesPerVolume == b.nrOfSlicesPerVolume;
}

/// Votes of which each agrees with the first one of its party. A channel has one vote in each.
template <typename Agree>
std::vector<Votes> partiesOf(const Votes& votes, Agree agreed) {
  std::vector<Votes> parties;
  for (const Vote& vote : votes) {
    const auto party = std::find_if(parties.begin(), parties.end(), [&](const Votes& members) {
      return agreed(*members.front().scan, *vote.scan);
    });
    if (party == parties.end())
      parties.push_back({vote});
    else if (std::none_of(party->begin(), party->end(),
                          [&](const Vote& member) { return member.channel == vote.channel; }))
      party->push_back(vote);
  }
  return parties;
}

/// As many as there are channels, a little more where their volumes explain more.
double strengthOf(const Votes& party) {
  double strength = 0;
  for (const Vote& vote : party) strength += 1 + 0.1 * vote.scan->explainedByVolume;
  return strength;
}

/// Where nothing told a channel the count, it does not outvote two others that found the same one.
double weightOf(const Votes& party) {
  const bool knowsCount = party.size() > 1 && party.front().scan->isCountIdentifiable;
  return strengthOf(party) * (knowsCount ? 4 : 1);
}

template <typename Value>
double medianOf(const Votes& votes, Value valueOf) {
  std::vector<double> values;
  values.reserve(votes.size());
  for (const Vote& vote : votes) values.push_back(valueOf(*vote.scan));
  return median(values);
}

template <typename Is>
bool mostly(const Votes& votes, Is is) {
  return 2 * std::count_if(votes.begin(), votes.end(), [&](const Vote& vote) { return is(*vote.scan); }) >
         static_cast<int64_t>(votes.size());
}

/// Channels may take different slices for the first one: the median of those that lie together, where most
/// do, so that it is nobody's slice in between.
double onsetOf(const Votes& votes) {
  Votes sorted = votes;
  std::sort(sorted.begin(), sorted.end(),
            [](const Vote& a, const Vote& b) { return a.scan->firstVolumeOnset < b.scan->firstVolumeOnset; });
  const double reach = sameOnset * votes.front().scan->sliceDuration;
  Votes most;
  for (auto first = sorted.begin(); first != sorted.end(); ++first) {
    const auto behind = std::find_if(first, sorted.end(), [&](const Vote& vote) {
      return vote.scan->firstVolumeOnset > first->scan->firstVolumeOnset + reach;
    });
    if (behind - first > static_cast<int64_t>(most.size())) most.assign(first, behind);
  }
  return medianOf(most, [](const auto& s) { return s.firstVolumeOnset; });
}

/// Of a party's counts those that most found, with the median of their times.
ScanSegment merged(const Votes& party, int32_t asked) {
  const std::vector<Votes> groups = partiesOf(party, haveSameCounts);
  const Votes& votes = *std::max_element(groups.begin(), groups.end(), [](const Votes& a, const Votes& b) {
    return strengthOf(a) < strengthOf(b);
  });
  ScanSegment scan = *votes.front().scan;
  scan.begin = medianOf(votes, [](const auto& s) { return s.begin; });
  scan.end = medianOf(votes, [](const auto& s) { return s.end; });
  scan.volumeDuration = medianOf(votes, [](const auto& s) { return s.volumeDuration; });
  scan.sliceDuration = medianOf(votes, [](const auto& s) { return s.sliceDuration; });
  scan.firstVolumeOnset = onsetOf(votes);
  scan.explainedByVolume = medianOf(votes, [](const auto& s) { return s.explainedByVolume; });
  scan.explainedBySlice = medianOf(votes, [](const auto& s) { return s.explainedBySlice; });
  scan.beginsInVolume = mostly(votes, [](const auto& s) { return s.beginsInVolume; });
  scan.endsInVolume = mostly(votes, [](const auto& s) { return s.endsInVolume; });
  scan.nrOfChannelsAgreeing = static_cast<int32_t>(votes.size());
  scan.nrOfChannelsAsked = asked;
  return scan;
}

/// The party that most channels are in says when a scan is; of all that speak of that time, the weightiest
/// says what it is.
const Votes& winnerOf(const std::vector<Votes>& parties) {
  const auto strongest = std::max_element(parties.begin(), parties.end(), [](const Votes& a, const Votes& b) {
    return strengthOf(a) < strengthOf(b);
  });
  auto winner = strongest;
  for (auto rival = parties.begin(); rival != parties.end(); ++rival)
    if (areAtTheSameTime(*rival->front().scan, *strongest->front().scan) &&
        weightOf(*rival) > weightOf(*winner))
      winner = rival;
  return *winner;
}

} // namespace

std::vector<ScanSegment> voteOnScans(const std::vector<std::vector<ScanSegment>>& scansOfChannels,
                                     int32_t leastAgreeing) {
  const auto asked = static_cast<int32_t>(scansOfChannels.size());
  Votes open;
  for (size_t channel = 0; channel < scansOfChannels.size(); ++channel)
    for (const ScanSegment& scan : scansOfChannels[channel]) open.push_back({channel, &scan});

  std::vector<ScanSegment> result;
  while (true) {
    // What one channel of many sees is no scan.
    const auto isFewChannels = [&](const Votes& party) {
      const auto members = static_cast<int32_t>(party.size());
      return 3 * members < asked || members < leastAgreeing;
    };
    std::vector<Votes> parties = partiesOf(open, agree);
    std::erase_if(parties, isFewChannels);
    const bool isCountAgreedOn = !parties.empty();
    if (!isCountAgreedOn) {
      parties = partiesOf(open, agreeOnADuration);
      std::erase_if(parties, isFewChannels);
      if (parties.empty()) break;
    }
    const Votes winner = winnerOf(parties);
    result.push_back(merged(winner, asked));
    if (!isCountAgreedOn) result.back().isCountIdentifiable = false;
    std::erase_if(open, [&](const Vote& vote) { return exclude(*winner.front().scan, *vote.scan); });
  }
  std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.begin < b.begin; });
  return result;
}

} // namespace emeg
