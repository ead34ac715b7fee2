#include "artifacts/gradient/timing/volumes/TypicalRepeat.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"
#include "dsp/Statistics.h"

#include <algorithm>

namespace emeg {

namespace {

constexpr int64_t mostForMedian = 9;
// What a block may differ from the typical one: the power of this many medians, or this share of its own. A
// slow change of the artifact's size stays below.
constexpr double largestEnergy = 9;
constexpr double harmlessEnergy = 0.02;

/// Those that count and that the signal holds.
std::vector<double> positionsOf(std::span<const double> signal, const RepeatLine& line, RepeatRange range,
                                int64_t length, const std::vector<bool>& used) {
  std::vector<double> positions;
  for (int64_t v = range.first; v <= range.last; ++v) {
    const double position = line.at(static_cast<double>(v));
    if (!used.empty() && !used[static_cast<size_t>(v - range.first)]) continue;
    if (position < 0 || position + static_cast<double>(length) > static_cast<double>(signal.size())) continue;
    positions.push_back(position);
  }
  return positions;
}

/// Sample by sample the median of a few repeats, evenly spread: nothing that spoils one of them is in it.
std::vector<double> medianRepeat(std::span<const double> signal, const std::vector<double>& positions,
                                 int64_t length) {
  const auto n = static_cast<int64_t>(positions.size());
  const int64_t count = std::min(n, mostForMedian);
  std::vector<std::vector<double>> repeats;
  for (int64_t i = 0; i < count; ++i) {
    repeats.emplace_back(static_cast<size_t>(length));
    readShifted(signal, positions[static_cast<size_t>((2 * i + 1) * n / (2 * count))], repeats.back());
  }
  std::vector<double> median, values;
  for (size_t t = 0; t < static_cast<size_t>(length); ++t) {
    values.clear();
    for (const std::vector<double>& repeat : repeats) values.push_back(repeat[t]);
    median.push_back(upperMedianReordering(values));
  }
  return median;
}

} // namespace

std::vector<double> typicalRepeat(std::span<const double> signal, const RepeatLine& line, RepeatRange range,
                                  int64_t length, int64_t blockLength, const std::vector<bool>& used) {
  const std::vector<double> positions = positionsOf(signal, line, range, length, used);
  if (positions.size() < 3) return averageRepeat(signal, line, range, length, used);
  const std::vector<double> median = medianRepeat(signal, positions, length);
  blockLength = std::clamp<int64_t>(blockLength, 1, std::max<int64_t>(length, 1));
  const auto blockOf = [&](size_t t) { return t / static_cast<size_t>(blockLength); };
  const size_t nrOfBlocks = static_cast<size_t>((length + blockLength - 1) / blockLength);

  std::vector<std::vector<double>> energies(nrOfBlocks, std::vector<double>(positions.size(), 0.0));
  std::vector<double> repeat(static_cast<size_t>(length));
  for (size_t v = 0; v < positions.size(); ++v) {
    readShifted(signal, positions[v], repeat);
    for (size_t t = 0; t < repeat.size(); ++t)
      energies[blockOf(t)][v] += (repeat[t] - median[t]) * (repeat[t] - median[t]);
  }
  std::vector<double> limits(nrOfBlocks, 0.0);
  for (size_t t = 0; t < median.size(); ++t) limits[blockOf(t)] += harmlessEnergy * median[t] * median[t];
  for (size_t block = 0; block < nrOfBlocks; ++block) {
    std::vector<double> ofBlock = energies[block];
    limits[block] = std::max(limits[block], largestEnergy * upperMedianReordering(ofBlock));
  }

  std::vector<double> sum(repeat.size(), 0.0);
  std::vector<double> counts(nrOfBlocks, 0.0);
  for (size_t v = 0; v < positions.size(); ++v) {
    readShifted(signal, positions[v], repeat);
    for (size_t block = 0; block < nrOfBlocks; ++block)
      if (energies[block][v] <= limits[block]) counts[block] += 1;
    for (size_t t = 0; t < repeat.size(); ++t)
      if (energies[blockOf(t)][v] <= limits[blockOf(t)]) sum[t] += repeat[t];
  }
  // At least half of the blocks lie within their median.
  for (size_t t = 0; t < sum.size(); ++t) sum[t] /= counts[blockOf(t)];
  return sum;
}

} // namespace emeg
