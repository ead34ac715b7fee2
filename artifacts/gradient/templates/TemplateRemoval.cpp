#include "artifacts/gradient/templates/TemplateRemoval.h"

#include "artifacts/gradient/templates/TemplateKernels.h"
#include "artifacts/gradient/templates/TemplateWindow.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace emeg {

namespace {

int64_t wholeNumber(double value) {
  constexpr double limit = 4e18;
  return static_cast<int64_t>(std::clamp(value, -limit, limit));
}

int64_t floorOf(double value) {
  return wholeNumber(std::floor(value));
}
int64_t ceilOf(double value) {
  return wholeNumber(std::ceil(value));
}

/// Slices from one to the next that is averaged with it.
int64_t sliceStrideOf(const MRSequence& sequence) {
  return std::max<int64_t>(ceilOf(0.35 / sequence.sliceDuration), 1);
}

/// One channel's templates. Indices: v, s the current volume and slice, v2, s2 a neighbour's.
class TemplateRemoval {
public:
  TemplateRemoval(const SplinedSignal& signal, const MRSequence& sequence, double samplingFrequency,
                  VolumeRange range, double* artifactEstimate)
      : signal_(signal), sequence_(sequence), fs_(samplingFrequency), artifactEstimate_(artifactEstimate),
        volumes_(sequence.nrOfVolumes), slices_(sequence.nrOfSlicesPerVolume),
        first_(std::max<int64_t>(range.first, 0)), end_(std::min<int64_t>(range.end, volumes_)) {
    const double windowSeconds = sequence.windowHalfLength;
    gaussianWidth_ = sequence.windowHalfLength > 0 ? windowSeconds * fs_ : 1.0;
    sliceReach_ = ceilOf(2 * windowSeconds * fs_ / (fs_ * sequence.sliceDuration));
    volumeReach_ = volumes_ >= 2 ? ceilOf(2 * windowSeconds * fs_ / (fs_ * sequence.volumeDuration)) : 0;
    sliceStride_ = sliceStrideOf(sequence);
    sliceRamp_ = ceilOf(fs_ * 0.33333 * sequence.sliceDuration);
    volumeRamp_ = std::max<int64_t>(
        ceilOf((sequence.volumeDuration - (static_cast<double>(slices_) - 0.5) * sequence.sliceDuration) *
               fs_),
        0);
  }

  void addSliceTemplates() {
    for (int64_t v = first_; v < end_; ++v)
      for (int64_t s = 1; s <= slices_ - 2; ++s) addInnerSlice(v, s);
    for (int64_t v = first_; v < end_; ++v) {
      addEdgeSlice(v, 0, firstSliceWindow(v));
      if (slices_ > 1) addEdgeSlice(v, slices_ - 1, sliceWindow(v, slices_ - 1));
      addSlotBehindLastSlice(v);
    }
  }

  void addVolumeTemplates() {
    for (int64_t v = first_; v < end_; ++v) {
      const double onset = onsetOf(v, 0);
      const TemplateWindow window{floorOf(onset), floorOf(onset + fs_ * sequence_.volumeDuration),
                                  volumeRamp_};
      begin(onset, window);
      const int64_t from = std::max<int64_t>(v - volumeReach_, 1);
      const int64_t to = std::min(v + volumeReach_, volumes_ - 2);
      for (int64_t v2 = from; v2 <= to; ++v2)
        if (v2 != v) addNeighbour(onsetOf(v2, 0));
      subtractInto([&](int64_t p) { return window.weightAt(p); });
    }
  }

private:
  double onsetOf(int64_t volume, int64_t slice) const { return sequence_.onsetOf(volume, slice, fs_); }
  int64_t firstVolumeInReach(int64_t v) const { return std::max<int64_t>(v - volumeReach_, 0); }
  int64_t lastVolumeInReach(int64_t v) const { return std::min(v + volumeReach_, volumes_ - 1); }

  TemplateWindow sliceWindow(int64_t v, int64_t s) const {
    const double onset = onsetOf(v, s);
    return {floorOf(onset), floorOf(onset + fs_ * sequence_.sliceDuration), sliceRamp_};
  }

  TemplateWindow firstSliceWindow(int64_t v) const {
    TemplateWindow window = sliceWindow(v, 0);
    --window.end;
    return window;
  }

  /// Neighbours: every sliceStride_-th inner slice around the current one, in all volumes within reach.
  void addInnerSlice(int64_t v, int64_t s) {
    const TemplateWindow window = sliceWindow(v, s);
    begin(onsetOf(v, s), window);
    const int64_t below = std::min(sliceReach_, s - 1) / sliceStride_;
    const int64_t above = std::min(sliceReach_, slices_ - 2 - s) / sliceStride_;
    for (int64_t v2 = firstVolumeInReach(v); v2 <= lastVolumeInReach(v); ++v2)
      for (int64_t s2 = s - below * sliceStride_; s2 <= s + above * sliceStride_; s2 += sliceStride_)
        if (v2 != v || s2 != s) addNeighbour(onsetOf(v2, s2));
    subtractInto([&](int64_t p) { return window.weightAt(p); });
  }

