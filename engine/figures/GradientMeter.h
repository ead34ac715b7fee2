#pragma once

#include "engine/figures/ChannelQuality.h"
#include "engine/figures/FrequencyRange.h"
#include "engine/figures/VolumeAverage.h"
#include "engine/figures/WelchSpectrum.h"
#include "engine/timing/FoundScan.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace emeg {

/// What is known of a correction before its first sample.
struct MeteredCorrection {
  std::vector<FoundScan> scans;
  int nrOfChannels = 0;
  std::vector<bool> showsScan;       ///< per channel: whether the scanner's timing could be looked for in it
  double samplingFrequency = 0;      ///< Hz, before the correction
  double samplingFrequencyAfter = 0; ///< any ratio to the one before
  int64_t nrOfTimePoints = 0;
  int64_t nrOfTimePointsAfter = 0;
  double highPass = 0, lowPass = 0; ///< Hz, applied by the correction; 0: none
  double unscale = 1;               ///< takes corrected samples back to microvolts
};

/// Compares the scans of a recording with their correction while the correction goes on: every channel's
/// samples pass once before it and once after it, in order, in stretches of any length, which change no bit
/// of the result. Different channels may be fed by different threads at the same time; one channel, before
/// and after, by one thread at a time.
///
/// Memory: that of VolumeAverage and WelchSpectrum, twice per channel, within the scan that is being passed
/// (5 kHz and 2 s volumes, corrected to the same rate: about 0.6 MB per channel); behind it and before it
/// some 50 KB per scan, channel and hour. Shared by all channels: about 1 MB per scan at that rate.
class GradientMeter {
public:
  explicit GradientMeter(MeteredCorrection correction);
  GradientMeter(const GradientMeter&) = delete;
  GradientMeter& operator=(const GradientMeter&) = delete;

  /// The channel's next samples, uncorrected (microvolts) or corrected (the correction's unit). Throws
  /// std::out_of_range for a channel that is not there and std::length_error for more samples than announced.
  void addBefore(int channel, std::span<const double> samples, FigureWorkspace& workspace);
  void addAfter(int channel, std::span<const double> samples, FigureWorkspace& workspace);

  /// One per scan, once all samples were added; nothing where the scan is too short to tell (fewer than four
  /// volumes). Throws std::logic_error when samples are missing.
  std::vector<std::optional<QualityFigures>> figures() const;

private:
  /// One scan at one of both rates.
  struct Side {
    VolumeGrid grid;
    WelchWindows windows;
  };
  struct Scan {
    FrequencyRange range;
    Side before, after;
    bool isMeasurable() const { return before.grid.isMeasurable() && after.grid.isMeasurable(); }
  };
  struct Accumulators {
    VolumeAverage average;
    WelchSpectrum spectrum;
  };
  struct Stream {
    std::vector<Accumulators> scans; ///< the measurable ones
    int64_t nrOfSamples = 0;
  };
  struct Channel {
    Stream before, after;
  };

  FrequencyRange comparedRange() const;
  Side sideOf(const FoundScan& scan, double samplingFrequency, int64_t nrOfTimePoints) const;
  static void add(Stream& stream, int64_t announced, std::span<const double> samples,
                  FigureWorkspace& workspace);
  ChannelQuality qualityOf(const Scan& scan, const Accumulators& before, const Accumulators& after) const;
  QualityFigures figuresOf(const Scan& scan, size_t measurable) const;

  const MeteredCorrection correction_;
  std::vector<Scan> scans_; ///< never changes: accumulators point into it
  std::vector<Channel> channels_;
};

} // namespace emeg
