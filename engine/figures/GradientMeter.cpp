#include "engine/figures/GradientMeter.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace emeg {

namespace {

constexpr double lowestComparedHz = 1;
constexpr double highestComparedHz = 100;
constexpr double usablePartOfRate = 0.4;
constexpr size_t mostAsked = 7; // witnesses of what concerns the whole scan

} // namespace

GradientMeter::GradientMeter(MeteredCorrection correction) : correction_(std::move(correction)) {
  scans_.reserve(correction_.scans.size());
  for (const FoundScan& scan : correction_.scans)
    scans_.push_back({comparedRange(),
                      sideOf(scan, correction_.samplingFrequency, correction_.nrOfTimePoints),
                      sideOf(scan, correction_.samplingFrequencyAfter, correction_.nrOfTimePointsAfter)});
  channels_.resize(static_cast<size_t>(std::max(correction_.nrOfChannels, 0)));
  for (Channel& channel : channels_) {
    for (const Scan& scan : scans_) {
      if (!scan.isMeasurable()) continue;
      channel.before.scans.push_back(
          {VolumeAverage(scan.before.grid, scan.range, 1, VolumeAverage::Drift::Measured),
           WelchSpectrum(scan.before.windows)});
      channel.after.scans.push_back(
          {VolumeAverage(scan.after.grid, scan.range, correction_.unscale, VolumeAverage::Drift::Ignored),
           WelchSpectrum(scan.after.windows)});
    }
  }
}

/// What both rates hold and no filter took away.
FrequencyRange GradientMeter::comparedRange() const {
  FrequencyRange range;
  const double rate = std::min(correction_.samplingFrequency, correction_.samplingFrequencyAfter);
  range.lowest = std::max(lowestComparedHz, correction_.highPass);
  range.highest = std::min(highestComparedHz, usablePartOfRate * rate);
  if (correction_.lowPass > 0) range.highest = std::min(range.highest, correction_.lowPass);
  return range;
}

GradientMeter::Side GradientMeter::sideOf(const FoundScan& scan, double samplingFrequency,
                                          int64_t nrOfTimePoints) const {
  const MRSequence& sequence = scan.sequence;
  const double from = sequence.firstTriggerTime;
  const double to = from + sequence.nrOfVolumes * sequence.volumeDuration;
  return {VolumeGrid(sequence, samplingFrequency, nrOfTimePoints, correction_.scans),
          WelchWindows(from, to, comparedRange().highest, samplingFrequency, nrOfTimePoints)};
}

void GradientMeter::addBefore(int channel, std::span<const double> samples, FigureWorkspace& workspace) {
  add(channels_.at(static_cast<size_t>(channel)).before, correction_.nrOfTimePoints, samples, workspace);
}

void GradientMeter::addAfter(int channel, std::span<const double> samples, FigureWorkspace& workspace) {
  add(channels_.at(static_cast<size_t>(channel)).after, correction_.nrOfTimePointsAfter, samples, workspace);
}

void GradientMeter::add(Stream& stream, int64_t announced, std::span<const double> samples,
                        FigureWorkspace& workspace) {
  const auto count = static_cast<int64_t>(samples.size());
  if (count > announced - stream.nrOfSamples)
    throw std::length_error("more samples are measured than the channel has");
  stream.nrOfSamples += count;
  for (Accumulators& scan : stream.scans) {
    scan.average.add(samples);
    scan.spectrum.add(samples, workspace);
  }
}

ChannelQuality GradientMeter::qualityOf(const Scan& scan, const Accumulators& before,
                                        const Accumulators& after) const {
  const MRSequence& sequence = scan.before.grid.sequence();
  const PowerSpectrum spectrumBefore = before.spectrum.spectrum(1);
  const PowerSpectrum spectrumAfter = after.spectrum.spectrum(correction_.unscale * correction_.unscale);
  ChannelQuality quality;
  quality.before = before.average.volumeLocked();
  quality.after = after.average.volumeLocked();
  quality.medianImagingArtifactBefore = before.average.medianImagingArtifact();
  quality.medianImagingArtifactAfter = after.average.medianImagingArtifact();
  quality.bandsBefore = bandPowersOf(spectrumBefore);
  quality.bandsAfter = bandPowersOf(spectrumAfter);
  quality.peaksBefore = slicePeaksOf(spectrumBefore, sequence, scan.range.lowest);
  quality.peaksAfter = slicePeaksOf(spectrumAfter, sequence, scan.range.lowest);
  return quality;
}

QualityFigures GradientMeter::figuresOf(const Scan& scan, size_t measurable) const {
  QualityFigures figures;
  figures.range = scan.range;
  for (const Channel& channel : channels_)
    figures.channels.push_back(
        qualityOf(scan, channel.before.scans[measurable], channel.after.scans[measurable]));
  std::vector<double> drifts, outside;
  const std::vector<size_t> witnesses = witnessesOf(figures.channels, correction_.showsScan);
  const size_t asked = std::min(witnesses.size(), mostAsked);
  for (size_t i = 0; i < asked; ++i) {
    const size_t c = witnesses[(2 * i + 1) * witnesses.size() / (2 * asked)];
    const VolumeAverage& average = channels_[c].before.scans[measurable].average;
    drifts.push_back(average.drift());
    outside.push_back(average.artifactSecondsOutside());
  }
  figures.drift = median(drifts);
  figures.artifactSecondsOutside = median(outside);
  return figures;
}

std::vector<std::optional<QualityFigures>> GradientMeter::figures() const {
  for (const Channel& channel : channels_)
    if (channel.before.nrOfSamples != correction_.nrOfTimePoints ||
        channel.after.nrOfSamples != correction_.nrOfTimePointsAfter)
      throw std::logic_error("samples are missing: a channel was not measured to its end");
  std::vector<std::optional<QualityFigures>> all(scans_.size());
  size_t measurable = 0;
  for (size_t i = 0; i < scans_.size(); ++i)
    if (scans_[i].isMeasurable()) all[i] = figuresOf(scans_[i], measurable++);
  return all;
}

} // namespace emeg
