#include "app/correct/BandPowers.h"

#include "dsp/RealFFT.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double windowSeconds = 4;
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

void addPowers(const std::vector<double>& spectrum, double hzPerBin, double scale, double highest,
               BandPowers& powers) {
  for (size_t b = 0; b < eegBands.size(); ++b) {
    if (eegBands[b].lowest >= highest) continue;
    const auto first = static_cast<size_t>(std::ceil(eegBands[b].lowest / hzPerBin));
    const double end = std::min(eegBands[b].highest, highest) / hzPerBin;
    for (size_t k = first; static_cast<double>(k) < end && 2 * k + 1 < spectrum.size(); ++k)
      powers[b] += scale * (spectrum[2 * k] * spectrum[2 * k] + spectrum[2 * k + 1] * spectrum[2 * k + 1]);
  }
}

} // namespace

std::vector<BandPowers> measureBandPowers(RecordingReader& recording, double from, double to, double highest,
                                          const std::function<void(double)>& progress) {
  const RecordingHeader& header = recording.header();
  const double fs = header.samplingFrequency;
  std::vector<BandPowers> powers(header.channels.size(), BandPowers{});
  const int32_t log2Length =
      std::clamp(static_cast<int32_t>(std::log2(windowSeconds * fs) + 0.5), shortestLog2, longestLog2);
  const int64_t length = int64_t{1} << log2Length;
  const int64_t first = std::max(static_cast<int64_t>(from * fs), int64_t{0});
  const int64_t end = std::min(static_cast<int64_t>(to * fs), header.nrOfTimePoints);
  if (end - first < length) return powers;

  initFFTTables();
  makeCosineTable(log2Length);
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
      realFFTForward(signal.data(), log2Length);
      addPowers(signal, fs / static_cast<double>(length), scale, highest, powers[c]);
    }
    progress(static_cast<double>(w + 1) / static_cast<double>(nrOfWindows));
  }
  return powers;
}

} // namespace emeg
