#include "app/evaluation/Residual.h"

#include "app/evaluation/EvaluatedRecording.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace emeg {

namespace {

constexpr int64_t blockLength = 65536; // time points

struct Sums {
  double artifact = 0, residual = 0, outside = 0;
};

double rootMean(double sum, int64_t count) {
  return count > 0 ? std::sqrt(sum / static_cast<double>(count)) : 0;
}

} // namespace

double ChannelResidual::decibels() const {
  if (!(artifactUv > 0)) return std::numeric_limits<double>::quiet_NaN();
  return 20 * std::log10(artifactUv / residualUv);
}

std::vector<ChannelResidual> measureResiduals(const std::string& correctedPath, const SimulatedTruth& truth,
                                              bool heartRemoved) {
  EvaluatedRecording corrected(correctedPath);
  EvaluatedRecording recorded(truth.recordingPath);
  EvaluatedRecording cleanFile(truth.cleanPath);
  const auto pulse =
      truth.pulsePath.empty() ? nullptr : std::make_unique<EvaluatedRecording>(truth.pulsePath);
  requireSameShape(corrected, recorded);
  requireSameShape(cleanFile, recorded);
  if (pulse) requireSameShape(*pulse, recorded);

  const int64_t n = recorded.nrOfTimePoints();
  const int64_t channels = recorded.nrOfChannels();
  const double fs = recorded.samplingFrequency();
  const auto scanBegin = static_cast<int64_t>(std::ceil(truth.firstVolumeOnset * fs));
  const auto scanEnd = std::min(static_cast<int64_t>(std::ceil(truth.endOfScan * fs)), n);
  const auto margin = static_cast<int64_t>(std::ceil(truth.volumeDuration * fs));
  const double correctedUnit = corrected.microvoltsPerUnit(truth.microvoltsPerUnit);
  const double recordedUnit = recorded.microvoltsPerUnit(truth.microvoltsPerUnit);

  std::vector<Sums> sums(static_cast<size_t>(channels));
  std::vector<float> correctedBlock, recordedBlock, cleanBlock, pulseBlock;
  int64_t outsideCount = 0;
  for (int64_t first = 0; first < n; first += blockLength) {
    const int64_t count = std::min(blockLength, n - first);
    corrected.read(first, count, correctedBlock);
    recorded.read(first, count, recordedBlock);
    cleanFile.read(first, count, cleanBlock);
    if (pulse) pulse->read(first, count, pulseBlock);
    for (int64_t c = 0; c < channels; ++c) {
      Sums& sum = sums[static_cast<size_t>(c)];
      for (int64_t t = 0; t < count; ++t) {
        const auto index = static_cast<size_t>(c * count + t);
        const double after = static_cast<double>(correctedBlock[index]) * correctedUnit;
        const double before = static_cast<double>(recordedBlock[index]) * recordedUnit;
        const double clean = static_cast<double>(cleanBlock[index]);
        const double withHeart = clean + (pulse ? static_cast<double>(pulseBlock[index]) : 0.0);
        const double target = heartRemoved ? clean : withHeart;
        const int64_t sample = first + t;
        if (sample >= scanBegin && sample < scanEnd) {
          sum.artifact += (before - withHeart) * (before - withHeart);
          sum.residual += (after - target) * (after - target);
        } else if (sample < scanBegin - margin || sample >= scanEnd + margin) {
          sum.outside += (after - before) * (after - before);
          outsideCount += c == 0 ? 1 : 0;
        }
      }
    }
  }

  std::vector<ChannelResidual> residuals;
  for (size_t c = 0; c < sums.size(); ++c) {
    ChannelResidual residual;
    residual.name = c < truth.channelNames.size() ? truth.channelNames[c] : std::to_string(c);
    residual.artifactUv = rootMean(sums[c].artifact, scanEnd - scanBegin);
    residual.residualUv = rootMean(sums[c].residual, scanEnd - scanBegin);
    residual.outsideUv = rootMean(sums[c].outside, outsideCount);
    residuals.push_back(residual);
  }
  return residuals;
}

} // namespace emeg
