#include "app/correct/SpectralFigures.h"

#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double windowSeconds = 8;
constexpr int64_t mostWindows = 100;
constexpr int32_t shortestLog2 = 5;
constexpr int32_t longestLog2 = 20;

std::vector<double> hannWindow(size_t length) {
  std::vector<double> window(length);
  for (size_t i = 0; i < length; ++i)
    window[i] =
        0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(length));
  return window;
}

} // namespace

std::vector<PowerSpectrum> measureSpectra(RecordingReader& recording, double from, double to, double highest,
                                          const std::function<void(double)>& progress) {
  const RecordingHeader& header = recording.header();
  const double fs = header.samplingFrequency;
  std::vector<PowerSpectrum> spectra(header.channels.size());
  const int32_t log2Length = static_cast<int32_t>(
      std::clamp<double>(std::round(std::log2(windowSeconds * fs)), shortestLog2, longestLog2));
  const int64_t length = int64_t{1} << log2Length;
  const int64_t first = std::max(static_cast<int64_t>(from * fs), int64_t{0});
  const int64_t end = std::min(static_cast<int64_t>(to * fs), header.nrOfTimePoints);
  if (end - first < length) return spectra;

  const double hzPerBin = fs / static_cast<double>(length);
  const auto nrOfBins =
      std::min(static_cast<size_t>(highest / hzPerBin) + 1, static_cast<size_t>(length) / 2);
  for (PowerSpectrum& spectrum : spectra) spectrum = {hzPerBin, std::vector<double>(nrOfBins, 0.0)};
  FFTWorkspace workspace;
  const auto samples = static_cast<size_t>(length);
  const std::vector<double> window = hannWindow(samples);
  double windowPower = 0;
  for (const double value : window) windowPower += value * value;
  const int64_t nrOfWindows = std::min(mostWindows, 2 * (end - first) / length - 1);
  // Both sides of the spectrum, per window and as mean square.
  const double scale = 2 / (windowPower * static_cast<double>(length) * static_cast<double>(nrOfWindows));

  std::vector<double> values(samples * header.channels.size());
  std::vector<double> signal(samples);
  for (int64_t w = 0; w < nrOfWindows; ++w) {
    const int64_t start = nrOfWindows == 1 ? first : first + (end - first - length) * w / (nrOfWindows - 1);
    recording.read(start, length, values);
    for (size_t c = 0; c < header.channels.size(); ++c) {
      const auto channel = std::span<const double>(values).subspan(c * samples, samples);
      double mean = 0;
      for (const double value : channel)
        mean += std::isfinite(value) ? value / static_cast<double>(length) : 0;
      for (size_t i = 0; i < samples; ++i)
        signal[i] = std::isfinite(channel[i]) ? (channel[i] - mean) * window[i] : 0;
      realFFTForward(signal.data(), log2Length, workspace);
      for (size_t k = 1; k < nrOfBins; ++k)
        spectra[c].powers[k] +=
            scale * (signal[2 * k] * signal[2 * k] + signal[2 * k + 1] * signal[2 * k + 1]);
    }
    progress(static_cast<double>(w + 1) / static_cast<double>(nrOfWindows));
  }
  return spectra;
}

BandPowers bandPowersOf(const PowerSpectrum& spectrum) {
  BandPowers powers{};
  for (size_t b = 0; b < eegBands.size(); ++b) {
    for (size_t k = 1; k < spectrum.powers.size(); ++k) {
      const double hz = static_cast<double>(k) * spectrum.hzPerBin;
      if (hz >= eegBands[b].lowest && hz < eegBands[b].highest) powers[b] += spectrum.powers[k];
    }
  }
  return powers;
}

SlicePeaks slicePeaksOf(const PowerSpectrum& spectrum, const MRSequence& sequence, double lowest) {
  SlicePeaks peaks;
  if (spectrum.powers.empty()) return peaks;
  const double sliceHz = 1 / sequence.sliceDuration;
  const double volumeHz = 1 / sequence.volumeDuration;
  // Pauses between volumes spread a slice's line over its neighbours at the volume frequency.
  const double peakHz = std::max(4 * spectrum.hzPerBin, sequence.hasVolumeGaps ? 1.2 * volumeHz : 0);
  const double sideHz = std::min(2 * peakHz + 2, sliceHz / 2);
  const double highest = static_cast<double>(spectrum.powers.size() - 1) * spectrum.hzPerBin;
  double atPeaks = 0;
  double beside = 0;
  std::vector<double> sides;
  for (double center = sliceHz; center + sideHz < highest; center += sliceHz) {
    if (center - sideHz < lowest) continue;
    const double line = std::floor(center / volumeHz + 0.5) * volumeHz;
    double nrOfPeakBins = 0;
    sides.clear();
    const auto firstBin = static_cast<size_t>((line - sideHz) / spectrum.hzPerBin);
    const auto lastBin = static_cast<size_t>((line + sideHz) / spectrum.hzPerBin);
    for (size_t k = firstBin; k <= lastBin && k < spectrum.powers.size(); ++k) {
      const double distance = std::abs(static_cast<double>(k) * spectrum.hzPerBin - line);
      if (distance <= peakHz) {
        atPeaks += spectrum.powers[k];
        nrOfPeakBins += 1;
      } else {
        sides.push_back(spectrum.powers[k]);
      }
    }
    if (sides.empty()) continue;
    double mean = 0;
    for (const double power : sides) mean += power / static_cast<double>(sides.size());
    beside += nrOfPeakBins * mean;
  }
  peaks.rms = std::sqrt(std::max(atPeaks - beside, 0.0));
  peaks.toBackground = beside > 0 ? atPeaks / beside : 0;
  return peaks;
}

} // namespace emeg
