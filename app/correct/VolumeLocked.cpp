#include "app/correct/VolumeLocked.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <utility>

namespace emeg {

namespace {

constexpr double phasesPerSecond = 1000; // enough for lines up to 100 Hz
constexpr int64_t fewestPairs = 2;
constexpr double wholeVolume = 0.95; // of a volume's samples must be there

double medianOf(std::vector<float> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return static_cast<double>(*middle);
}

/// Powers of a waveform's harmonics; the cosines of a turn are computed once.
class Harmonics {
public:
  explicit Harmonics(std::vector<double> waveform) : waveform_(std::move(waveform)) {
    const double step = 2 * std::numbers::pi / static_cast<double>(waveform_.size());
    for (size_t i = 0; i < waveform_.size(); ++i) {
      const double angle = step * static_cast<double>(i);
      turn_.push_back({std::cos(angle), std::sin(angle)});
    }
  }

  /// Mean square of the sinusoid with `harmonic` periods (fewer than there are values) in the waveform.
  double powerOf(int64_t harmonic) const {
    const size_t n = waveform_.size();
    const auto step = static_cast<size_t>(harmonic);
    double re = 0;
    double im = 0;
    size_t at = 0;
    for (size_t i = 0; i < n; ++i) {
      re += waveform_[i] * turn_[at].cosine;
      im -= waveform_[i] * turn_[at].sine;
      at += step;
      if (at >= n) at -= n;
    }
    const auto length = static_cast<double>(n);
    return 2 * (re * re + im * im) / (length * length);
  }

private:
  struct Direction {
    double cosine, sine;
  };
  std::vector<double> waveform_;
  std::vector<Direction> turn_;
};

/// Which multiple of the slice frequency a multiple of the volume frequency belongs to; 0: to none.
int64_t sliceHarmonicAt(int64_t harmonic, const MRSequence& sequence) {
  // In data with pauses between volumes the slices' lines are spread over neighbours.
  const double slicesPerVolume = sequence.volumeDuration / sequence.sliceDuration;
  const double multiple = std::floor(static_cast<double>(harmonic) / slicesPerVolume + 0.5);
  const bool isNear = std::abs(static_cast<double>(harmonic) - multiple * slicesPerVolume) <= 1;
  return isNear ? static_cast<int64_t>(multiple) : 0;
}

/// Phases by which `later` lags behind `earlier`, both periodic.
double lagOf(const std::vector<double>& earlier, const std::vector<double>& later, int64_t longestLag) {
  const auto n = static_cast<int64_t>(earlier.size());
  const auto likeness = [&](int64_t lag) {
    double sum = 0;
    for (int64_t i = 0; i < n; ++i)
      sum += earlier[static_cast<size_t>(i)] * later[static_cast<size_t>(((i + lag) % n + n) % n)];
    return sum;
  };
  int64_t best = 0;
  double highest = likeness(0);
  for (int64_t lag = -longestLag; lag <= longestLag; ++lag) {
    const double value = likeness(lag);
    if (value <= highest) continue;
    highest = value;
    best = lag;
  }
  const double before = likeness(best - 1);
  const double after = likeness(best + 1);
  const double curvature = before - 2 * highest + after;
  return static_cast<double>(best) + (curvature < 0 ? 0.5 * (before - after) / curvature : 0);
}

void subtractMean(std::vector<double>& values) {
  double mean = 0;
  for (const double value : values) mean += value / static_cast<double>(values.size());
  for (double& value : values) value -= mean;
}

} // namespace

double VolumeLockedPart::artifact() const {
  const double lines = sliceHarmonics * sliceHarmonics + volumeHarmonics * volumeHarmonics;
  return std::sqrt(std::max(lines - background * background, 0.0));
}

VolumeAverage::VolumeAverage(const MRSequence& sequence, double samplingFrequency, int nrOfChannels)
    : sequence_(sequence), samplingFrequency_(samplingFrequency), nrOfPairs_(sequence.nrOfVolumes / 2),
      channels_(static_cast<size_t>(nrOfChannels)), currentVolume_(std::numeric_limits<int64_t>::min()) {
  // As many phases as samples, so that a volume of whole samples meets every phase equally often.
  const double thinning = std::max(std::floor(samplingFrequency / phasesPerSecond), 1.0);
  const double perSecond = samplingFrequency / thinning;
  nrOfPhases_ = std::max(static_cast<int>(std::lround(2 * sequence.volumeDuration * perSecond)), 1);
  nrOfPartPhases_ = std::max(static_cast<int>(std::lround(sequence.volumeDuration * samplingFrequency)), 1);
  counts_.assign(static_cast<size_t>(nrOfPhases_), 0);
  partCounts_.assign(static_cast<size_t>(nrOfPartPhases_) * nrOfParts, 0);
  for (Channel& channel : channels_) channel.sums.assign(static_cast<size_t>(nrOfPhases_), 0);
  if (!channels_.empty()) channels_[0].partSums.assign(static_cast<size_t>(nrOfPartPhases_) * nrOfParts, 0);
}

void VolumeAverage::endVolume() {
  const double whole = wholeVolume * sequence_.volumeDuration * samplingFrequency_;
  if (static_cast<double>(samplesInVolume_) >= whole) {
    const bool isCounted = currentVolume_ >= 0 && currentVolume_ < sequence_.nrOfVolumes;
    const bool isOutside = !isCounted && !isCorrected(currentVolume_);
    for (Channel& channel : channels_) {
      const auto roughness = static_cast<float>(channel.steps / static_cast<double>(samplesInVolume_));
      if (isCounted) channel.peakToPeaks.push_back(static_cast<float>(channel.highest - channel.lowest));
      if (isCounted) channel.roughnesses.push_back(roughness);
      if (isOutside) channel.outside.push_back(roughness);
    }
  }
  samplesInVolume_ = 0;
}

/// What overlaps with a corrected stretch shows its artifact.
bool VolumeAverage::isCorrected(int64_t volume) const {
  const double begin = sequence_.onsetOf(volume, 0, 1);
  const double end = begin + sequence_.volumeDuration;
  return std::any_of(correctedStretches_.begin(), correctedStretches_.end(),
                     [&](const auto& stretch) { return stretch.first < end && stretch.second > begin; });
}

void VolumeAverage::add(int64_t count, std::span<const double> values) {
  for (int64_t first = 0; first < count;) {
    const int64_t volume = volumeAt(position_);
    if (volume != currentVolume_) {
      endVolume();
      currentVolume_ = volume;
    }
    int64_t end = first + 1;
    while (end < count && volumeAt(position_ + end - first) == volume) ++end;
    addStretch(first, end, count, values);
    position_ += end - first;
    samplesInVolume_ += end - first;
    first = end;
  }
}

double VolumeAverage::inVolumes(int64_t position) const {
  return (static_cast<double>(position) / samplingFrequency_ - sequence_.firstTriggerTime) /
         sequence_.volumeDuration;
}

int64_t VolumeAverage::volumeAt(int64_t position) const {
  return static_cast<int64_t>(std::floor(inVolumes(position)));
}

/// Time points first ... end - 1 of a block of `count`, all of the current volume.
void VolumeAverage::addStretch(int64_t first, int64_t end, int64_t count, std::span<const double> values) {
  const bool isPaired = currentVolume_ >= 0 && currentVolume_ < 2 * nrOfPairs_;
  bins_.clear();
  partBins_.clear();
  for (int64_t t = first; isPaired && t < end; ++t) {
    const double inVolume = inVolumes(position_ + t - first) - static_cast<double>(currentVolume_);
    const double inPair = (inVolume + static_cast<double>(currentVolume_ % 2)) / 2;
    const auto bin = static_cast<size_t>(std::min(static_cast<int>(inPair * nrOfPhases_), nrOfPhases_ - 1));
    ++counts_[bin];
    bins_.push_back(bin);

    const int64_t part = currentVolume_ * nrOfParts / (2 * nrOfPairs_);
    const double place = inVolume * nrOfPartPhases_;
    const auto partPhase = std::min(static_cast<int64_t>(place), int64_t{nrOfPartPhases_ - 1});
    const auto partBin = static_cast<size_t>(part * nrOfPartPhases_ + partPhase);
    partOffsets_[static_cast<size_t>(part)] += place - static_cast<double>(partPhase);
    ++partLengths_[static_cast<size_t>(part)];
    ++partCounts_[partBin];
    partBins_.push_back(partBin);
  }
  for (size_t c = 0; c < channels_.size(); ++c) {
    Channel& channel = channels_[c];
    const double* const from = values.data() + static_cast<int64_t>(c) * count + first;
    for (size_t i = 0; i < static_cast<size_t>(end - first); ++i) {
      const double value = std::isfinite(from[i]) ? from[i] : 0;
      const bool isFirst = samplesInVolume_ == 0 && i == 0;
      channel.lowest = isFirst ? value : std::min(channel.lowest, value);
      channel.highest = isFirst ? value : std::max(channel.highest, value);
      channel.steps = isFirst ? 0 : channel.steps + std::abs(value - channel.last);
      channel.last = value;
      if (!isPaired) continue;
      channel.sums[bins_[i]] += value;
      if (!channel.partSums.empty()) channel.partSums[partBins_[i]] += value;
    }
  }
}

bool VolumeAverage::isMeasurable() const {
  return nrOfPairs_ >= fewestPairs &&
         static_cast<double>(position_) / samplingFrequency_ >=
             sequence_.firstTriggerTime + 2 * static_cast<double>(fewestPairs) * sequence_.volumeDuration;
}

std::vector<double> VolumeAverage::averageOf(const Channel& channel) const {
  std::vector<double> average(channel.sums.size());
  double last = 0;
  for (size_t i = 0; i < average.size(); ++i) {
    if (counts_[i] > 0) last = channel.sums[i] / static_cast<double>(counts_[i]);
    average[i] = last;
  }
  return average;
}

VolumeLockedPart VolumeAverage::partOf(int channel, const FrequencyRange& range) const {
  VolumeLockedPart part;
  const Harmonics average(averageOf(channels_[static_cast<size_t>(channel)]));
  const double volumeDuration = sequence_.volumeDuration;
  const auto first = std::max(static_cast<int64_t>(std::ceil(range.lowest * volumeDuration)), int64_t{1});
  const auto last = std::min(static_cast<int64_t>(std::floor(range.highest * volumeDuration)),
                             (int64_t{nrOfPhases_} - 2) / 4);
  double slices = 0;
  double others = 0;
  double background = 0;
  struct Group {
    double lines = 0, background = 0;
  };
  std::map<int64_t, Group> groups; // per multiple of the slice frequency
  for (int64_t harmonic = first; harmonic <= last; ++harmonic) {
    const double line = average.powerOf(2 * harmonic);
    const double beside = 0.5 * (average.powerOf(2 * harmonic - 1) + average.powerOf(2 * harmonic + 1));
    background += beside;
    const int64_t multiple = sliceHarmonicAt(harmonic, sequence_);
    (multiple > 0 ? slices : others) += line;
    if (multiple == 0) continue;
    groups[multiple].lines += line;
    groups[multiple].background += beside;
  }
  part.sliceHarmonics = std::sqrt(slices);
  part.volumeHarmonics = std::sqrt(others);
  part.background = std::sqrt(background);
  part.lineToBackground = background > 0 ? (slices + others) / background : 0;
  std::vector<float> ratios;
  ratios.reserve(groups.size());
  for (const auto& [multiple, group] : groups)
    ratios.push_back(group.background > 0 ? static_cast<float>(group.lines / group.background) : 0);
  part.medianSliceToBackground = medianOf(std::move(ratios));
  return part;
}

double VolumeAverage::medianImagingArtifact(int channel) const {
  return medianOf(channels_[static_cast<size_t>(channel)].peakToPeaks);
}

double VolumeAverage::artifactSecondsOutside(int channel) const {
  const Channel& c = channels_[static_cast<size_t>(channel)];
  const double half = medianOf(c.roughnesses) / 2;
  const auto loud = std::count_if(c.outside.begin(), c.outside.end(),
                                  [half](float value) { return static_cast<double>(value) > half; });
  return half > 0 ? static_cast<double>(loud) * sequence_.volumeDuration : 0;
}

double VolumeAverage::drift(int channel) const {
  const Channel& c = channels_[static_cast<size_t>(channel)];
  if (c.partSums.empty() || nrOfPairs_ < nrOfParts) return 0;
  std::vector<std::vector<double>> parts;
  for (int part = 0; part < nrOfParts; ++part) {
    std::vector<double> average(static_cast<size_t>(nrOfPartPhases_));
    double last = 0;
    for (size_t i = 0; i < average.size(); ++i) {
      const size_t bin = static_cast<size_t>(part * nrOfPartPhases_) + i;
      if (partCounts_[bin] > 0) last = c.partSums[bin] / static_cast<double>(partCounts_[bin]);
      average[i] = last;
    }
    subtractMean(average);
    parts.push_back(std::move(average));
  }
  constexpr double longestDrift = 0.02; // seconds
  const auto longestLag = static_cast<int64_t>(longestDrift * samplingFrequency_) + 1;
  const double phase = sequence_.volumeDuration / nrOfPartPhases_;
  // Samples of different parts may lie at different places within a phase.
  const auto offsetOf = [this](size_t part) {
    return partOffsets_[part] / static_cast<double>(std::max<int64_t>(partLengths_[part], 1));
  };
  const double middle = (lagOf(parts[0], parts[1], longestLag) + offsetOf(1) - offsetOf(0)) * phase;
  const double end = (lagOf(parts[0], parts[2], longestLag) + offsetOf(2) - offsetOf(0)) * phase;
  return std::abs(middle) > std::abs(end) ? middle : end;
}

} // namespace emeg
