#pragma once

#include "dsp/FFTWorkspace.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The buffers of one thread: one channel, or a stretch of it, on its way through the stages. They grow to
/// what is asked for and are used again.
class Workspace {
public:
  FFTWorkspace fft;
  std::vector<float> chunkBuffer; ///< samples as the store holds them; position 0 is the first processed one

  /// The channel being corrected, with one spare value in front.
  double* channelSignal() { return channelSignal_.data() + 1; }
  void allocateChannelSignal(int64_t length) { channelSignal_.assign(static_cast<size_t>(length) + 1, 0.0); }

  std::vector<double> splineScratch, splineB, splineC, splineD;
  std::vector<double> artifactEstimate;   ///< sum of the gradient templates
  std::vector<double> referenceOfStretch; ///< sum of the channels of the reference, per output

private:
  std::vector<double> channelSignal_;
};

} // namespace emeg
