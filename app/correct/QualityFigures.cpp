#include "app/correct/QualityFigures.h"

#include "converter/steps/PowerOfTen.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double highestComparedHz = 100;
constexpr double usablePartOfRate = 0.4;
constexpr double visibleRatio = 3; // of power at lines to power beside them

VolumeAverage averageOf(RecordingReader& recording, double samplingFrequency,
                        const std::vector<FoundScan>& scans, size_t scan, double factor,
                        const std::function<void(double)>& progress) {
  const RecordingHeader& header = recording.header();
  VolumeAverage average(scans[scan].sequence, samplingFrequency, header.nrOfChannels());
  for (const FoundScan& corrected : scans) average.addCorrectedStretch(corrected.begin, corrected.end);
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

double ChannelQuality::artifactBefore() const {
  return std::max(before.artifact(), peaksBefore.rms);
}

double ChannelQuality::artifactAfter() const {
  return std::max(after.artifact(), peaksAfter.rms);
}

double ChannelQuality::remaining() const {
  return artifactBefore() > 0 ? artifactAfter() / artifactBefore() : 0;
}

bool ChannelQuality::isVisible() const {
  return after.lineToBackground > visibleRatio || peaksAfter.toBackground > visibleRatio;
}

std::optional<QualityFigures> measureQuality(RecordingReader& before, RecordingReader& after,
                                             const CorrectionPlan& plan, const std::vector<FoundScan>& scans,
                                             size_t scan, const std::function<void(double)>& progress) {
  const MRSequence& sequence = scans[scan].sequence;
  const double rate = before.header().samplingFrequency;
  const double rateAfter = rate / plan.decimationFactor;
  const double unscale = 1 / powerOfTen(plan.dialogue.scalingOrder);
  const VolumeAverage averageBefore = averageOf(before, rate, scans, scan, 1, quarter(progress, 0));
  if (!averageBefore.isMeasurable()) return std::nullopt;
  const VolumeAverage averageAfter = averageOf(after, rateAfter, scans, scan, unscale, quarter(progress, 1));

  QualityFigures figures;
  FrequencyRange& range = figures.range;
  range.lowest = std::max(1.0, plan.dialogue.highPass);
  range.highest = std::min(highestComparedHz, usablePartOfRate * rateAfter);
  if (plan.dialogue.lowPass > 0) range.highest = std::min(range.highest, plan.dialogue.lowPass);

  const double from = sequence.firstTriggerTime;
  const double to = from + sequence.nrOfVolumes * sequence.volumeDuration;
  const auto spectraBefore = measureSpectra(before, from, to, range.highest, quarter(progress, 2));
  auto spectraAfter = measureSpectra(after, from, to, range.highest, quarter(progress, 3));
  for (PowerSpectrum& spectrum : spectraAfter)
    for (double& power : spectrum.powers) power *= unscale * unscale;

  for (int c = 0; c < before.header().nrOfChannels(); ++c) {
    const auto k = static_cast<size_t>(c);
    ChannelQuality quality;
    quality.before = averageBefore.partOf(c, range);
    quality.after = averageAfter.partOf(c, range);
    quality.medianImagingArtifactBefore = averageBefore.medianImagingArtifact(c);
    quality.medianImagingArtifactAfter = averageAfter.medianImagingArtifact(c);
    quality.bandsBefore = bandPowersOf(spectraBefore[k]);
    quality.bandsAfter = bandPowersOf(spectraAfter[k]);
    quality.peaksBefore = slicePeaksOf(spectraBefore[k], sequence, range.lowest);
    quality.peaksAfter = slicePeaksOf(spectraAfter[k], sequence, range.lowest);
    figures.channels.push_back(quality);
  }
  figures.drift = averageBefore.drift(0);
  figures.artifactSecondsOutside = averageBefore.artifactSecondsOutside(0);
  return figures;
}

} // namespace emeg
