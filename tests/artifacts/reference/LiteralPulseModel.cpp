#include "tests/artifacts/reference/LiteralPulseModel.h"

#include "dsp/Medians.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace emeg {

namespace {

int64_t floorOf(double x) {
  return static_cast<int64_t>(std::floor(x));
}

double sampleOf(const std::vector<double>& series, int64_t index) {
  if (index < 0 || index >= static_cast<int64_t>(series.size())) return 0.0;
  return series[static_cast<std::size_t>(index)];
}

void writeSample(std::vector<double>& series, int64_t index, double value) {
  if (index < 0 || index >= static_cast<int64_t>(series.size())) return;
  series[static_cast<std::size_t>(index)] = value;
}

/// The beat's value between its places `index` and `index + 1`.
double beatValue(const std::vector<double>& beat, int64_t index, double place) {
  const int64_t last = static_cast<int64_t>(beat.size()) - 1;
  const double f = place - static_cast<double>(index);
  return (1 - f) * beat[static_cast<std::size_t>(index)] +
         f * beat[static_cast<std::size_t>(std::min(index + 1, last))];
}

double squaredSum(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += value * value;
  return sum;
}

} // namespace

LiteralModelSetUp literalModelSetUp(const std::vector<double>& pulsePositions, int32_t heartPeriod) {
  LiteralModelSetUp setUp;
  for (std::size_t i = 0; i + 1 < pulsePositions.size(); ++i)
    setUp.pulseIntervals.push_back(pulsePositions[i + 1] - pulsePositions[i]);
  double shortest = setUp.pulseIntervals.at(0);
  double longest = setUp.pulseIntervals.at(0);
  for (const double interval : setUp.pulseIntervals) {
    shortest = std::min(shortest, interval);
    longest = std::max(longest, interval);
  }
  const double median =
      histogramMedian(setUp.pulseIntervals.data(), static_cast<int32_t>(setUp.pulseIntervals.size()));
  setUp.medianPulseInterval = median;

  // The quotient says nothing when the shortest interval is the median one.
  const double e = median - shortest < 0.5 ? 1.0 : (longest - median) / (median - shortest) + 1;
  const double length = 2 * std::floor(heartPeriod * e + 0.5) + 1;
  setUp.modelLength = static_cast<int32_t>(std::clamp(length, 3.0, 100001.0));
  setUp.warpStep = 1.0 / (setUp.modelLength - 1);
  // The histogram's median can lie below all intervals.
  setUp.warpMargin = std::max(0.0, 0.5 * (1 - shortest / median));
  setUp.epochHalfLength = static_cast<int32_t>(std::ceil(setUp.modelLength * 0.6));
  return setUp;
}

std::vector<double> literalResampledInterval(const std::vector<double>& series, double position,
                                             double interval, const LiteralWarpTable& table) {
  const int64_t p = floorOf(position);
  const double length = std::trunc(interval);
  std::vector<double> beat(table.warpPosition.size());
  int64_t q = p;
  for (std::size_t j = 0; j < beat.size(); ++j) {
    const double pos = length * table.warpPosition[j] + static_cast<double>(p) + table.warpOffset[j];
    while (pos >= static_cast<double>(q + 1)) ++q;
    const double f = pos - static_cast<double>(q);
    beat[j] = (1 - f) * sampleOf(series, q) + f * sampleOf(series, q + 1);
  }
  return beat;
}

std::vector<std::vector<double>> literalWarpedBeats(const std::vector<double>& series,
                                                    const std::vector<double>& pulsePositions,
                                                    const LiteralModelSetUp& setUp,
                                                    const LiteralWarpTable& table) {
  std::vector<std::vector<double>> beats;
  for (std::size_t i = 0; i < setUp.pulseIntervals.size(); ++i)
    beats.push_back(literalResampledInterval(series, pulsePositions[i], setUp.pulseIntervals[i], table));
  return beats;
}

double literalWarpScore(const std::vector<double>& series, const std::vector<double>& pulsePositions,
                        const LiteralModelSetUp& setUp, double a) {
  const LiteralWarpTable table = literalWarpTable(a, setUp);
  std::vector<double> sum(static_cast<std::size_t>(setUp.modelLength), 0.0);
  for (std::size_t i = 0; i < setUp.pulseIntervals.size(); ++i) {
    const std::vector<double> beat =
        literalResampledInterval(series, pulsePositions[i], setUp.pulseIntervals[i], table);
    const double norm = std::sqrt(squaredSum(beat));
    if (!(norm > 0)) continue;
    for (std::size_t j = 0; j < beat.size(); ++j) sum[j] += beat[j] / norm;
  }
  return squaredSum(sum);
}

