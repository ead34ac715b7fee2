#include "app/evaluation/ExplainedArtifact.h"

#include "app/evaluation/EvaluatedRecording.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

namespace emeg {

namespace {

constexpr int64_t blockLength = 65536; // time points

double explainedPart(double artifactSquares, double residualSquares) {
  if (!(artifactSquares > 0)) return std::numeric_limits<double>::quiet_NaN();
  return 1 - residualSquares / artifactSquares;
}

} // namespace

double ChannelExplained::explained() const {
  return explainedPart(artifactUv * artifactUv, residualUv * residualUv);
}

double explainedInAll(const std::vector<ChannelExplained>& channels) {
  double artifactSquares = 0;
  double residualSquares = 0;
  for (const ChannelExplained& channel : channels) {
    artifactSquares += channel.artifactUv * channel.artifactUv;
    residualSquares += channel.residualUv * channel.residualUv;
  }
  return explainedPart(artifactSquares, residualSquares);
}

std::vector<ChannelExplained> measureExplained(const std::string& correctedPath, const SimulatedTruth& truth,
                                               double firstSecond, double lastSecond,
                                               const std::string& gradientCorrectedPath) {
  EvaluatedRecording corrected(correctedPath);
  EvaluatedRecording clean(truth.cleanPath);
  EvaluatedRecording pulse(truth.pulsePath);
  requireSameShape(corrected, clean);
  requireSameShape(pulse, clean);
  const auto before =
      gradientCorrectedPath.empty() ? nullptr : std::make_unique<EvaluatedRecording>(gradientCorrectedPath);
  if (before) requireSameShape(*before, clean);

  const double fs = clean.samplingFrequency();
  const int64_t n = clean.nrOfTimePoints();
  const auto nearest = [&](double seconds) {
    return static_cast<int64_t>(std::llround(std::clamp(seconds * fs, 0.0, static_cast<double>(n - 1))));
  };
  const int64_t begin = nearest(firstSecond);
  const int64_t end = nearest(lastSecond) + 1;
  const int64_t channels = clean.nrOfChannels();
  const double correctedUnit = corrected.microvoltsPerUnit(truth.microvoltsPerUnit);
  const double beforeUnit = before ? before->microvoltsPerUnit(truth.microvoltsPerUnit) : 1.0;

  std::vector<double> artifactSquares(static_cast<size_t>(channels));
  std::vector<double> residualSquares(static_cast<size_t>(channels));
  std::vector<float> correctedBlock, cleanBlock, pulseBlock, beforeBlock;
  for (int64_t first = begin; first < end; first += blockLength) {
    const int64_t count = std::min(blockLength, end - first);
    corrected.read(first, count, correctedBlock);
    clean.read(first, count, cleanBlock);
    pulse.read(first, count, pulseBlock);
    if (before) before->read(first, count, beforeBlock);
    for (int64_t c = 0; c < channels; ++c) {
      for (int64_t t = 0; t < count; ++t) {
        const auto index = static_cast<size_t>(c * count + t);
        const double artifact = static_cast<double>(pulseBlock[index]);
        const double withoutGradient = before ? static_cast<double>(beforeBlock[index]) * beforeUnit
                                              : static_cast<double>(cleanBlock[index]) + artifact;
        const double estimate = withoutGradient - static_cast<double>(correctedBlock[index]) * correctedUnit;
        artifactSquares[static_cast<size_t>(c)] += artifact * artifact;
        residualSquares[static_cast<size_t>(c)] += (artifact - estimate) * (artifact - estimate);
      }
    }
  }

  std::vector<ChannelExplained> result;
  const auto count = static_cast<double>(std::max<int64_t>(end - begin, 1));
  for (size_t c = 0; c < artifactSquares.size(); ++c)
    result.push_back({c < truth.channelNames.size() ? truth.channelNames[c] : std::to_string(c),
                      std::sqrt(artifactSquares[c] / count), std::sqrt(residualSquares[c] / count)});
  return result;
}

} // namespace emeg
