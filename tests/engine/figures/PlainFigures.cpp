#include "tests/engine/figures/PlainFigures.h"

#include "tests/engine/figures/SimulatedScan.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace emeg::plain {

namespace {

double medianOf(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  return (values[(values.size() - 1) / 2] + values[values.size() / 2]) / 2;
}

/// Mean of all samples of each phase; a phase without samples repeats the one before.
struct Phases {
  explicit Phases(size_t count) : sums(count), counts(count) {}
  void add(double phase, double value) {
    const size_t i = std::min(static_cast<size_t>(phase * static_cast<double>(sums.size())), sums.size() - 1);
    sums[i] += value;
    counts[i] += 1;
    offsets += phase * static_cast<double>(sums.size()) - static_cast<double>(i);
    all += 1;
  }
  std::vector<double> means() const {
    std::vector<double> result;
    for (size_t i = 0; i < sums.size(); ++i)
      result.push_back(counts[i] > 0 ? sums[i] / counts[i] : result.empty() ? 0 : result.back());
    return result;
  }
  std::vector<double> sums, counts;
  double offsets = 0, all = 0;
};

double powerAt(const std::vector<double>& wave, double periods) {
  double re = 0, im = 0;
  const auto n = static_cast<double>(wave.size());
  for (size_t i = 0; i < wave.size(); ++i) {
    re += wave[i] * std::cos(twoPi * periods * static_cast<double>(i) / n);
    im += wave[i] * std::sin(twoPi * periods * static_cast<double>(i) / n);
  }
  return 2 * (re * re + im * im) / (n * n);
}

double lag(std::vector<double> a, std::vector<double> b, long longest) {
  const auto n = static_cast<long>(a.size());
  for (std::vector<double>* wave : {&a, &b}) {
    double mean = 0;
    for (const double v : *wave) mean += v;
    for (double& v : *wave) v -= mean / static_cast<double>(n);
  }
  std::map<long, double> likeness;
  for (long shift = -longest - 1; shift <= longest + 1; ++shift)
    for (long i = 0; i < n; ++i)
      likeness[shift] += a[static_cast<size_t>(i)] * b[static_cast<size_t>(((i + shift) % n + n) % n)];
  long best = 0;
  for (long shift = -longest; shift <= longest; ++shift)
    if (likeness[shift] > likeness[best]) best = shift;
  const double before = likeness[best - 1], at = likeness[best], after = likeness[best + 1];
  return static_cast<double>(best) + 0.5 * (before - after) / (before - 2 * at + after);
}

void measureLines(const std::vector<double>& wave, const MRSequence& sequence, const FrequencyRange& range,
                  VolumeFigures& figures) {
  double slices = 0, others = 0, background = 0;
  std::map<long, std::pair<double, double>> groups;
  for (int h = 1;
       h / sequence.volumeDuration <= range.highest && h <= (static_cast<int>(wave.size()) - 2) / 4; ++h) {
    if (h / sequence.volumeDuration < range.lowest) continue;
    const double line = powerAt(wave, 2 * h);
    const double beside = (powerAt(wave, 2 * h - 1) + powerAt(wave, 2 * h + 1)) / 2;
    const double perVolume = sequence.volumeDuration / sequence.sliceDuration;
    const long multiple = std::lround(h / perVolume);
    const bool ofSlices = multiple > 0 && std::fabs(h - static_cast<double>(multiple) * perVolume) <= 1;
    (ofSlices ? slices : others) += line;
    background += beside;
    if (!ofSlices) continue;
    groups[multiple].first += line;
    groups[multiple].second += beside;
  }
  std::vector<double> ratios;
  for (const auto& [multiple, powers] : groups) ratios.push_back(powers.first / powers.second);
  figures.sliceHarmonics = std::sqrt(slices);
  figures.volumeHarmonics = std::sqrt(others);
  figures.background = std::sqrt(background);
  figures.lineToBackground = (slices + others) / background;
  figures.medianSliceToBackground = medianOf(ratios);
}

} // namespace

