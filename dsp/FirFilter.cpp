#include "dsp/FirFilter.h"

#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace emeg {

namespace {

void checkTaps(const std::vector<double>& taps) {
  if (taps.size() % 2 == 0)
    throw std::invalid_argument("A filter without delay needs an odd number of taps.");
  for (std::size_t i = 0; i < taps.size(); ++i) {
    if (!std::isfinite(taps[i])) throw std::invalid_argument("A filter's taps must be finite numbers.");
    if (taps[i] != taps[taps.size() - 1 - i])
      throw std::invalid_argument("A filter without delay needs symmetric taps.");
  }
}

} // namespace

FirFilter::FirFilter(std::vector<double> taps) : taps_(std::move(taps)) {
  checkTaps(taps_);
  if (!isDirect()) blocks_ = BlockFilter(taps_);
}

PositionRange FirFilter::inputFor(PositionRange outputs, int64_t recordingLength) const {
  outputs.end = std::min(outputs.end, recordingLength);
  if (outputs.begin >= outputs.end) return {};
  const int64_t block = blockLength();
  const int64_t firstBlock = outputs.begin / block;
  const int64_t lastBlock = (outputs.end - 1) / block;
  return withContext({firstBlock * block, (lastBlock + 1) * block}, halfLength(), recordingLength);
}

void FirFilter::apply(const RecordingStretch& in, PositionRange outputs, std::span<double> out) const {
  checkStretch(in);
  checkOutputs(outputs, in.recordingLength, out.size());
  if (out.empty()) return;
  if (isDirect())
    applyDirectly(in, outputs, out);
  else
    applyInBlocks(in, outputs, out);
}

void FirFilter::applyDirectly(const RecordingStretch& in, PositionRange outputs,
                              std::span<double> out) const {
  constexpr int64_t outputsAtOnce = 4096;
  const auto taps = static_cast<int64_t>(taps_.size());
  std::vector<double> samples(static_cast<std::size_t>(std::min(outputs.length(), outputsAtOnce) + taps - 1));
  for (int64_t p = outputs.begin; p < outputs.end; p += outputsAtOnce) {
    const int64_t count = std::min(outputsAtOnce, outputs.end - p);
    const std::span<double> needed = std::span(samples).first(static_cast<std::size_t>(count + taps - 1));
    copyContinued(in, p - halfLength(), needed);
    vectorKernels().slidingDot(needed.data(), taps_.data(), taps, count, out.data() + (p - outputs.begin));
  }
}

void FirFilter::applyInBlocks(const RecordingStretch& in, PositionRange outputs,
                              std::span<double> out) const {
  FFTWorkspace workspace; // small beside the block
  const int64_t hop = blocks_.hop();
  const int64_t half = halfLength();
  std::vector<double> block(static_cast<std::size_t>(blocks_.blockLength()));
  for (int64_t blockBegin = outputs.begin / hop * hop; blockBegin < outputs.end; blockBegin += hop) {
    // Samples that reach no output of the recording would only cost digits: 0 in their place.
    const int64_t needed = std::min(hop, in.recordingLength - blockBegin) + 2 * half;
    copyContinued(in, blockBegin - half, std::span(block).first(static_cast<std::size_t>(needed)));
    std::fill(block.begin() + needed, block.end(), 0.0);
    blocks_.apply(block, workspace);
    const int64_t begin = std::max(blockBegin, outputs.begin);
    const int64_t end = std::min(blockBegin + hop, outputs.end);
    std::copy_n(block.begin() + (begin - blockBegin + half), end - begin,
                out.begin() + (begin - outputs.begin));
  }
}

std::vector<double> FirFilter::apply(std::span<const double> recording) const {
  std::vector<double> filtered(recording.size());
  const RecordingStretch whole = wholeRecording(recording);
  apply(whole, whole.positions(), filtered);
  return filtered;
}

} // namespace emeg
