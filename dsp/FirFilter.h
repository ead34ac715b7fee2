#pragma once

#include "dsp/BlockFilter.h"
#include "dsp/RecordingStretch.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// A symmetric filter of finite length, applied with its delay taken out (zero phase) to a recording that is
/// given stretch by stretch. Beyond the recording's ends the signal continues as RecordingStretch says.
///
/// Filters of up to longestDirect taps are summed sample by sample; longer ones go through transforms of
/// blocks that lie at fixed places of the recording (multiples of blockLength() from sample 0). Either way an
/// output has the same bits however the recording is cut into stretches. A sample that is not a number spoils
/// the outputs that it reaches: halfLength() to both sides, or all of the blocks that contain it. Filters
/// with blocks follow the rules of dsp/RealFFT.h on transforms at the same time; others can be used by many
/// threads.
///
/// Cost for n outputs and t taps: n t multiplications, or n log t with 2 to 4 t doubles for a block and half
/// as many for the response. 1.65 million taps (0.01 Hz at 5 kHz): blocks of 2^22 samples, 48 MB beside the
/// transforms' tables, and 2.5 million outputs per block.
class FirFilter {
public:
  static constexpr int64_t longestDirect = 128;

  /// `taps`: symmetric and odd in number, all of them finite; otherwise std::invalid_argument.
  explicit FirFilter(std::vector<double> taps);

  const std::vector<double>& taps() const { return taps_; }

  /// Samples on each side of an output that it is made of.
  int64_t halfLength() const { return static_cast<int64_t>(taps_.size()) / 2; }

  /// Outputs are made in blocks of so many, counted from the recording's first sample; 1 without blocks.
  /// Stretches that begin and end at multiples do no work twice.
  int64_t blockLength() const { return isDirect() ? 1 : blocks_.hop(); }

  /// The positions that the input must hold for `outputs`: those of whole blocks and halfLength() on each
  /// side, within a recording of `recordingLength` samples.
  PositionRange inputFor(PositionRange outputs, int64_t recordingLength) const;

  /// The filtered samples at positions `outputs` (in 0 ... in.recordingLength) to `out`. `in` holds at least
  /// inputFor(outputs, in.recordingLength). `out` must not overlap the input. std::invalid_argument if
  /// something is missing.
  void apply(const RecordingStretch& in, PositionRange outputs, std::span<double> out) const;

  /// A whole recording at once; nothing becomes nothing.
  std::vector<double> apply(std::span<const double> recording) const;

private:
  bool isDirect() const { return static_cast<int64_t>(taps_.size()) <= longestDirect; }
  void applyDirectly(const RecordingStretch& in, PositionRange outputs, std::span<double> out) const;
  void applyInBlocks(const RecordingStretch& in, PositionRange outputs, std::span<double> out) const;

  std::vector<double> taps_;
  BlockFilter blocks_;
};

} // namespace emeg
