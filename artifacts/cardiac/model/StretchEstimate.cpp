#include "artifacts/cardiac/model/StretchEstimate.h"

#include "artifacts/cardiac/model/BeatReassembly.h"
#include "artifacts/cardiac/model/BeatWriter.h"
#include "artifacts/cardiac/model/CutEpochs.h"
#include "artifacts/cardiac/model/WarpFit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

/// 1 at the beat, 0 from the reach on.
double fadeAt(int64_t distance, int64_t reach, int64_t fadeLength) {
  const int64_t fade = std::clamp<int64_t>(fadeLength, 1, std::max<int64_t>(reach, 1));
  const int64_t into = distance - (reach - fade);
  if (into <= 0) return 1;
  if (into >= fade) return 0;
  return 0.5 * (1 + std::cos(std::numbers::pi * static_cast<double>(into) / static_cast<double>(fade)));
}

class StretchEstimate {
public:
  StretchEstimate(const BeatTimeBase& base, const WarpTable& table, double a, std::vector<double>& series,
                  int64_t length)
      : base_(base), table_(table), a_(a), series_(series), length_(length), outer_(scalarsOf(base)),
        beat_(static_cast<size_t>(base.modelLength)) {}

  void makeModel(int nrOfComponents) {
    RowMatrix epochs(base_.nrOfEpochs(), static_cast<size_t>(base_.epochLength()));
    for (size_t i = 0; i < base_.nrOfIntervals(); ++i) {
      inside_.push_back(valuesInside(base_, table_, i, length_));
      resampleInside(series_.data(), length_, base_, table_, i, inside_.back(), beat_);
      cutIntoEpochs(base_, i, beat_, epochs);
    }
    const std::vector<CutEpoch> cutEpochs = takeOut(epochs);
    model_ = principalComponentModel(nrOfComponents, epochs);
    for (const CutEpoch& cut : cutEpochs) fitScores(cut, model_);
  }

  void write(const std::vector<BeatStretch>& stretches, int32_t fadeLength) {
    std::fill(series_.begin(), series_.end(), 0.0);
    BeatWriter writer(base_, a_);
    std::vector<double> before(static_cast<size_t>(base_.epochLength()));
    std::vector<double> behind(before.size());
    size_t interval = 0;
    for (const BeatStretch& stretch : stretches) {
      model_.modelOf(interval, behind);
      writeInFront(interval++, stretch.inFront, fadeLength, behind);
      for (size_t i = stretch.firstBeat; i < stretch.lastBeat; ++i, ++interval) {
        before.swap(behind);
        model_.modelOf(interval, behind);
        reassembleBeat(base_, before.data(), behind.data(), beat_);
        writer.write(interval, beat_, series_.data(), length_);
      }
      writeBehind(interval++, stretch.behind, fadeLength, behind);
    }
  }

private:
  /// A time base for one interval at sample 0.
  static BeatTimeBase scalarsOf(const BeatTimeBase& base) {
    BeatTimeBase one;
    one.medianPulseInterval = base.medianPulseInterval;
    one.modelLength = base.modelLength;
    one.warpStep = base.warpStep;
    one.warpMargin = base.warpMargin;
    one.epochHalfLength = base.epochHalfLength;
    one.pulsePositions = {0};
    one.pulseIntervals = {0};
    return one;
  }

  /// Epochs that the recording cuts, and rows between stretches, become 0: they have no part in the
  /// components.
  std::vector<CutEpoch> takeOut(RowMatrix& epochs) const {
    std::vector<CutEpoch> cutEpochs;
    for (size_t e = 0; e < epochs.nrOfRows(); ++e) {
      double* const row = epochs.row(e);
      double* const end = row + epochs.length();
      const RowPart inside = epochInside(base_, inside_[e], inside_[e + 1]);
      const bool isWhole = inside.begin == 0 && inside.end == epochs.length();
      if (isWhole && base_.isEpoch(e)) continue;
      if (base_.isEpoch(e) && inside.begin < inside.end)
        cutEpochs.push_back({e, inside, std::vector<double>(row, end)});
      std::fill(row, end, 0.0);
    }
    return cutEpochs;
  }

  /// What is left of the first beat's epoch, backwards from the beat; behind the epoch its last value stays.
  void writeInFront(size_t interval, const OuterBeat& outer, int64_t fadeLength,
                    const std::vector<double>& epoch) {
    const auto half = static_cast<size_t>(base_.epochHalfLength);
    const size_t last = beat_.size() - 1;
    for (size_t k = 0; k <= last; ++k) beat_[last - k] = epoch[half - std::min(k, half)];
    warpBack(interval);
    const auto pulse = static_cast<int64_t>(base_.start(interval) + base_.length(interval));
    for (int64_t d = 1; d < std::min(outer.reach, pulse + 1); ++d)
      put(pulse - d, fadeAt(d, outer.reach, fadeLength), samples_[samples_.size() - static_cast<size_t>(d)]);
  }

  void writeBehind(size_t interval, const OuterBeat& outer, int64_t fadeLength,
                   const std::vector<double>& epoch) {
    const auto half = static_cast<size_t>(base_.epochHalfLength);
    for (size_t k = 0; k < beat_.size(); ++k) beat_[k] = epoch[half + std::min(k, half)];
    warpBack(interval);
    const auto pulse = static_cast<int64_t>(base_.start(interval));
    for (int64_t d = 0; d < outer.reach; ++d)
      put(pulse + d, fadeAt(d, outer.reach, fadeLength), samples_[static_cast<size_t>(d)]);
  }

  /// The beat on the time base as samples of the interval.
  void warpBack(size_t interval) {
    outer_.pulseIntervals[0] = base_.length(interval);
    samples_.assign(static_cast<size_t>(base_.length(interval)), 0.0);
    writeBeatBack(outer_, 0, a_, beat_, samples_.data(), static_cast<int64_t>(samples_.size()));
  }

  void put(int64_t sample, double weight, double value) {
    if (sample >= 0 && sample < length_) series_[static_cast<size_t>(sample)] = weight * value;
  }

  const BeatTimeBase& base_;
  const WarpTable& table_;
  double a_;
  std::vector<double>& series_;
  int64_t length_;
  BeatTimeBase outer_;
  std::vector<double> beat_;
  std::vector<double> samples_;
  std::vector<RowPart> inside_; ///< of every interval
  PrincipalComponents model_;
};

} // namespace

void replaceByStretchEstimate(const BeatTimeBase& base, const std::vector<BeatStretch>& stretches,
                              int32_t fadeLength, double a, int nrOfComponents, std::vector<double>& series,
                              int64_t length) {
  const WarpTable table = makeWarpTable(a, base);
  StretchEstimate estimate(base, table, a, series, length);
  estimate.makeModel(nrOfComponents);
  estimate.write(stretches, fadeLength);
}

} // namespace emeg
