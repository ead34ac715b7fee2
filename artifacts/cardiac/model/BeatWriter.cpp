#include "artifacts/cardiac/model/BeatWriter.h"

#include "artifacts/cardiac/model/BeatReassembly.h"
#include "artifacts/cardiac/model/ResamplingKernels.h"
#include "artifacts/cardiac/model/WarpPart.h"

#include <algorithm>
#include <limits>

namespace emeg {

BeatWriter::BeatWriter(const BeatTimeBase& base, double a)
    : base_(base), a_(a), group_(std::numeric_limits<size_t>::max()) {}

void BeatWriter::solveGroupOf(size_t index) {
  group_ = index / nrOfLockstepEquations;
  WarpEquations front;
  WarpEquations back;
  int64_t mostInFront = 0;
  int64_t mostBehind = 0;
  for (size_t i = 0; i < nrOfLockstepEquations; ++i) {
    const size_t at = std::min(group_ * nrOfLockstepEquations + i, base_.nrOfIntervals() - 1);
    const double interval = base_.length(at);
    const int64_t end = lastSampleBeforeBend(base_, a_, interval);
    mostInFront = std::max(mostInFront, end + 1);
    mostBehind = std::max(mostBehind, static_cast<int64_t>(interval) - 1 - end);
    const WarpPart frontPart(a_, base_, interval);
    const WarpPart backPart(1 - a_, base_, interval);
    front.samples[i] = frontPart.samples;
    front.medianBends[i] = frontPart.medianBend;
    back.samples[i] = backPart.samples;
    back.medianBends[i] = backPart.medianBend;
  }
  frontRoots_.resize(static_cast<size_t>(mostInFront) * nrOfLockstepEquations);
  backRoots_.resize(static_cast<size_t>(mostBehind) * nrOfLockstepEquations);
  const ResamplingKernels& kernels = resamplingKernels();
  failed_ = kernels.solveWarps(front, 0, mostInFront, frontRoots_.data()) |
            kernels.solveWarps(back, 1, mostBehind, backRoots_.data());
}

void BeatWriter::write(size_t index, const std::vector<double>& beat, double* series, int64_t length) {
  if (index / nrOfLockstepEquations != group_) solveGroupOf(index);
  const size_t lane = index % nrOfLockstepEquations;
  const auto start = static_cast<int64_t>(base_.start(index));
  const double interval = base_.length(index);
  const auto nrOfSamples = static_cast<int64_t>(interval);
  if ((failed_ >> lane & 1) != 0 || start < 0 || start + nrOfSamples > length) {
    writeBeatBack(base_, index, a_, beat, series, length);
    return;
  }
  const double last = base_.modelLength - 1;
  const WarpPart front(a_, base_, interval);
  const WarpPart back(1 - a_, base_, interval);
  const int64_t end = lastSampleBeforeBend(base_, a_, interval);
  double* const samples = series + start;
  const double* root = frontRoots_.data() + lane;
  for (int64_t j = 0; j <= end; ++j, root += nrOfLockstepEquations)
    samples[j] = beatAt(beat, last * front.onTimeBase(*root));
  root = backRoots_.data() + lane;
  for (int64_t j = nrOfSamples - 1; j > end; --j, root += nrOfLockstepEquations)
    samples[j] = beatAt(beat, last * (1 - back.onTimeBase(*root)));
}

} // namespace emeg