VolumeFigures volumeFigures(const std::vector<double>& channel, double samplingFrequency,
                            const MRSequence& sequence, const std::vector<FoundScan>& corrected,
                            const FrequencyRange& range) {
  const double thinning = std::max(std::floor(samplingFrequency / 1000), 1.0);
  const auto pairPhases =
      static_cast<size_t>(std::lround(2 * sequence.volumeDuration * samplingFrequency / thinning));
  const auto volumePhases = static_cast<size_t>(std::lround(sequence.volumeDuration * samplingFrequency));
  Phases pairs(pairPhases);
  std::vector<Phases> parts(3, Phases(volumePhases));
  std::map<long, std::vector<double>> volumes;
  const int paired = sequence.nrOfVolumes / 2 * 2;
  for (size_t t = 0; t < channel.size(); ++t) {
    const double at =
        (static_cast<double>(t) / samplingFrequency - sequence.firstTriggerTime) / sequence.volumeDuration;
    const auto volume = static_cast<long>(std::floor(at));
    const double value = std::isfinite(channel[t]) ? channel[t] : 0;
    volumes[volume].push_back(value);
    if (volume < 0 || volume >= paired) continue;
    pairs.add((at - std::floor(at) + static_cast<double>(volume % 2)) / 2, value);
    parts[static_cast<size_t>(3 * volume / paired)].add(at - std::floor(at), value);
  }

  VolumeFigures figures;
  measureLines(pairs.means(), sequence, range, figures);
  std::vector<double> peaks, roughnesses, outside;
  for (const auto& [volume, values] : volumes) {
    if (static_cast<double>(values.size()) < 0.95 * sequence.volumeDuration * samplingFrequency) continue;
    double steps = 0;
    for (size_t i = 1; i < values.size(); ++i) steps += std::fabs(values[i] - values[i - 1]);
    const double roughness = steps / static_cast<double>(values.size());
    const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
    const double begin = sequence.firstTriggerTime + static_cast<double>(volume) * sequence.volumeDuration;
    const bool isCounted = volume >= 0 && volume < sequence.nrOfVolumes;
    const bool isCorrected = std::any_of(corrected.begin(), corrected.end(), [&](const FoundScan& scan) {
      return scan.begin < begin + sequence.volumeDuration && scan.end > begin;
    });
    if (isCounted) peaks.push_back(*highest - *lowest);
    if (isCounted) roughnesses.push_back(roughness);
    if (!isCounted && !isCorrected) outside.push_back(roughness);
  }
  figures.medianImagingArtifact = medianOf(peaks);
  const double half = medianOf(roughnesses) / 2;
  for (const double roughness : outside)
    if (half > 0 && roughness > half) figures.artifactSecondsOutside += sequence.volumeDuration;

  const auto longest = static_cast<long>(0.02 * samplingFrequency) + 1;
  for (size_t part : {1u, 2u}) {
    const double lags = lag(parts[0].means(), parts[part].means(), longest) +
                        parts[part].offsets / parts[part].all - parts[0].offsets / parts[0].all;
    const double seconds = lags * sequence.volumeDuration / static_cast<double>(volumePhases);
    if (std::fabs(seconds) > std::fabs(figures.drift) || part == 1) figures.drift = seconds;
  }
  return figures;
}

std::vector<double> welch(const std::vector<double>& channel, int64_t first, int64_t end, int log2Length,
                          size_t nrOfBins) {
  const auto n = size_t{1} << log2Length;
  std::vector<double> cosine(n), hann(n), powers(nrOfBins, 0.0);
  double windowPower = 0;
  for (size_t i = 0; i < n; ++i) {
    cosine[i] = std::cos(twoPi * static_cast<double>(i) / static_cast<double>(n));
    hann[i] = 0.5 - 0.5 * cosine[i];
    windowPower += hann[i] * hann[i];
  }
  const auto length = static_cast<int64_t>(n);
  const int64_t count = std::min<int64_t>(100, 2 * (end - first) / length - 1);
  for (int64_t w = 0; w < count; ++w) {
    const int64_t start = count == 1 ? first : first + (end - first - length) * w / (count - 1);
    std::vector<double> window(n);
    double mean = 0;
    for (size_t i = 0; i < n; ++i) {
      window[i] = static_cast<double>(static_cast<float>(channel[static_cast<size_t>(start) + i]));
      if (std::isfinite(window[i])) mean += window[i] / static_cast<double>(n);
    }
    for (size_t i = 0; i < n; ++i) window[i] = std::isfinite(window[i]) ? (window[i] - mean) * hann[i] : 0;
    for (size_t k = 1; k < nrOfBins; ++k) {
      double re = 0, im = 0;
      for (size_t i = 0; i < n; ++i) {
        re += window[i] * cosine[k * i % n];
        im += window[i] * cosine[(k * i + 3 * n / 4) % n];
      }
      powers[k] +=
          2 * (re * re + im * im) / (windowPower * static_cast<double>(n) * static_cast<double>(count));
    }
  }
  return powers;
}

} // namespace emeg::plain
