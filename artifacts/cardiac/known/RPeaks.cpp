#include "artifacts/cardiac/known/RPeaks.h"

#include "artifacts/cardiac/series/Energy.h"
#include "artifacts/cardiac/series/SpacedPeaks.h"
#include "artifacts/cardiac/series/SteadyLines.h"
#include "artifacts/cardiac/series/ZeroPhaseBand.h"
#include "dsp/Statistics.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace emeg {

namespace {

constexpr double qrsLowHz = 8;
constexpr double qrsHighHz = 20;
constexpr double complexLowHz = 6; // of the average complex: wider, so that a single line counts less
constexpr double complexHighHz = 32;
constexpr double qrsSeconds = 0.1;
constexpr double complexHalfSeconds = 0.12;
constexpr double alignmentSeconds = 0.08;
constexpr double refractorySeconds = 0.25;
constexpr double pieceSeconds = 2;   // holds a beat of the slowest heart
constexpr double spikeSeconds = 0.1; // on either side of what is no beat
constexpr double shortestRecording = 3;

constexpr double noiseBelow = 0.5;         // of the usual height
constexpr double threshold = 0.45;         // between the height of noise and the usual height
constexpr double artefact = 4;             // of the usual height: no beat is so much higher than others
constexpr double doubtful = 0.65;          // the same: beats that come too early must be higher
constexpr double tooEarly = 0.65;          // of the median interval
constexpr double missing = 1.6;            // the same: look for a beat of another shape
constexpr double otherShape = 0.35;        // of the usual energy's root
constexpr double otherShapeLikeness = 0.6; // of the median likeness
constexpr double smallestDistance = 0.4;   // of the median interval, between beats of different shape
constexpr int nrOfRefinements = 3;
constexpr double rounding = 1e-9; // what filters leave of a constant, and more

double medianInterval(const std::vector<Peak>& beats) {
  std::vector<double> intervals;
  for (size_t i = 1; i < beats.size(); ++i)
    intervals.push_back(static_cast<double>(beats[i].at - beats[i - 1].at));
  return upperMedian(intervals);
}

/// Where between the neighbouring samples the parabola through three values is highest.
double highestAround(const std::vector<double>& signal, size_t at) {
  if (at == 0 || at + 1 >= signal.size()) return static_cast<double>(at);
  const double bend = signal[at - 1] - 2 * signal[at] + signal[at + 1];
  const double shift = bend < 0 ? 0.5 * (signal[at - 1] - signal[at + 1]) / bend : 0.0;
  return static_cast<double>(at) + std::clamp(shift, -0.5, 0.5);
}

class RPeakSearch {
public:
  RPeakSearch(std::span<const double> ecg, double rate)
      : ecg_(ecg), rate_(rate), half_(samplesIn(complexHalfSeconds)) {
    const std::vector<double> cleaned = withoutSteadyLines(withoutSpikes(), rate, complexHighHz);
    complexes_ = bandOf(cleaned, rate, complexLowHz, complexHighHz);
    std::vector<double> squares = bandOf(cleaned, rate, qrsLowHz, qrsHighHz);
    for (double& value : squares) value *= value;
    energy_ = centredMean(squares, rate, qrsSeconds);
    for (double& value : energy_) value = std::sqrt(std::max(value, 0.0));
  }

  std::vector<double> run() {
    const auto bySize = [](double a, double b) { return std::abs(a) < std::abs(b); };
    const double largest = std::abs(*std::max_element(ecg_.begin(), ecg_.end(), bySize));
    if (!(*std::max_element(energy_.begin(), energy_.end()) > rounding * largest)) return {};
    const UsualHeight usualEnergy(energy_, samplesIn(pieceSeconds));
    const std::vector<Peak> energetic = peaksOf(energy_, usualEnergy);
    std::vector<size_t> places = largestExtrema(energetic);
    if (places.empty()) return {};
    for (int i = 0; i < nrOfRefinements; ++i) {
      averageComplex(places);
      correlate();
      places.clear();
      for (const Peak& beat : matched_) places.push_back(beat.at);
      if (places.empty()) return {};
    }
    addBeatsOfOtherShapes(usualEnergy);
    return positions();
  }

private:
  size_t samplesIn(double seconds) const { return static_cast<size_t>(std::floor(seconds * rate_ + 0.5)); }

  /// 0 around spikes, which would ring in every filter.
  std::vector<double> withoutSpikes() const {
    std::vector<double> sizes(ecg_.begin(), ecg_.end());
    for (double& size : sizes) size = std::abs(size);
    const UsualHeight usual(sizes, samplesIn(pieceSeconds));
    const size_t reach = samplesIn(spikeSeconds);
    std::vector<double> values(ecg_.begin(), ecg_.end());
    const double level =
        std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
    for (double& value : values) value -= level;
    size_t blankFrom = 0;
    for (size_t i = 0; i < values.size(); ++i) {
      if (sizes[i] <= artefact * usual.at(i)) continue;
      const size_t from = std::max(blankFrom, i > reach ? i - reach : 0);
      const size_t to = std::min(i + reach + 1, values.size());
      for (size_t j = from; j < to; ++j) values[j] = 0;
      blankFrom = to;
    }
    return values;
  }

