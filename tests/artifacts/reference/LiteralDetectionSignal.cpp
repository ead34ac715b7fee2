#include "tests/artifacts/reference/LiteralDetectionSignal.h"

#include "dsp/Medians.h"

#include <cmath>

namespace emeg {

namespace {

constexpr std::size_t maxNrOfBeats = 10000;

template <typename T>
T& at(std::vector<T>& values, int32_t i) {
  return values[static_cast<std::size_t>(i)];
}

template <typename T>
const T& at(const std::vector<T>& values, int32_t i) {
  return values[static_cast<std::size_t>(i)];
}

int32_t countOf(const std::vector<double>& values) {
  return static_cast<int32_t>(values.size());
}

std::vector<double> zeros(int32_t count) {
  return std::vector<double>(static_cast<std::size_t>(count), 0.0);
}

void rotate(std::vector<double>& values, int32_t shift) {
  const int32_t count = countOf(values);
  const std::vector<double> old = values;
  for (int32_t k = 0; k < count; ++k) at(values, ((k + shift) % count + count) % count) = at(old, k);
}

} // namespace

std::vector<double> literalGaussianWeights(int32_t period) {
  std::vector<double> g = zeros(2 * period + 1);
  for (int32_t j = -period; j <= period; ++j) {
    const double x = j / (0.4 * period);
    at(g, period + j) = std::exp(-(x * x)) / (2 * period + 1);
  }
  return g;
}

double literalSegmentEnergy(const std::vector<double>& channel, int32_t length, int32_t position,
                            int32_t period) {
  double sum = 0.0;
  for (int32_t j = -period; j <= period; ++j) {
    const double s = literalSample(channel, length, position + j);
    sum += s * s;
  }
  return sum;
}

double literalNormFactor(const std::vector<double>& channel, int32_t length, int32_t position,
                         int32_t period) {
  const double energy = literalSegmentEnergy(channel, length, position, period);
  return energy > 0.0 ? 1.0 / std::sqrt(energy) : 0.0;
}

bool literalHasEnergy(const std::vector<double>& channel, int32_t length) {
  double sum = 0.0;
  for (int32_t i = 0; i < length; ++i) sum += at(channel, i) * at(channel, i);
  return sum > 0.0;
}

void literalAddBeat(LiteralTrackedChannel& tracked, const std::vector<double>& channel, int32_t length,
                    int32_t beat, int32_t period) {
  const double f = literalNormFactor(channel, length, beat, period);
  for (int32_t k = 0; k <= 4 * period; ++k) {
    const int32_t i = beat - 2 * period + k;
    at(tracked.runningTemplate, k) += f * literalSample(channel, length, i);
    const bool rising = literalSample(channel, length, i + 1) > literalSample(channel, length, i - 1);
    at(tracked.slopeVotes, k) += rising ? 1.0 : -1.0;
  }
}

std::vector<double> literalTrackingScores(const LiteralTrackedChannel& tracked,
                                          const std::vector<double>& channel, int32_t length,
                                          int32_t lastBeat, const LiteralPeriod& heart) {
  const int32_t period = heart.period;
  const std::vector<double> g = literalGaussianWeights(period);
  std::vector<double> scores;
  for (int32_t d = heart.shortest; d <= heart.longest; ++d) {
    const int32_t position = lastBeat + d;
    const double f = literalNormFactor(channel, length, position, period);
    double q = 0.0;
    for (int32_t j = -period; j <= period; ++j) {
      const double both =
          f * literalSample(channel, length, position + j) + at(tracked.runningTemplate, 2 * period + j);
      q += at(g, period + j) * (both * both);
    }
    scores.push_back(q);
  }
  return scores;
}

int32_t literalIntervalChoice(const std::vector<double>& scores, int32_t shortest, int32_t previous) {
  const int32_t longest = shortest + countOf(scores) - 1;
  const auto q = [&](int32_t d) { return at(scores, d - shortest); };
  int32_t choice = previous;
  double best = -1e50;
  for (int32_t d = shortest + 2; d <= longest; ++d) {
    if (q(d - 1) > q(d - 2) && q(d - 1) > q(d) && q(d - 1) > best) {
      best = q(d - 1);
      choice = d - 1;
    }
  }
  return choice;
}

std::vector<double> literalAlignmentCosts(const LiteralTrackedChannel& tracked, int32_t nrOfBeats,
                                          int32_t period) {
  const std::vector<double> g = literalGaussianWeights(period);
  const double n = nrOfBeats;
  std::vector<double> costs;
  for (int32_t sigma = -period; sigma <= period; ++sigma) {
    double cost = 0.0;
    for (int32_t j = -period; j <= period; ++j) {
      const double votes = at(tracked.slopeVotes, 2 * period + sigma + j);
      cost += (n - votes * votes / n) * at(g, period + j);
    }
    costs.push_back(cost);
  }
  return costs;
}

int32_t literalAlignmentChoice(const std::vector<double>& costs, int32_t period) {
  int32_t choice = -period;
  double smallest = at(costs, 0);
  for (int32_t sigma = -period; sigma <= period; ++sigma) {
    if (at(costs, period + sigma) < smallest) {
      smallest = at(costs, period + sigma);
      choice = sigma;
    }
  }
  return choice;
}

LiteralTracking literalTracking(const std::vector<std::vector<double>>& series, int32_t length,
                                const LiteralPeriod& heart) {
  LiteralTracking tracking;
  const int32_t period = heart.period;
  if (period <= 0) return tracking;

  tracking.beats.push_back(3 * period);
  for (const std::vector<double>& channel : series) {
    LiteralTrackedChannel tracked{zeros(4 * period + 1), zeros(4 * period + 1),
                                  literalHasEnergy(channel, length)};
    literalAddBeat(tracked, channel, length, tracking.beats.back(), period);
    tracking.channels.push_back(tracked);
  }

  int32_t previous = period;
  while (tracking.beats.size() < maxNrOfBeats &&
         tracking.beats.back() < length - 2 * period - heart.longest) {
    const int32_t last = tracking.beats.back();
    std::vector<double> choices;
    for (std::size_t c = 0; c < series.size(); ++c) {
      int32_t choice = previous;
      if (tracking.channels[c].hasEnergy) {
        const std::vector<double> scores =
            literalTrackingScores(tracking.channels[c], series[c], length, last, heart);
        choice = literalIntervalChoice(scores, heart.shortest, previous);
      }
      choices.push_back(choice);
    }
    const int32_t interval = static_cast<int32_t>(sortMedian(choices.data(), countOf(choices)));
    previous = interval;
    tracking.intervals.push_back(interval);
    tracking.beats.push_back(last + interval);
    const int32_t n = static_cast<int32_t>(tracking.beats.size());

    for (std::size_t c = 0; c < series.size(); ++c)
      literalAddBeat(tracking.channels[c], series[c], length, tracking.beats.back(), period);

    // A channel without energy has equal costs everywhere and would vote for the first of them every time.
    std::vector<double> alignments;
    for (std::size_t c = 0; c < series.size(); ++c) {
      if (!tracking.channels[c].hasEnergy) continue;
      const std::vector<double> costs = literalAlignmentCosts(tracking.channels[c], n, period);
      alignments.push_back(literalAlignmentChoice(costs, period));
    }
    const int32_t shift = -static_cast<int32_t>(sortMedian(alignments.data(), countOf(alignments)));
    tracking.shifts.push_back(shift);
    if (shift != 0) {
      for (int32_t& beat : tracking.beats) beat -= shift;
      for (LiteralTrackedChannel& tracked : tracking.channels) {
        rotate(tracked.runningTemplate, shift);
        rotate(tracked.slopeVotes, shift);
      }
    }
  }
  return tracking;
}

std::vector<int32_t> literalTrackBeats(const std::vector<std::vector<double>>& series, int32_t length,
                                       const LiteralPeriod& heart) {
  return literalTracking(series, length, heart).beats;
}

LiteralBeatTemplate literalBeatTemplate(const std::vector<double>& channel, int32_t length,
                                        const std::vector<int32_t>& beats, int32_t period) {
  const std::vector<double> g = literalGaussianWeights(period);
  const int32_t n = static_cast<int32_t>(beats.size());
  LiteralBeatTemplate result;
  result.resemblance = zeros(n);
  result.samples = zeros(2 * period + 1);
  std::vector<double> w;
  for (const int32_t beat : beats) w.push_back(literalNormFactor(channel, length, beat, period));

  for (int32_t k1 = 0; k1 < n; ++k1) {
    for (int32_t k2 = k1 + 1; k2 < n; ++k2) {
      double dot = 0.0;
      for (int32_t i = 0; i <= 2 * period; ++i) {
        dot += at(g, i) * literalSample(channel, length, at(beats, k1) - period + i) *
               literalSample(channel, length, at(beats, k2) - period + i);
      }
      at(result.resemblance, k1) -= dot * at(w, k1) * at(w, k2);
      at(result.resemblance, k2) -= dot * at(w, k1) * at(w, k2);
    }
  }

  result.threshold = histogramMedian(result.resemblance.data(), n);
  for (int32_t k = 0; k < n; ++k) {
    const bool selected = at(result.resemblance, k) < result.threshold;
    result.selected.push_back(selected);
    if (!selected) continue;
    for (int32_t i = 0; i <= 2 * period; ++i)
      at(result.samples, i) += at(w, k) * literalSample(channel, length, at(beats, k) - period + i);
  }
  return result;
}

std::vector<float> literalChannelSignal(const std::vector<double>& channel, int32_t length,
                                        const std::vector<double>& beatTemplate, int32_t period) {
  const std::vector<double> g = literalGaussianWeights(period);
  std::vector<float> signal(static_cast<std::size_t>(length), 0.0F);
  for (int32_t position = period; position <= length - period - 1; ++position) {
    double sum = 0.0;
    for (int32_t i = 0; i <= 2 * period; ++i)
      sum += -literalSample(channel, length, position - period + i) * at(g, i) * at(beatTemplate, i);
    const double energy = literalSegmentEnergy(channel, length, position, period);
    at(signal, position) = energy > 0.0 ? static_cast<float>(sum / std::sqrt(energy)) : 0.0F;
  }
  return signal;
}

std::vector<float> literalMedianSignal(const std::vector<std::vector<float>>& channelSignals,
                                       int32_t length) {
  std::vector<float> signal;
  for (int32_t i = 0; i < length; ++i) {
    std::vector<double> values;
    for (const std::vector<float>& channelSignal : channelSignals)
      values.push_back(static_cast<double>(at(channelSignal, i)));
    signal.push_back(static_cast<float>(sortMedian(values.data(), countOf(values))));
  }
  return signal;
}

std::vector<float> literalDetectionSignal(const std::vector<std::vector<double>>& series, int32_t length,
                                          const LiteralPeriod& heart) {
  bool anyEnergy = false;
  for (const std::vector<double>& channel : series)
    anyEnergy = anyEnergy || literalHasEnergy(channel, length);
  if (heart.period <= 0 || !anyEnergy) return {};

  const std::vector<int32_t> beats = literalTrackBeats(series, length, heart);
  std::vector<std::vector<float>> channelSignals;
  for (const std::vector<double>& channel : series) {
    const LiteralBeatTemplate beatTemplate = literalBeatTemplate(channel, length, beats, heart.period);
    channelSignals.push_back(literalChannelSignal(channel, length, beatTemplate.samples, heart.period));
  }
  return literalMedianSignal(channelSignals, length);
}

} // namespace emeg
