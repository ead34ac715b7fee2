#include "artifacts/gradient/timing/volumes/ScannerBand.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace emeg {

namespace {

constexpr double lowestFrequency = 120; // Hz
constexpr double lowestShare = 0.25;    // of the sampling frequency
constexpr double mainsWidth = 1.5;      // Hz, to either side
constexpr double leakage = 2;           // lines of a volume's spectrum, to either side
constexpr int64_t mostVolumes = 16;
constexpr int64_t longestVolume = int64_t{1} << 20; // samples

bool isOfMains(double frequency, double width) {
  const auto near = [&](double mains) {
    return std::fabs(frequency - std::round(frequency / mains) * mains) < width;
  };
  return near(50) || near(60);
}

/// Power of a volume in the band, under a Hann window.
class BandPower {
public:
  BandPower(double samplingFrequency, int64_t length) : length_(length) {
    while ((int64_t{1} << log2n_) < length) ++log2n_;
    const double step = samplingFrequency / static_cast<double>(int64_t{1} << log2n_);
    const double width = std::max(mainsWidth, leakage * samplingFrequency / static_cast<double>(length));
    const double lowest = std::min(lowestFrequency, lowestShare * samplingFrequency);
    for (int64_t k = 0; k < int64_t{1} << (log2n_ - 1); ++k) {
      const double frequency = static_cast<double>(k) * step;
      counts_.push_back(frequency >= lowest && !isOfMains(frequency, width));
    }
  }

  double of(std::span<const double> volume) {
    std::vector<double> work(size_t{1} << log2n_, 0.0);
    for (int64_t i = 0; i < length_; ++i) {
      const double phase =
          2 * std::numbers::pi * (static_cast<double>(i) + 0.5) / static_cast<double>(length_);
      work[static_cast<size_t>(i)] = volume[static_cast<size_t>(i)] * (1 - std::cos(phase)) / 2;
    }
    realFFTForward(work.data(), log2n_, workspace_);
    double power = 0;
    for (size_t k = 1; k < counts_.size(); ++k)
      if (counts_[k]) power += work[2 * k] * work[2 * k] + work[2 * k + 1] * work[2 * k + 1];
    return power;
  }

private:
  int64_t length_;
  int32_t log2n_ = 5;
  std::vector<bool> counts_;
  FFTWorkspace workspace_;
};

} // namespace

double explainedInScannerBand(std::span<const double> sharpened, double samplingFrequency,
                              const ScanSegment& scan) {
  const auto length = static_cast<int64_t>(scan.volumeDuration);
  const int64_t volumes = std::min<int64_t>(scan.nrOfVolumes, mostVolumes);
  if (volumes < 2 || length < 32 || length > longestVolume) return 0;
  std::vector<std::vector<double>> repeats;
  std::vector<double> average(static_cast<size_t>(length), 0.0);
  for (int64_t i = 0; i < volumes; ++i) {
    const int64_t v = (2 * i + 1) * scan.nrOfVolumes / (2 * volumes);
    repeats.emplace_back(average.size());
    readShifted(sharpened, scan.volumeOnset(static_cast<double>(v)), repeats.back());
    for (size_t t = 0; t < average.size(); ++t)
      average[t] += repeats.back()[t] / static_cast<double>(volumes);
  }
  BandPower bandPower(samplingFrequency, length);
  // Medians: a spike or a dropout is in one volume.
  std::vector<double> all, rest;
  for (std::vector<double>& repeat : repeats) {
    all.push_back(bandPower.of(repeat));
    for (size_t t = 0; t < average.size(); ++t) repeat[t] -= average[t];
    rest.push_back(bandPower.of(repeat));
  }
  const double power = upperMedian(all);
  const auto count = static_cast<double>(volumes);
  return power > 0 ? 1 - upperMedian(rest) / power * count / (count - 1) : 0;
}

} // namespace emeg