  /// Those that are closer to the usual height than to what is usual of lower ones.
  std::vector<Peak> peaksOf(const std::vector<double>& signal, const UsualHeight& usual) const {
    const std::vector<Peak> all = spacedPeaks(signal, samplesIn(refractorySeconds));
    std::vector<double> noise;
    for (const Peak& peak : all)
      if (peak.height < noiseBelow * usual.at(peak.at)) noise.push_back(peak.height / usual.at(peak.at));
    const double noiseHeight = upperMedian(noise);
    const double least = noiseHeight + threshold * (1 - noiseHeight);
    std::vector<Peak> peaks;
    for (const Peak& peak : all) {
      const double height = usual.at(peak.at);
      if (height > 0 && peak.height > least * height && peak.height < artefact * height)
        peaks.push_back(peak);
    }
    return peaks;
  }

  /// Beside every peak of the energy the largest value of the sign that is the larger one in most beats.
  std::vector<size_t> largestExtrema(const std::vector<Peak>& energetic) const {
    const size_t reach = samplesIn(alignmentSeconds);
    int votes = 0;
    std::vector<size_t> highest;
    std::vector<size_t> lowest;
    for (const Peak& peak : energetic) {
      const auto from =
          complexes_.begin() + static_cast<std::ptrdiff_t>(peak.at > reach ? peak.at - reach : 0);
      const auto to =
          complexes_.begin() + static_cast<std::ptrdiff_t>(std::min(peak.at + reach + 1, complexes_.size()));
      const auto [low, high] = std::minmax_element(from, to);
      votes += *high >= -*low ? 1 : -1;
      highest.push_back(static_cast<size_t>(high - complexes_.begin()));
      lowest.push_back(static_cast<size_t>(low - complexes_.begin()));
    }
    return votes >= 0 ? highest : lowest;
  }

  /// Every complex counts the same, whatever its size.
  void averageComplex(const std::vector<size_t>& places) {
    complex_.assign(2 * half_ + 1, 0.0);
    for (const size_t place : places) {
      if (place < half_ || place + half_ >= complexes_.size()) continue;
      const std::span<const double> beat(complexes_.data() + (place - half_), complex_.size());
      const double factor = normFactor(energyOf(beat));
      for (size_t j = 0; j < complex_.size(); ++j) complex_[j] += factor * beat[j];
    }
    const double factor = normFactor(energyOf(complex_));
    for (double& value : complex_) value *= factor;
  }

  /// The beats that look like the average complex.
  void correlate() {
    std::vector<double> all(complexes_.size() + 2 * half_, 0.0);
    std::copy(complexes_.begin(), complexes_.end(), all.begin() + static_cast<std::ptrdiff_t>(half_));
    likeness_.resize(complexes_.size());
    vectorKernels().slidingDot(all.data(), complex_.data(), static_cast<int64_t>(complex_.size()),
                               static_cast<int64_t>(likeness_.size()), likeness_.data());
    const UsualHeight usual(likeness_, samplesIn(pieceSeconds));
    matched_ = peaksOf(likeness_, usual);
    leaveOutDoubtful(usual);
  }

  /// Low peaks that come too early behind a higher one, or too shortly before it: T waves, and what is left
  /// of the gradient artifact.
  void leaveOutDoubtful(const UsualHeight& usual) {
    const double interval = medianInterval(matched_);
    const auto isDoubtful = [&](size_t i) {
      const Peak& beat = matched_[i];
      if (beat.height > doubtful * usual.at(beat.at)) return false;
      const auto comesTooEarly = [&](const Peak& first, const Peak& second, const Peak& other) {
        return static_cast<double>(second.at - first.at) < tooEarly * interval && other.height > beat.height;
      };
      return (i > 0 && comesTooEarly(matched_[i - 1], beat, matched_[i - 1])) ||
             (i + 1 < matched_.size() && comesTooEarly(beat, matched_[i + 1], matched_[i + 1]));
    };
    std::vector<Peak> kept;
    for (size_t i = 0; i < matched_.size(); ++i)
      if (!isDoubtful(i)) kept.push_back(matched_[i]);
    matched_.swap(kept);
  }