double literalWarpFit(const std::vector<double>& series, const std::vector<double>& pulsePositions,
                      const LiteralModelSetUp& setUp) {
  double lo = setUp.warpMargin;
  double hi = 1 - setUp.warpMargin;
  double step = (hi - lo) / 4;
  if (!(step > 0.001)) return 0.5;
  constexpr double notComputed = -1.0;
  std::array<double, 5> scores{notComputed, notComputed, notComputed, notComputed, notComputed};
  while (step > 0.001) {
    for (std::size_t k = 0; k < 5; ++k)
      if (scores[k] < 0)
        scores[k] = literalWarpScore(series, pulsePositions, setUp, lo + static_cast<double>(k) * step);
    std::size_t best = 0;
    for (std::size_t k = 1; k < 5; ++k)
      if (scores[k] > scores[best]) best = k;
    best = std::clamp<std::size_t>(best, 1, 3);

    const double newLo = lo + static_cast<double>(best - 1) * step;
    const double newHi = lo + static_cast<double>(best + 1) * step;
    lo = newLo;
    hi = newHi;
    step = step / 2;
    scores = {scores[best - 1], notComputed, scores[best], notComputed, scores[best + 1]};
  }
  return (lo + hi) / 2;
}

void literalPrincipalComponentModel(int count, std::vector<std::vector<double>>& rows,
                                    std::vector<std::vector<double>>& out) {
  const std::size_t m = rows.size();
  const std::size_t length = m == 0 ? 0 : rows[0].size();
  out.assign(m, std::vector<double>(length, 0.0));
  if (length == 0) return;
  std::vector<double> u(m);
  std::vector<double> v(length);
  for (int component = 0; component < count; ++component) {
    for (std::size_t i = 0; i < m; ++i) u[i] = rows[i][0];
    double s = squaredSum(u);
    bool degenerate = false;
    for (int turn = 0; turn < 10000; ++turn) {
      for (std::size_t k = 0; k < length; ++k) {
        v[k] = 0.0;
        for (std::size_t i = 0; i < m; ++i) v[k] += rows[i][k] * u[i];
      }
      const double norm = std::sqrt(squaredSum(v));
      degenerate = !(norm > 0);
      if (degenerate) break;
      for (std::size_t k = 0; k < length; ++k) v[k] = v[k] / norm;
      for (std::size_t i = 0; i < m; ++i) {
        u[i] = 0.0;
        for (std::size_t k = 0; k < length; ++k) u[i] += rows[i][k] * v[k];
      }
      const double next = squaredSum(u);
      if (std::fabs(next / s - 1) <= 1e-6) break;
      s = next;
    }
    if (degenerate) continue;
    for (std::size_t i = 0; i < m; ++i) {
      for (std::size_t k = 0; k < length; ++k) {
        rows[i][k] -= v[k] * u[i];
        out[i][k] += v[k] * u[i];
      }
    }
  }
}

std::vector<std::vector<double>> literalEpochs(const std::vector<std::vector<double>>& warpedBeats,
                                               const LiteralModelSetUp& setUp) {
  const int32_t length = setUp.modelLength;
  const int32_t w = setUp.epochHalfLength;
  std::vector<std::vector<double>> epochs;
  for (std::size_t i = 0; i + 1 < warpedBeats.size(); ++i) {
    std::vector<double> epoch;
    for (int32_t j = length - w - 1; j <= length - 2; ++j)
      epoch.push_back(warpedBeats[i][static_cast<std::size_t>(j)]);
    for (int32_t j = 0; j <= w; ++j) epoch.push_back(warpedBeats[i + 1][static_cast<std::size_t>(j)]);
    epochs.push_back(epoch);
  }
  return epochs;
}

