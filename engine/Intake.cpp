#include "engine/Intake.h"

#include "engine/SaturatedChannels.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {

namespace {

/// Beyond the range of 32-bit floats there is nothing that an electrode could pick up.
bool isUsable(double value) {
  return std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max());
}

} // namespace

Intake::Intake(const RecordingShape& shape, ChannelStore& store, int64_t offset, bool keepsHeartSeries,
               bool repairsSaturation)
    : shape_(shape), store_(store), offset_(offset), repairsSaturation_(repairsSaturation),
      saturated_(shape.roles.size(), 0), pulseNumber_(shape.roles.size(), -1) {
  if (!keepsHeartSeries) return;
  int nrOfPulseChannels = 0;
  for (size_t c = 0; c < shape.roles.size(); ++c) {
    const ChannelRole& role = shape.roles[c];
    if (role.passesUnchanged) continue;
    if (role.takesPartInPulses)
      pulseNumber_[c] = nrOfPulseChannels++;
    else if (role.showsHeartBeats)
      ecg_ = static_cast<int>(c);
  }
  decimators_.assign(shape.roles.size(), BandlimitedDecimator(shape.samplingFrequency));
  series_.channels.resize(static_cast<size_t>(nrOfPulseChannels));
  series_.rate = decimators_.front().outputRate();
}

std::vector<double>* Intake::seriesOf(size_t channel) {
  if (pulseNumber_[channel] >= 0) return &series_.channels[static_cast<size_t>(pulseNumber_[channel])];
  return static_cast<int>(channel) == ecg_ ? &series_.ecg : nullptr;
}

void Intake::add(int64_t count, std::span<const double> values) {
  const auto length = static_cast<size_t>(count);
  asStored_.resize(length);
  finite_.resize(length);
  for (size_t c = 0; c < shape_.roles.size(); ++c) {
    const std::span<const double> samples = values.subspan(c * length, length);
    for (size_t i = 0; i < length; ++i) {
      finite_[i] = isUsable(samples[i]) ? samples[i] : 0;
      if (!isUsable(samples[i]) && !shape_.roles[c].passesUnchanged) ++notFinite_;
      asStored_[i] = static_cast<float>(finite_[i]);
    }
    store_.write(static_cast<int>(c), offset_ + taken_, asStored_);
    if (seriesOf(c) != nullptr) decimators_[c].add(finite_, *seriesOf(c));
    if (repairsSaturation_ && c < shape_.integers.size() && shape_.integers[c] &&
        !shape_.roles[c].passesUnchanged)
      saturated_[c] += nrOfSaturated(finite_, *shape_.integers[c]);
  }
  taken_ += count;
}

std::vector<RepairedChannel> Intake::repair() {
  std::vector<RepairedChannel> repaired;
  for (size_t c = 0; c < saturated_.size(); ++c) {
    if (saturated_[c] == 0) continue;
    std::vector<float> stored(static_cast<size_t>(taken_));
    store_.read(static_cast<int>(c), offset_, stored);
    std::vector<double> values(stored.begin(), stored.end());
    RepairedChannel result = repairSaturated(values, *shape_.integers[c]);
    result.channel = static_cast<int>(c);
    repaired.push_back(result);
    if (result.nrOfRepaired == 0) continue;
    std::copy(values.begin(), values.end(), stored.begin());
    store_.write(static_cast<int>(c), offset_, stored);
    if (seriesOf(c) == nullptr) continue;
    // The low rate saw what was saturated.
    seriesOf(c)->clear();
    decimators_[c] = BandlimitedDecimator(shape_.samplingFrequency);
    decimators_[c].add(values, *seriesOf(c));
  }
  return repaired;
}

HeartSeries Intake::heartSeries() {
  for (size_t c = 0; c < decimators_.size(); ++c)
    if (seriesOf(c) != nullptr) decimators_[c].finish(*seriesOf(c));
  decimators_.clear();
  const std::vector<double>& longest = series_.channels.empty() ? series_.ecg : series_.channels.front();
  series_.length = static_cast<int64_t>(longest.size());
  return std::move(series_);
}

} // namespace emeg
