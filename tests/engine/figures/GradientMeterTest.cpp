#include "engine/figures/GradientMeter.h"

#include "tests/engine/figures/PlainFigures.h"
#include "tests/engine/figures/SimulatedScan.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <stdexcept>
#include <thread>

namespace emeg {
namespace {

constexpr double fs = 500;
constexpr double seconds = 80;
using Channels = std::vector<std::vector<double>>;
using Figures = std::vector<std::optional<QualityFigures>>;

/// The scan of 30 volumes goes on for 10 s (`Outside::GoesOn`) behind the volumes that were found, or does
/// not.
enum class Outside { Quiet, GoesOn };

std::vector<double> channelWith(double artifact, double noiseRms, Outside outside, uint32_t seed,
                                double rate = fs) {
  const MRSequence sequence = scanOf30Volumes();
  const double end = 3 + 30 * sequence.volumeDuration + (outside == Outside::GoesOn ? 10 : 0);
  const Signal slices = slicesOf(sequence, artifact, 3, end);
  Signal noise = noiseOf(noiseRms, seed);
  return sampled([&](double s) { return slices(s) + noise(s); }, rate, seconds);
}

Channels channelsWith(double artifact, Outside outside, double rate = fs) {
  Channels channels;
  for (uint32_t seed = 1; seed <= 3; ++seed)
    channels.push_back(channelWith(artifact * seed, 10, outside, seed, rate));
  return channels;
}

MeteredCorrection correctionOf(const Channels& before, const Channels& after, double rateAfter = fs) {
  const MRSequence sequence = scanOf30Volumes();
  MeteredCorrection correction;
  correction.scans = {{sequence, 3, 3 + 30 * sequence.volumeDuration}};
  correction.nrOfChannels = static_cast<int>(before.size());
  correction.showsScan.assign(before.size(), true);
  correction.samplingFrequency = fs;
  correction.samplingFrequencyAfter = rateAfter;
  correction.nrOfTimePoints = static_cast<int64_t>(before.front().size());
  correction.nrOfTimePointsAfter = static_cast<int64_t>(after.front().size());
  return correction;
}

void feed(GradientMeter& meter, int channel, const Channels& before, const Channels& after, size_t longest) {
  FigureWorkspace workspace;
  const auto c = static_cast<size_t>(channel);
  const auto seed = static_cast<uint32_t>(channel + 1);
  inStretches(before[c], longest, seed, [&](auto part) { meter.addBefore(channel, part, workspace); });
  inStretches(after[c], longest, seed + 9, [&](auto part) { meter.addAfter(channel, part, workspace); });
}

Figures measure(const MeteredCorrection& correction, const Channels& before, const Channels& after,
                size_t longest = 100000) {
  GradientMeter meter(correction);
  for (int c = 0; c < correction.nrOfChannels; ++c) feed(meter, c, before, after, longest);
  return meter.figures();
}

void expectSameBits(const Figures& a, const Figures& b) {
  ASSERT_EQ(a.size(), b.size());
  for (size_t scan = 0; scan < a.size(); ++scan) {
    ASSERT_TRUE(a[scan] && b[scan]);
    EXPECT_EQ(a[scan]->drift, b[scan]->drift);
    EXPECT_EQ(a[scan]->artifactSecondsOutside, b[scan]->artifactSecondsOutside);
    for (size_t c = 0; c < a[scan]->channels.size(); ++c) {
      const ChannelQuality &one = a[scan]->channels[c], &other = b[scan]->channels[c];
      EXPECT_EQ(one.before.lineToBackground, other.before.lineToBackground);
      EXPECT_EQ(one.before.medianSliceToBackground, other.before.medianSliceToBackground);
      EXPECT_EQ(one.medianImagingArtifactBefore, other.medianImagingArtifactBefore);
      EXPECT_EQ(one.medianImagingArtifactAfter, other.medianImagingArtifactAfter);
      EXPECT_EQ(one.bandsBefore, other.bandsBefore);
      EXPECT_EQ(one.bandsAfter, other.bandsAfter);
      EXPECT_EQ(one.peaksAfter.rms, other.peaksAfter.rms);
      EXPECT_EQ(one.remaining(), other.remaining());
    }
  }
}

QualityFigures figuresWithFirstChannel(const std::vector<double>& first, Outside outside) {
  Channels channels = channelsWith(300, outside);
  channels[0] = first;
  return *measure(correctionOf(channels, channels), channels, channels)[0];
}

TEST(GradientMeter, MeasuresWhatIsLeftOfTheArtifact) {
  const Channels before = channelsWith(300, Outside::Quiet);
  const Channels after = channelsWith(3, Outside::Quiet);
  const QualityFigures figures = *measure(correctionOf(before, after), before, after)[0];
  ASSERT_EQ(figures.channels.size(), 3u);
  for (const ChannelQuality& channel : figures.channels) {
    EXPECT_NEAR(channel.remaining(), 0.01, 0.005);
    EXPECT_GT(channel.before.medianSliceToBackground, 1000);
  }
  EXPECT_NEAR(figures.channels[2].artifactBefore(), 3 * figures.channels[0].artifactBefore(), 2);
  EXPECT_EQ(figures.artifactSecondsOutside, 0);
  EXPECT_LT(std::abs(figures.drift), 2e-4);
  EXPECT_TRUE(looksLikeScan(TimingSource::QuietBetweenSlices, &figures));
}

TEST(GradientMeter, AgreesWithTheDefinitionInEveryChannel) {
  const Channels before = channelsWith(300, Outside::GoesOn);
  const Channels after = channelsWith(3, Outside::Quiet);
  const MeteredCorrection correction = correctionOf(before, after);
  const QualityFigures figures = *measure(correction, before, after, 3000)[0];
  for (size_t c = 0; c < before.size(); ++c) {
    const auto plainBefore =
        plain::volumeFigures(before[c], fs, scanOf30Volumes(), correction.scans, figures.range);
    const auto plainAfter =
        plain::volumeFigures(after[c], fs, scanOf30Volumes(), correction.scans, figures.range);
    const ChannelQuality& quality = figures.channels[c];
    EXPECT_NEAR(quality.before.lineToBackground / plainBefore.lineToBackground, 1, 1e-8);
    EXPECT_NEAR(quality.after.lineToBackground / plainAfter.lineToBackground, 1, 1e-8);
    EXPECT_NEAR(quality.medianImagingArtifactAfter, plainAfter.medianImagingArtifact, 1e-4);
    EXPECT_EQ(figures.artifactSecondsOutside, plainBefore.artifactSecondsOutside);
    const auto from = static_cast<int64_t>(3 * fs);
    const auto to = static_cast<int64_t>((3 + 30 * scanOf30Volumes().volumeDuration) * fs);
    const double hzPerBin = fs / 4096;
    const PowerSpectrum spectrum{
        hzPerBin, plain::welch(after[c], from, to, 12, static_cast<size_t>(100 / hzPerBin) + 1)};
    for (size_t band = 0; band < eegBands.size(); ++band)
      EXPECT_NEAR(quality.bandsAfter[band], bandPowersOf(spectrum)[band], 1e-8);
  }
}

TEST(GradientMeter, DoesNotDependOnHowChannelsAreCut) {
  const Channels before = channelsWith(300, Outside::GoesOn);
  const Channels after = channelsWith(3, Outside::Quiet, 200);
  const MeteredCorrection correction = correctionOf(before, after, 200);
  const Figures whole = measure(correction, before, after);
  for (const size_t longest : {7u, 1500u, 9000u})
    expectSameBits(measure(correction, before, after, longest), whole);
}

TEST(GradientMeter, DoesNotDependOnTheNumberOfThreads) {
  Channels before = channelsWith(300, Outside::GoesOn);
  Channels after = channelsWith(3, Outside::Quiet);
  for (uint32_t seed = 4; seed <= 8; ++seed) {
    before.push_back(channelWith(400, 10, Outside::GoesOn, seed));
    after.push_back(channelWith(4, 10, Outside::Quiet, seed));
  }
  const MeteredCorrection correction = correctionOf(before, after);
  GradientMeter meter(correction);
  std::atomic<int> next = 0;
  const auto work = [&] {
    for (int c = next++; c < correction.nrOfChannels; c = next++) feed(meter, c, before, after, 2000);
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
  expectSameBits(meter.figures(), measure(correction, before, after));
}

TEST(GradientMeter, TakesAnyRateAfterTheCorrection) {
  const Channels before = channelsWith(300, Outside::Quiet);
  for (const double rate : {200.0, 187.3, 500.0, 800.0}) {
    const Channels after = channelsWith(3, Outside::Quiet, rate);
    const QualityFigures figures = *measure(correctionOf(before, after, rate), before, after)[0];
    EXPECT_DOUBLE_EQ(figures.range.highest, std::min(100.0, 0.4 * rate));
    for (const ChannelQuality& channel : figures.channels)
      EXPECT_NEAR(channel.remaining(), 0.01, 0.006) << rate;
  }
}

TEST(GradientMeter, ComparesOnlyWhatTheFiltersLeave) {
  const Channels channels = channelsWith(300, Outside::Quiet);
  MeteredCorrection correction = correctionOf(channels, channels);
  correction.highPass = 0.1;
  EXPECT_EQ(measure(correction, channels, channels)[0]->range.lowest, 1);
  correction.highPass = 4;
  correction.lowPass = 70;
  const FrequencyRange range = measure(correction, channels, channels)[0]->range;
  EXPECT_EQ(range.lowest, 4);
  EXPECT_EQ(range.highest, 70);
}

TEST(GradientMeter, TakesScalingBack) {
  const Channels before = channelsWith(300, Outside::Quiet);
  Channels after = channelsWith(3, Outside::Quiet);
  const Figures plain = measure(correctionOf(before, after), before, after);
  for (std::vector<double>& channel : after)
    for (double& value : channel) value *= 1024;
  MeteredCorrection correction = correctionOf(before, after);
  correction.unscale = 1.0 / 1024;
  expectSameBits(measure(correction, before, after), plain);
}

TEST(GradientMeter, SeesScanOutsideTheVolumesWhateverTheFirstChannelHolds) {
  const double expected = figuresWithFirstChannel(channelWith(300, 10, Outside::GoesOn, 1), Outside::GoesOn)
                              .artifactSecondsOutside;
  EXPECT_NEAR(expected, 10, 0.01);
  const auto n = static_cast<size_t>(seconds * fs);
  const std::vector<std::vector<double>> bad = {
      std::vector<double>(n, 0.0), std::vector<double>(n, -3000.0),
      std::vector<double>(n, std::numeric_limits<double>::quiet_NaN()),
      channelWith(0, 5000, Outside::Quiet, 5),
      sampled(lineAt(100 / scanOf30Volumes().volumeDuration, 9000), fs, seconds)};
  for (const std::vector<double>& first : bad) {
    EXPECT_EQ(figuresWithFirstChannel(first, Outside::GoesOn).artifactSecondsOutside, expected);
    EXPECT_EQ(figuresWithFirstChannel(first, Outside::Quiet).artifactSecondsOutside, 0);
  }
}

TEST(GradientMeter, SeesADriftWhateverTheFirstChannelHolds) {
  const auto late = [](double s) { return slicesOf(scanOf30Volumes(), 300, 3, 64)(s > 40 ? s - 0.003 : s); };
  Channels channels(3);
  for (uint32_t seed = 0; seed < 3; ++seed) {
    Signal noise = noiseOf(10, seed + 1);
    channels[seed] = sampled([&](double s) { return late(s) + noise(s); }, fs, seconds);
  }
  const auto drift = [&] { return measure(correctionOf(channels, channels), channels, channels)[0]->drift; };
  EXPECT_NEAR(drift(), 0.003, 3e-4);
  channels[0].assign(channels[0].size(), 0.0);
  EXPECT_NEAR(drift(), 0.003, 3e-4);
  channels[0] = channelWith(0, 5000, Outside::Quiet, 5);
  EXPECT_NEAR(drift(), 0.003, 3e-4);
  channels.pop_back(); // one of two
  EXPECT_NEAR(drift(), 0.003, 3e-4);
}

TEST(GradientMeter, LeavesOutChannelsThatAreNotExpectedToShowTheScan) {
  Channels channels = channelsWith(300, Outside::Quiet);
  channels[1] = channels[2] = channelWith(300, 10, Outside::GoesOn, 4);
  MeteredCorrection correction = correctionOf(channels, channels);
  EXPECT_GT(measure(correction, channels, channels)[0]->artifactSecondsOutside, 0);
  correction.showsScan = {true, false, false};
  EXPECT_EQ(measure(correction, channels, channels)[0]->artifactSecondsOutside, 0);
}

TEST(GradientMeter, NoiseDoesNotLookLikeAScan) {
  const Channels channels = channelsWith(0, Outside::Quiet);
  const QualityFigures figures = *measure(correctionOf(channels, channels), channels, channels)[0];
  EXPECT_FALSE(looksLikeScan(TimingSource::QuietBetweenSlices, &figures));
}

TEST(GradientMeter, DeadChannelsAloneHaveFiguresOfZero) {
  const Channels dead(2, std::vector<double>(40000, 0.0));
  const QualityFigures figures = *measure(correctionOf(dead, dead), dead, dead)[0];
  EXPECT_EQ(figures.drift, 0);
  EXPECT_EQ(figures.artifactSecondsOutside, 0);
  EXPECT_EQ(figures.channels[1].remaining(), 0);
}

TEST(GradientMeter, TellsNothingOfFewerThanFourVolumesButOfTheOtherScans) {
  const Channels channels = channelsWith(300, Outside::Quiet);
  MeteredCorrection correction = correctionOf(channels, channels);
  FoundScan brief = correction.scans[0];
  brief.sequence.nrOfVolumes = 3;
  correction.scans.insert(correction.scans.begin(), brief);
  const Figures both = measure(correction, channels, channels);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_FALSE(both[0]);
  expectSameBits({both[1]}, measure(correctionOf(channels, channels), channels, channels));
}

TEST(GradientMeter, HasNoFiguresWithoutScansOrChannels) {
  const Channels channels = channelsWith(300, Outside::Quiet);
  MeteredCorrection correction = correctionOf(channels, channels);
  correction.nrOfChannels = 0;
  const Figures figures = GradientMeter(correction).figures();
  ASSERT_EQ(figures.size(), 1u);
  EXPECT_TRUE(figures[0]->channels.empty());
  correction.scans.clear();
  correction.nrOfChannels = 3;
  EXPECT_TRUE(measure(correction, channels, channels).empty());
}

TEST(GradientMeter, CountsSamplesThatAreNotFiniteAsNoSignal) {
  Channels channels = channelsWith(300, Outside::Quiet);
  for (size_t t = 0; t < channels[1].size(); t += 1009)
    channels[1][t] = t % 2 == 0 ? std::numeric_limits<double>::quiet_NaN() : 1e308 * 10;
  const QualityFigures figures = *measure(correctionOf(channels, channels), channels, channels)[0];
  EXPECT_NEAR(figures.channels[1].artifactBefore(), 2 * figures.channels[0].artifactBefore(), 5);
  EXPECT_TRUE(std::isfinite(figures.channels[1].peaksBefore.rms));
}

TEST(GradientMeter, SaysWhenSamplesAreMissingOrTooMany) {
  const Channels channels = channelsWith(300, Outside::Quiet);
  GradientMeter meter(correctionOf(channels, channels));
  FigureWorkspace workspace;
  EXPECT_THROW(meter.figures(), std::logic_error);
  meter.addBefore(0, channels[0], workspace);
  EXPECT_THROW(meter.addBefore(0, std::vector<double>(1, 0.0), workspace), std::length_error);
  EXPECT_THROW(meter.addBefore(3, channels[0], workspace), std::out_of_range);
  EXPECT_THROW(meter.addAfter(-1, channels[0], workspace), std::out_of_range);
}

} // namespace
} // namespace emeg