std::vector<std::vector<double>> literalReassembledBeats(const std::vector<std::vector<double>>& warpedBeats,
                                                         const std::vector<std::vector<double>>& modelEpochs,
                                                         const LiteralModelSetUp& setUp) {
  const int32_t length = setUp.modelLength;
  const int32_t w = setUp.epochHalfLength;
  const int32_t e0 = length - w - 1;
  const std::size_t n = warpedBeats.size();
  std::vector<std::vector<double>> beats = warpedBeats;
  if (n < 2) return beats;
  const auto weight = [&](int32_t j) { return static_cast<double>(j - e0) / (w - e0); };
  const auto before = [&](std::size_t i, int32_t j) {
    return modelEpochs[i - 1][static_cast<std::size_t>(w + j)];
  };
  const auto after = [&](std::size_t i, int32_t j) {
    return modelEpochs[i][static_cast<std::size_t>(j - e0)];
  };

  for (std::size_t i = 1; i + 1 < n; ++i) {
    for (int32_t j = 0; j <= e0; ++j) beats[i][static_cast<std::size_t>(j)] = before(i, j);
    for (int32_t j = w; j <= length - 1; ++j) beats[i][static_cast<std::size_t>(j)] = after(i, j);
    for (int32_t j = e0 + 1; j <= w - 1; ++j) {
      const double t = weight(j);
      beats[i][static_cast<std::size_t>(j)] = t * after(i, j) + (1 - t) * before(i, j);
    }
  }

  for (int32_t j = w; j <= length - 1; ++j) beats[0][static_cast<std::size_t>(j)] = after(0, j);
  for (int32_t j = e0 + 1; j <= w - 1; ++j) {
    const double t = weight(j);
    const std::size_t index = static_cast<std::size_t>(j);
    beats[0][index] = t * after(0, j) + (1 - t) * warpedBeats[0][index];
  }

  for (int32_t j = 0; j <= e0; ++j) beats[n - 1][static_cast<std::size_t>(j)] = before(n - 1, j);
  for (int32_t j = e0 + 1; j <= w - 1; ++j) {
    const double t = weight(j);
    const std::size_t index = static_cast<std::size_t>(j);
    beats[n - 1][index] = t * warpedBeats[n - 1][index] + (1 - t) * before(n - 1, j);
  }
  return beats;
}

void literalWriteBack(std::vector<double>& series, const std::vector<double>& pulsePositions,
                      const LiteralModelSetUp& setUp, double a,
                      const std::vector<std::vector<double>>& modelledBeats) {
  const double median = setUp.medianPulseInterval;
  const double c1 = literalFirstPartFactor(a, setUp);
  const double c2 = literalSecondPartFactor(a, setUp);
  const double lastPlace = setUp.modelLength - 1;
  for (std::size_t i = 0; i < setUp.pulseIntervals.size(); ++i) {
    const std::vector<double>& beat = modelledBeats[i];
    const int64_t p = floorOf(pulsePositions[i]);
    const int64_t interval = static_cast<int64_t>(setUp.pulseIntervals[i]);
    const double difference = static_cast<double>(interval) - median;
    const int64_t end = floorOf(difference * 0.5 + median * a);

    const double g1 = difference * 0.5 + median * a;
    const double d1 = median * c1;
    double x = 0.0;
    int64_t index = 0;
    for (int64_t j = 0; j <= end; ++j) {
      x = literalRoot([&](double t) { return ((g1 * t - d1) * t + d1) * t - static_cast<double>(j); },
                      [&](double t) { return (3 * g1 * t - 2 * d1) * t + d1; }, x);
      const double place = lastPlace * ((1 - x) * c1 + a * (x * x)) * x;
      while (index < setUp.modelLength - 1 && place >= static_cast<double>(index + 1)) ++index;
      writeSample(series, p + j, beatValue(beat, index, place));
    }

    const double g2 = difference * 0.5 + (1 - a) * median;
    const double d2 = median * c2;
    x = 0.0;
    index = setUp.modelLength - 1;
    for (int64_t j = interval - 1; j >= end + 1; --j) {
      x = literalRoot(
          [&](double t) { return ((g2 * t - d2) * t + d2) * t - static_cast<double>(interval - j); },
          [&](double t) { return (3 * g2 * t - 2 * d2) * t + d2; }, x);
      const double place = lastPlace * (1 - ((1 - x) * c2 + (1 - a) * (x * x)) * x);
      while (index > 0 && static_cast<double>(index) > place) --index;
      writeSample(series, p + j, beatValue(beat, index, place));
    }
  }
}

double literalPulseModel(std::vector<double>& series, const std::vector<double>& pulsePositions,
                         int32_t heartPeriod) {
  if (pulsePositions.size() < 3) {
    for (double& value : series) value = 0.0;
    return 0.0;
  }
  const LiteralModelSetUp setUp = literalModelSetUp(pulsePositions, heartPeriod);
  const double a = literalWarpFit(series, pulsePositions, setUp);
  const std::vector<std::vector<double>> warpedBeats =
      literalWarpedBeats(series, pulsePositions, setUp, literalWarpTable(a, setUp));
  std::vector<std::vector<double>> epochs = literalEpochs(warpedBeats, setUp);
  std::vector<std::vector<double>> modelEpochs;
  literalPrincipalComponentModel(3, epochs, modelEpochs);
  literalWriteBack(series, pulsePositions, setUp, a,
                   literalReassembledBeats(warpedBeats, modelEpochs, setUp));
  return a;
}

} // namespace emeg
