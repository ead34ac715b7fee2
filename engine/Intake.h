#pragma once

#include "dsp/BandlimitedDecimator.h"
#include "engine/Findings.h"
#include "engine/RecordingShape.h"
#include "engine/beats/HeartArtifact.h"
#include "engine/store/ChannelStore.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Takes a recording in, block after block: into the store as 32-bit floats, and the channels that show heart
/// beats also at a low rate.
class Intake {
public:
  /// `offset`: the store's sample at which the recording is put.
  Intake(const RecordingShape& shape, ChannelStore& store, int64_t offset, bool keepsHeartSeries,
         bool repairsSaturation);

  /// The next `count` time points, channel after channel.
  void add(int64_t count, std::span<const double> values);
  int64_t nrOfSamples() const { return taken_; }
  int64_t nrOfNotFinite() const { return notFinite_; }

  /// When all samples are there: replaces the saturated ones. Throws StoreError.
  std::vector<RepairedChannel> repair();

  /// The channels at the low rate; call once.
  HeartSeries heartSeries();

private:
  void addToSeries(size_t channel, std::span<const double> samples);
  std::vector<double>* seriesOf(size_t channel);

  const RecordingShape& shape_;
  ChannelStore& store_;
  const int64_t offset_;
  const bool repairsSaturation_;
  int64_t taken_ = 0;
  int64_t notFinite_ = 0;
  std::vector<int64_t> saturated_;               ///< per channel
  std::vector<int> pulseNumber_;                 ///< per channel: its number in the series, or -1
  int ecg_ = -1;                                 ///< the channel with the electrocardiogram
  std::vector<BandlimitedDecimator> decimators_; ///< per channel, empty without series
  HeartSeries series_;
  std::vector<float> asStored_;
  std::vector<double> finite_;
};

} // namespace emeg
