#include "app/correct/QualityFigures.h"

#include "converter/steps/PowerOfTen.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double highestComparedHz = 100;
constexpr double usablePartOfRate = 0.4;

VolumeAverage averageOf(RecordingReader& recording, double samplingFrequency, const MRSequence& sequence,
                        double factor, const std::function<void(double)>& progress) {
  const RecordingHeader& header = recording.header();
  VolumeAverage average(sequence, samplingFrequency, header.nrOfChannels());
  const int64_t blockLength = convenientBlockLength(header.nrOfChannels());
  std::vector<double> values;
  for (int64_t done = 0; done < header.nrOfTimePoints;) {
    const int64_t count = std::min(blockLength, header.nrOfTimePoints - done);
    values.resize(static_cast<size_t>(count) * header.channels.size());
    recording.read(done, count, values);
    for (double& value : values) value *= factor;
    average.add(count, values);
    done += count;
    progress(static_cast<double>(done) / static_cast<double>(header.nrOfTimePoints));
  }
  return average;
}

std::function<void(double)> quarter(const std::function<void(double)>& progress, int number) {
  return [&progress, number](double finished) { progress((number + finished) / 4); };
}

} // namespace

double ChannelQuality::remaining() const {
  return before.artifact() > 0 ? after.artifact() / before.artifact() : 0;
}

std::optional<QualityFigures> measureQuality(RecordingReader& before, RecordingReader& after,
                                             const CorrectionPlan& plan, const MRSequence& sequence,
                                             const std::function<void(double)>& progress) {
  const double rate = before.header().samplingFrequency;
  const double rateAfter = rate / plan.decimationFactor;
  const double unscale = 1 / powerOfTen(plan.dialogue.scalingOrder);
  const VolumeAverage averageBefore = averageOf(before, rate, sequence, 1, quarter(progress, 0));
  if (!averageBefore.isMeasurable()) return std::nullopt;
  const VolumeAverage averageAfter = averageOf(after, rateAfter, sequence, unscale, quarter(progress, 1));

  QualityFigures figures;
  FrequencyRange& range = figures.range;
  range.lowest = std::max(1.0, plan.dialogue.highPass);
  range.highest = std::min(highestComparedHz, usablePartOfRate * rateAfter);
  if (plan.dialogue.lowPass > 0) range.highest = std::min(range.highest, plan.dialogue.lowPass);

  const double from = sequence.firstTriggerTime;
  const double to = from + sequence.nrOfVolumes * sequence.volumeDuration;
  const auto bandsBefore = measureBandPowers(before, from, to, range.highest, quarter(progress, 2));
  auto bandsAfter = measureBandPowers(after, from, to, range.highest, quarter(progress, 3));
  for (BandPowers& bands : bandsAfter)
    for (double& power : bands) power *= unscale * unscale;

  for (int c = 0; c < before.header().nrOfChannels(); ++c) {
    const auto k = static_cast<size_t>(c);
    ChannelQuality quality;
    quality.before = averageBefore.partOf(c, range);
    quality.after = averageAfter.partOf(c, range);
    quality.medianImagingArtifactBefore = averageBefore.medianImagingArtifact(c);
    quality.medianImagingArtifactAfter = averageAfter.medianImagingArtifact(c);
    quality.bandsBefore = bandsBefore[k];
    quality.bandsAfter = bandsAfter[k];
    figures.channels.push_back(quality);
  }
  figures.drift = averageBefore.drift(0);
  figures.artifactSecondsOutside = averageBefore.artifactSecondsOutside(0);
  return figures;
}

} // namespace emeg