  /// The first and the last slice differ from the others: their neighbours are the same slice of other
  /// volumes.
  void addEdgeSlice(int64_t v, int64_t s, const TemplateWindow& window) {
    beginEdgeSlice(v, s, window);
    subtractInto([&](int64_t p) { return window.weightAt(p); });
  }

  /// The stretch behind a volume's last slice, up to one slice duration or to the next volume. Where the next
  /// volume comes first, its weight is what the last slice's and the next first slice's templates leave.
  void addSlotBehindLastSlice(int64_t v) {
    TemplateWindow slot = sliceWindow(v, slices_);
    const int64_t nextVolume = floorOf(onsetOf(v + 1, 0));
    if (nextVolume >= slot.end) {
      addEdgeSlice(v, slices_, slot);
      return;
    }
    if (nextVolume <= slot.onset) return;
    slot.end = nextVolume;
    const TemplateWindow last = slices_ > 1 ? sliceWindow(v, slices_ - 1) : firstSliceWindow(v);
    const TemplateWindow next = firstSliceWindow(v + 1);
    beginEdgeSlice(v, slices_, slot);
    subtractInto([&](int64_t p) { return std::max(0.0, 1 - last.weightAt(p) - next.weightAt(p)); });
  }

  void beginEdgeSlice(int64_t v, int64_t s, const TemplateWindow& window) {
    begin(onsetOf(v, s), window);
    for (int64_t v2 = firstVolumeInReach(v); v2 <= lastVolumeInReach(v); ++v2)
      if (v2 != v) addNeighbour(onsetOf(v2, s));
  }

  void begin(double onset, const TemplateWindow& window) {
    onset_ = onset;
    window_ = window;
    weightSum_ = 0;
    segment_.assign(static_cast<size_t>(std::max<int64_t>(window.end - window.first() + 1, 0)), 0.0);
  }

  /// Adds the neighbour's waveform, shifted so that its onset falls exactly on the current one.
  void addNeighbour(double neighbourOnset) {
    const double distance = (neighbourOnset - onset_) / gaussianWidth_;
    const double weight = std::exp(-(distance * distance));
    weightSum_ += weight;
    const double position = neighbourOnset + (static_cast<double>(window_.onset) - onset_);
    const double whole = std::floor(position);
    addShiftedSpline(signal_, wholeNumber(whole) - window_.ramp, position - whole, weight,
                     static_cast<int64_t>(segment_.size()), segment_.data());
  }

  /// Ends the template: the weighted mean goes into the estimate. Without neighbours, or where they are so
  /// far away that their weights vanish, there is no template.
  template <typename Weight>
  void subtractInto(const Weight& weightAt) {
    if (!(weightSum_ >= std::numeric_limits<double>::min())) return;
    const double scale = 1 / weightSum_;
    const int64_t from = std::max<int64_t>(window_.first(), 0);
    const int64_t to = std::min(window_.end, signal_.nrOfSamples - 1);
    for (int64_t p = from; p <= to; ++p)
      artifactEstimate_[p] += weightAt(p) * (segment_[static_cast<size_t>(p - window_.first())] * scale);
  }

  const SplinedSignal& signal_;
  const MRSequence& sequence_;
  const double fs_;
  double* const artifactEstimate_;
  const int64_t volumes_;
  const int64_t slices_;
  const int64_t first_, end_; // volumes whose templates are made
  double gaussianWidth_ = 1;  // samples
  int64_t sliceReach_ = 0;
  int64_t volumeReach_ = 0;
  int64_t sliceStride_ = 1;
  int64_t sliceRamp_ = 0;
  int64_t volumeRamp_ = 0;

  // The template being built.
  double onset_ = 0;
  TemplateWindow window_;
  double weightSum_ = 0;
  std::vector<double> segment_;
};

} // namespace

void estimateGradientArtifact(const SplinedSignal& signal, const MRSequence& sequence,
                              double samplingFrequency, bool volumeWise, double* artifactEstimate) {
  estimateGradientArtifact(signal, sequence, samplingFrequency, volumeWise, {0, sequence.nrOfVolumes},
                           artifactEstimate);
}

void estimateGradientArtifact(const SplinedSignal& signal, const MRSequence& sequence,
                              double samplingFrequency, bool volumeWise, VolumeRange volumes,
                              double* artifactEstimate) {
  TemplateRemoval removal(signal, sequence, samplingFrequency, volumes, artifactEstimate);
  if (volumeWise) {
    removal.addVolumeTemplates();
  } else {
    removal.addSliceTemplates();
  }
}

double windowSecondsOf(const MRSequence& sequence, int slices, bool volumeWise) {
  const double secondsPerSlice = sequence.volumeDuration / sequence.nrOfSlicesPerVolume;
  const double neighbours = volumeWise
                                ? sequence.volumeDuration
                                : static_cast<double>(sliceStrideOf(sequence)) * sequence.sliceDuration;
  // A volume's first and last slice are averaged with those of other volumes: their weights must not vanish.
  constexpr double leastOfVolume = 0.04;
  return std::max(std::hypot(slices * secondsPerSlice, neighbours), leastOfVolume * sequence.volumeDuration);
}

double templateReachOf(const MRSequence& sequence) {
  return 2 * sequence.windowHalfLength + 3 * sequence.volumeDuration;
}

} // namespace emeg