  /// In long intervals the highest peak of the energy, if it is one: Pan and Tompkins' search back.
  void addBeatsOfOtherShapes(const UsualHeight& usualEnergy) {
    const double interval = medianInterval(matched_);
    const auto distance = static_cast<size_t>(smallestDistance * interval);
    const double offset = offsetFromEnergy();
    for (size_t i = 1; i < matched_.size(); ++i) {
      const size_t from = matched_[i - 1].at + distance;
      const size_t to = matched_[i].at - std::min(matched_[i].at, distance);
      if (static_cast<double>(matched_[i].at - matched_[i - 1].at) < missing * interval || from + 2 >= to)
        continue;
      const auto begin = energy_.begin();
      const auto highest = std::max_element(begin + static_cast<std::ptrdiff_t>(from),
                                            begin + static_cast<std::ptrdiff_t>(to));
      const auto at = static_cast<size_t>(highest - begin);
      const double usual = usualEnergy.at(at);
      if (*highest > otherShape * usual && *highest < artefact * usual)
        others_.push_back(std::max(0.0, static_cast<double>(at) + offset));
    }
  }

  double energyPeakNear(const Peak& beat) const {
    const size_t reach = samplesIn(alignmentSeconds);
    const size_t from = beat.at > reach ? beat.at - reach : 0;
    const size_t to = std::min(beat.at + reach + 1, energy_.size());
    const auto begin = energy_.begin();
    return static_cast<double>(
        std::max_element(begin + static_cast<std::ptrdiff_t>(from), begin + static_cast<std::ptrdiff_t>(to)) -
        begin);
  }

  /// From the peak of a beat's energy to its place.
  double offsetFromEnergy() const {
    std::vector<double> offsets;
    for (const Peak& beat : matched_) offsets.push_back(static_cast<double>(beat.at) - energyPeakNear(beat));
    return upperMedian(offsets);
  }

  /// 1 for a beat that is the average complex.
  double relativeLikeness(const Peak& beat) const {
    const size_t from = beat.at > half_ ? beat.at - half_ : 0;
    const size_t to = std::min(beat.at + half_ + 1, complexes_.size());
    return beat.height * normFactor(energyOf(std::span(complexes_).subspan(from, to - from)));
  }

  /// Some part of an ectopic beat resembles the average complex most; which one is chance.
  double placeOf(const Peak& beat, double leastLikeness, double offset) const {
    if (relativeLikeness(beat) < leastLikeness) return std::max(0.0, energyPeakNear(beat) + offset);
    return highestAround(likeness_, beat.at);
  }

  /// From the middle of the average complex to the largest value of the average beat as it was recorded.
  double offsetToR() const {
    std::vector<double> average(complex_.size(), 0.0);
    for (const Peak& beat : matched_) {
      if (beat.at < half_ || beat.at + half_ >= ecg_.size()) continue;
      for (size_t j = 0; j < average.size(); ++j) average[j] += ecg_[beat.at - half_ + j];
    }
    double level = 0;
    for (const double value : average) level += value / static_cast<double>(average.size());
    const size_t reach = std::min(samplesIn(alignmentSeconds), half_);
    size_t largest = half_;
    for (size_t j = half_ - reach; j <= half_ + reach; ++j)
      if (std::abs(average[j] - level) > std::abs(average[largest] - level)) largest = j;
    return static_cast<double>(largest) - static_cast<double>(half_);
  }

  std::vector<double> positions() const {
    std::vector<double> likenesses;
    for (const Peak& beat : matched_) likenesses.push_back(relativeLikeness(beat));
    const double leastLikeness = otherShapeLikeness * upperMedian(likenesses);
    const double offset = offsetFromEnergy();
    std::vector<double> places = others_;
    for (const Peak& beat : matched_) places.push_back(placeOf(beat, leastLikeness, offset));
    const double toR = offsetToR();
    const auto last = static_cast<double>(ecg_.size() - 1);
    for (double& place : places) place = std::clamp(place + toR, 0.0, last);
    std::sort(places.begin(), places.end());
    return places;
  }

  std::span<const double> ecg_;
  double rate_;
  size_t half_;                   ///< of the average complex, samples
  std::vector<double> complexes_; ///< the electrocardiogram in the band of the complexes
  std::vector<double> energy_;    ///< root of the mean square in the band of the QRS complex
  std::vector<double> complex_;   ///< the average one, of unit energy
  std::vector<double> likeness_;  ///< correlation with the average complex
  std::vector<Peak> matched_;     ///< beats that look like it
  std::vector<double> others_;    ///< beats that do not
};

} // namespace

std::vector<double> findRPeaks(std::span<const double> ecg, double rate) {
  const bool isUsable = static_cast<double>(ecg.size()) >= shortestRecording * rate &&
                        std::all_of(ecg.begin(), ecg.end(), [](double x) { return std::isfinite(x); });
  return isUsable && rate > 2 * complexHighHz ? RPeakSearch(ecg, rate).run() : std::vector<double>();
}

} // namespace emeg
