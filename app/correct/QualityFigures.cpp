#include "app/correct/QualityFigures.h"

#include "dsp/PowerOfTen.h"
#include "engine/figures/GradientMeter.h"

#include <algorithm>
#include <span>

namespace emeg {

namespace {

MeteredCorrection meteredCorrection(const RecordingHeader& before, const RecordingHeader& after,
                                    const CorrectionPlan& plan, const std::vector<FoundScan>& scans) {
  MeteredCorrection correction;
  for (const FoundScan& scan : scans) correction.scans.push_back({scan.sequence, scan.begin, scan.end});
  correction.nrOfChannels = before.nrOfChannels();
  for (const ChannelRole& role : plan.channels.roles()) correction.showsScan.push_back(role.showsSequence);
  correction.samplingFrequency = before.samplingFrequency;
  correction.samplingFrequencyAfter = before.samplingFrequency / plan.decimationFactor;
  correction.nrOfTimePoints = before.nrOfTimePoints;
  correction.nrOfTimePointsAfter = after.nrOfTimePoints;
  correction.highPass = plan.dialogue.highPass;
  correction.lowPass = plan.dialogue.lowPass;
  correction.unscale = 1 / powerOfTen(plan.dialogue.scalingOrder);
  return correction;
}

/// Hands out a whole recording, block after block: `take(channel, samples)`.
template <typename Take>
void readBlocks(RecordingReader& recording, const std::function<void(double)>& progress, const Take& take) {
  const RecordingHeader& header = recording.header();
  const int64_t blockLength = convenientBlockLength(header.nrOfChannels());
  std::vector<double> values;
  for (int64_t done = 0; done < header.nrOfTimePoints;) {
    const int64_t count = std::min(blockLength, header.nrOfTimePoints - done);
    const auto samples = static_cast<size_t>(count);
    values.resize(samples * header.channels.size());
    recording.read(done, count, values);
    for (size_t c = 0; c < header.channels.size(); ++c)
      take(static_cast<int>(c), std::span<const double>(values).subspan(c * samples, samples));
    done += count;
    progress(static_cast<double>(done) / static_cast<double>(header.nrOfTimePoints));
  }
}

} // namespace

std::vector<std::optional<QualityFigures>> measureQuality(RecordingReader& before, RecordingReader& after,
                                                          const CorrectionPlan& plan,
                                                          const std::vector<FoundScan>& scans,
                                                          const std::function<void(double)>& progress) {
  GradientMeter meter(meteredCorrection(before.header(), after.header(), plan, scans));
  FigureWorkspace workspace;
  readBlocks(
      before, [&](double finished) { progress(finished / 2); },
      [&](int channel, std::span<const double> samples) { meter.addBefore(channel, samples, workspace); });
  readBlocks(
      after, [&](double finished) { progress((1 + finished) / 2); },
      [&](int channel, std::span<const double> samples) { meter.addAfter(channel, samples, workspace); });
  return meter.figures();
}

} // namespace emeg
