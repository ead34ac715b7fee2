#include "artifacts/gradient/timing/volumes/ScanEdges.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace emeg {

namespace {

constexpr double edgeBlock = 0.01;      // seconds
constexpr double leastEdgePower = 0.05; // of the mean; less is quiet
constexpr double leastEdgeGain = 0.5;
constexpr int64_t mostMissedBlocks = 40; // a dropout is that long
constexpr int64_t blocksAroundBegin = 3;
constexpr double hardlyAny = 0.02; // of a busy block's power: what may be cut off in front

} // namespace

ScanEdges::ScanEdges(std::span<const double> signal, const FittedRepeats& fit, std::vector<double> average,
                     double samplingFrequency, PositionRange limits)
    : signal_(signal), fit_(fit), average_(std::move(average)), limits_(limits),
      block_(std::max<int64_t>(static_cast<int64_t>(edgeBlock * samplingFrequency), 4)),
      nrOfBlocks_(static_cast<int64_t>(average_.size()) / block_) {
  double power = 0;
  for (const double value : average_) power += value * value;
  floor_ = leastEdgePower * power * static_cast<double>(block_) / static_cast<double>(average_.size());
}

double ScanEdges::begin() const {
  return std::max(refinedBegin(outermost(fit_.range.first, -1)), 0.0);
}

double ScanEdges::end() const {
  return std::min(outermost(fit_.range.last, 1) + static_cast<double>(block_),
                  static_cast<double>(signal_.size()));
}

double ScanEdges::start(int64_t repeat, int64_t block) const {
  return fit_.line.at(static_cast<double>(repeat)) + static_cast<double>(block * block_);
}

bool ScanEdges::isBusy(int64_t block) const {
  double power = 0;
  for (int64_t i = block * block_; i < (block + 1) * block_; ++i)
    power += average_[static_cast<size_t>(i)] * average_[static_cast<size_t>(i)];
  return power > floor_;
}

bool ScanEdges::holds(int64_t repeat, int64_t block) const {
  const double position = start(repeat, block);
  if (position + static_cast<double>(block_) / 2 < static_cast<double>(limits_.begin) ||
      position + static_cast<double>(block_) / 2 > static_cast<double>(limits_.end))
    return false;
  std::vector<double> values(static_cast<size_t>(block_));
  readShifted(signal_, position, values);
  double cross = 0, power = 0;
  for (int64_t i = 0; i < block_; ++i) {
    const double m = average_[static_cast<size_t>(block * block_ + i)];
    cross += m * values[static_cast<size_t>(i)];
    power += m * m;
  }
  return power > floor_ && cross > leastEdgeGain * power;
}

/// Start of the last block that holds on the way out through the given repeat and its neighbour. Another scan
/// may come behind a pause: the way ends where too many busy blocks in a row do not hold.
double ScanEdges::outermost(int64_t repeat, int64_t step) const {
  double found = start(repeat, step < 0 ? nrOfBlocks_ - 1 : 0);
  int64_t missed = 0;
  for (int64_t k = 0; k < 2 * nrOfBlocks_ && missed <= mostMissedBlocks; ++k) {
    const int64_t v = repeat + step * (k / nrOfBlocks_);
    const int64_t b = step < 0 ? nrOfBlocks_ - 1 - k % nrOfBlocks_ : k % nrOfBlocks_;
    if (!isBusy(b)) continue;
    if (holds(v, b)) {
      found = start(v, b);
      missed = 0;
    } else {
      ++missed;
    }
  }
  return found;
}

/// The likeliest place, around the first block, before which there is only noise and behind which there is
/// the average: where the sum of m (2 x - m) from there on is largest, which is by how much the squares of x
/// - m are smaller than those of x. Late rather than early by what hardly counts.
double ScanEdges::refinedBegin(double blockBegin) const {
  const int64_t count = 2 * blocksAroundBegin * block_;
  const double from = blockBegin - static_cast<double>(blocksAroundBegin * block_);
  if (from < static_cast<double>(limits_.begin)) return blockBegin;
  std::vector<double> values(static_cast<size_t>(count)), expected(values.size());
  readShifted(signal_, from, values);
  const auto n = static_cast<int64_t>(average_.size());
  const double inRepeat = from - fit_.line.at(std::floor((from - fit_.line.onset) / fit_.line.period));
  const auto first = static_cast<int64_t>(std::floor(inRepeat));
  for (int64_t i = 0; i < count; ++i)
    expected[static_cast<size_t>(i)] = average_[static_cast<size_t>((first + i) % n)];

  double gain = 0, largest = 0;
  std::vector<double> gains(values.size());
  for (size_t i = values.size(); i-- > 0;) {
    gain += expected[i] * (2 * values[i] - expected[i]);
    gains[i] = gain;
    largest = std::max(largest, gain);
  }
  const double enough = largest - hardlyAny * floor_ / leastEdgePower;
  for (size_t i = values.size(); i-- > 0;)
    if (gains[i] >= enough) return from + static_cast<double>(i);
  return blockBegin;
}

} // namespace emeg
