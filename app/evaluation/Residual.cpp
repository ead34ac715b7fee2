#include "app/evaluation/Residual.h"

#include "app/evaluation/EvaluatedRecording.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace emeg {

namespace {

constexpr int64_t blockLength = 65536; // time points

/// Time points of a scan within the recording, and of the volume's length on both sides of it.
struct ScanSpan {
  int64_t begin = 0, end = 0;
  int64_t nearBegin = 0, nearEnd = 0;
  int64_t count() const { return end - begin; }
};

std::vector<ScanSpan> spansOf(const SimulatedTruth& truth, double fs, int64_t n) {
  const auto timePoint = [&](double seconds) {
    return static_cast<int64_t>(std::clamp(std::ceil(seconds * fs), 0.0, static_cast<double>(n)));
  };
  std::vector<ScanSpan> spans;
  for (const SimulatedScan& scan : truth.scans) {
    spans.push_back({timePoint(scan.firstVolumeOnset), timePoint(scan.endOfScan),
                     timePoint(scan.firstVolumeOnset - truth.volumeDuration),
                     timePoint(scan.endOfScan + truth.volumeDuration)});
  }
  return spans;
}

/// Index of the scan that each time point of a block lies in, or one of these.
constexpr int nearScan = -1;
constexpr int outside = -2;

void placeTimePoints(const std::vector<ScanSpan>& spans, int64_t first, std::vector<int>& places) {
  const auto count = static_cast<int64_t>(places.size());
  const auto mark = [&](int64_t begin, int64_t end, int place) {
    for (int64_t t = std::max<int64_t>(begin - first, 0); t < std::min(end - first, count); ++t)
      places[static_cast<size_t>(t)] = place;
  };
  std::fill(places.begin(), places.end(), outside);
  for (const ScanSpan& span : spans) mark(span.nearBegin, span.nearEnd, nearScan);
  for (size_t i = 0; i < spans.size(); ++i) mark(spans[i].begin, spans[i].end, static_cast<int>(i));
}

struct Squares {
  double artifact = 0, residual = 0;
};

struct Sums {
  std::vector<Squares> scans;
  double outside = 0;
};

double rootMean(double sum, int64_t count) {
  return count > 0 ? std::sqrt(sum / static_cast<double>(count)) : 0;
}

ChannelResidual residualOf(const Sums& sums, const std::vector<ScanSpan>& spans, int64_t outsideCount) {
  ChannelResidual residual;
  Squares all;
  int64_t count = 0;
  for (size_t i = 0; i < spans.size(); ++i) {
    const Squares& squares = sums.scans[i];
    residual.scans.push_back(
        {rootMean(squares.artifact, spans[i].count()), rootMean(squares.residual, spans[i].count())});
    all.artifact += squares.artifact;
    all.residual += squares.residual;
    count += spans[i].count();
  }
  residual.artifactUv = rootMean(all.artifact, count);
  residual.residualUv = rootMean(all.residual, count);
  residual.outsideUv = rootMean(sums.outside, outsideCount);
  return residual;
}

} // namespace

double ScanResidual::decibels() const {
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
  const std::vector<ScanSpan> spans = spansOf(truth, fs, n);
  const double correctedUnit = corrected.microvoltsPerUnit(truth.microvoltsPerUnit);
  const double recordedUnit = recorded.microvoltsPerUnit(truth.microvoltsPerUnit);

  std::vector<Sums> sums(static_cast<size_t>(channels), {std::vector<Squares>(spans.size()), 0});
  std::vector<int> places;
  std::vector<float> correctedBlock, recordedBlock, cleanBlock, pulseBlock;
  int64_t outsideCount = 0;
  for (int64_t first = 0; first < n; first += blockLength) {
    const int64_t count = std::min(blockLength, n - first);
    corrected.read(first, count, correctedBlock);
    recorded.read(first, count, recordedBlock);
    cleanFile.read(first, count, cleanBlock);
    if (pulse) pulse->read(first, count, pulseBlock);
    places.resize(static_cast<size_t>(count));
    placeTimePoints(spans, first, places);
    outsideCount += std::count(places.begin(), places.end(), outside);
    for (int64_t c = 0; c < channels; ++c) {
      Sums& sum = sums[static_cast<size_t>(c)];
      for (int64_t t = 0; t < count; ++t) {
        const auto index = static_cast<size_t>(c * count + t);
        const double after = static_cast<double>(correctedBlock[index]) * correctedUnit;
        const double before = static_cast<double>(recordedBlock[index]) * recordedUnit;
        const double clean = static_cast<double>(cleanBlock[index]);
        const double withHeart = clean + (pulse ? static_cast<double>(pulseBlock[index]) : 0.0);
        const double target = heartRemoved ? clean : withHeart;
        const int place = places[static_cast<size_t>(t)];
        if (place >= 0) {
          Squares& squares = sum.scans[static_cast<size_t>(place)];
          squares.artifact += (before - withHeart) * (before - withHeart);
          squares.residual += (after - target) * (after - target);
        } else if (place == outside) {
          sum.outside += (after - before) * (after - before);
        }
      }
    }
  }

  std::vector<ChannelResidual> residuals;
  for (size_t c = 0; c < sums.size(); ++c) {
    ChannelResidual residual = residualOf(sums[c], spans, outsideCount);
    residual.name = c < truth.channelNames.size() ? truth.channelNames[c] : std::to_string(c);
    residuals.push_back(residual);
  }
  return residuals;
}

} // namespace emeg
