#include "artifacts/gradient/templates/TemplateRemoval.h"

#include "artifacts/gradient/templates/TemplateKernels.h"
#include "artifacts/gradient/templates/TemplateWindow.h"
#include "tests/artifacts/BurstTrain.h"
#include "tests/artifacts/gradient/SplinedRecording.h"
#include "tests/artifacts/reference/LiteralTemplateRemoval.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace emeg {
namespace {

MRSequence trueSequence(const BurstTrain& train, int32_t windowHalfLength) {
  MRSequence sequence;
  sequence.nrOfVolumes = train.nrOfVolumes;
  sequence.nrOfSlicesPerVolume = train.nrOfSlicesPerVolume;
  sequence.volumeDuration = train.volumeDuration;
  sequence.sliceDuration = train.sliceDuration;
  sequence.firstTriggerTime = train.firstOnset;
  sequence.windowHalfLength = windowHalfLength;
  return sequence;
}

std::vector<double> estimate(const std::vector<double>& signal, double fs, const MRSequence& sequence,
                             bool volumeWise) {
  const SplinedRecording recording(signal);
  std::vector<double> sum(signal.size(), 0.0);
  estimateGradientArtifact(recording.view(), sequence, fs, volumeWise, sum.data());
  return sum;
}

void expectAgreement(const std::vector<double>& signal, double fs, const MRSequence& sequence,
                     bool volumeWise) {
  LiteralTiming timing;
  timing.nrOfVolumes = sequence.nrOfVolumes;
  timing.nrOfSlicesPerVolume = sequence.nrOfSlicesPerVolume;
  timing.volumeDuration = sequence.volumeDuration;
  timing.sliceDuration = sequence.sliceDuration;
  timing.firstTriggerTime = sequence.firstTriggerTime;
  const std::vector<double> literal =
      literalArtifactEstimate(signal, fs, timing, sequence.windowHalfLength, volumeWise);
  const std::vector<double> ours = estimate(signal, fs, sequence, volumeWise);
  for (size_t i = 0; i < ours.size(); ++i)
    ASSERT_NEAR(ours[i], literal[i], 1e-6) << "volume-wise: " << volumeWise << ", sample " << i;
}

double rms(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value * value;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

} // namespace

TEST(TemplateRemoval, AgreesWithThePlainVersionInBothModes) {
  for (BurstTrain train : {BurstTrain::withGaps(), BurstTrain::continuous()}) {
    train.nrOfVolumes = std::min(train.nrOfVolumes, 8);
    const std::vector<double> signal = train.recording();
    for (const int32_t window : {0, 1, 3}) {
      SCOPED_TRACE(testing::Message() << train.nrOfSlicesPerVolume << " slices, window " << window << " s");
      expectAgreement(signal, train.samplingFrequency, trueSequence(train, window), false);
      expectAgreement(signal, train.samplingFrequency, trueSequence(train, window), true);
    }
  }
}

// Dead times from none to more than a slice: the slot behind the last slice is absent, cut short, or full.
TEST(TemplateRemoval, AgreesWithThePlainVersionForEveryDeadTime) {
  for (const double deadTime : {-0.002, 0.0, 0.0002, 0.0043, 0.02, 0.05, 0.0750142, 0.08, 0.3}) {
    BurstTrain train = BurstTrain::withGaps();
    train.nrOfVolumes = 6;
    train.seconds = 11;
    train.volumeDuration = 10 * train.sliceDuration + deadTime;
    SCOPED_TRACE(testing::Message() << deadTime << " s");
    expectAgreement(train.recording(), train.samplingFrequency, trueSequence(train, 2), false);
    expectAgreement(train.recording(), train.samplingFrequency, trueSequence(train, 2), true);
  }
}

TEST(TemplateRemoval, AgreesWithThePlainVersionWhereTheScanLeavesTheRecording) {
  BurstTrain train = BurstTrain::withGaps();
  const std::vector<double> signal = train.recording();
  MRSequence sequence = trueSequence(train, 2);
  sequence.firstTriggerTime = -1.3;
  expectAgreement(signal, train.samplingFrequency, sequence, false);
  expectAgreement(signal, train.samplingFrequency, sequence, true);
  sequence.firstTriggerTime = 9.7;
  expectAgreement(signal, train.samplingFrequency, sequence, false);
  expectAgreement(signal, train.samplingFrequency, sequence, true);
}

TEST(TemplateRemoval, AgreesWithThePlainVersionForFewVolumesAndSlices) {
  for (const int32_t volumes : {1, 2, 3}) {
    for (const int32_t slices : {2, 3, 4}) {
      BurstTrain train = BurstTrain::withGaps();
      train.nrOfVolumes = volumes;
      train.nrOfSlicesPerVolume = slices;
      train.seconds = 6;
      SCOPED_TRACE(testing::Message() << volumes << " volumes, " << slices << " slices");
      expectAgreement(train.recording(), train.samplingFrequency, trueSequence(train, 2), false);
      expectAgreement(train.recording(), train.samplingFrequency, trueSequence(train, 2), true);
    }
  }
}

TEST(TemplateRemoval, LeavesLittleOfTheArtifact) {
  for (const bool volumeWise : {false, true}) {
    const BurstTrain train = BurstTrain::withGaps();
    const std::vector<double> artifact = train.artifact();
    std::vector<double> rest =
        estimate(train.recording(), train.samplingFrequency, trueSequence(train, 5), volumeWise);
    for (size_t i = 0; i < rest.size(); ++i) rest[i] -= artifact[i];
    EXPECT_LT(rms(rest), 0.05 * rms(artifact)) << "volume-wise: " << volumeWise;
  }
}

// With one slice per volume the first slice is the last one too: it is corrected once.
TEST(TemplateRemoval, CorrectsASingleSlicePerVolumeOnce) {
  BurstTrain train = BurstTrain::withGaps();
  train.nrOfSlicesPerVolume = 1;
  train.volumeDuration = 0.5003;
  train.nrOfVolumes = 24;
  const std::vector<double> artifact = train.artifact();
  std::vector<double> rest =
      estimate(train.recording(), train.samplingFrequency, trueSequence(train, 5), false);
  for (size_t i = 0; i < rest.size(); ++i) rest[i] -= artifact[i];
  EXPECT_LT(rms(rest), 0.05 * rms(artifact));
}

// One volume with one inner slice: no slice has a neighbour.
TEST(TemplateRemoval, SkipsTemplatesWithoutNeighbours) {
  BurstTrain train = BurstTrain::withGaps();
  train.nrOfVolumes = 1;
  train.nrOfSlicesPerVolume = 3;
  const std::vector<double> sum =
      estimate(train.recording(), train.samplingFrequency, trueSequence(train, 5), false);
  EXPECT_TRUE(std::all_of(sum.begin(), sum.end(), [](double value) { return value == 0; }));
}

// The next volume is 27 window lengths away: its weight is too small to be divided by.
TEST(TemplateRemoval, SkipsTemplatesWhoseNeighboursAreTooFarAway) {
  BurstTrain train = BurstTrain::withGaps();
  train.samplingFrequency = 200;
  train.readoutFrequency = 40;
  train.nrOfVolumes = 4;
  train.seconds = 115;
  for (const double volumeDuration : {26.0, 26.7, 26.9, 27.2, 27.4, 28.0}) {
    train.volumeDuration = volumeDuration;
    for (const bool volumeWise : {false, true}) {
      for (const double value :
           estimate(train.recording(), train.samplingFrequency, trueSequence(train, 1), volumeWise))
        ASSERT_TRUE(std::isfinite(value)) << volumeDuration;
    }
  }
}

TEST(TemplateRemoval, RepeatsExactlyWhatItWasGivenWhenAllSlicesAreAlike) {
  // A constant signal: every template is that constant, and adjoining templates sum to it.
  BurstTrain train = BurstTrain::continuous();
  train.nrOfVolumes = 6;
  const std::vector<double> constant(train.nrOfTimePoints(), 100.0);
  const std::vector<double> sum = estimate(constant, train.samplingFrequency, trueSequence(train, 5), false);
  const auto from =
      static_cast<size_t>((train.firstOnset + train.sliceDuration * 1.1) * train.samplingFrequency);
  const auto to =
      static_cast<size_t>((train.firstOnset + 6 * train.volumeDuration - 0.1) * train.samplingFrequency);
  // The first slice's template ends one sample early: there the weights miss 1 by at most 1.875 / R.
  const double missing = 100.0 * 1.875 / std::ceil(train.samplingFrequency * 0.33333 * train.sliceDuration);
  for (size_t i = from; i < to; ++i) EXPECT_NEAR(sum[i], 100.0, missing * 1.01) << i;
}

TEST(TemplateWindow, RampsOfAdjoiningWindowsSumToOne) {
  const TemplateWindow first{1000, 1150, 50};
  const TemplateWindow second{1150, 1300, 50};
  for (int64_t p = 1000; p < 1250; ++p) EXPECT_NEAR(first.weightAt(p) + second.weightAt(p), 1, 1e-12) << p;
  EXPECT_EQ(first.weightAt(950), 0);
  EXPECT_EQ(first.weightAt(1150), 0);
  EXPECT_EQ(first.weightAt(1000), 1);
}

TEST(TemplateKernels, AddNothingOutsideTheSignal) {
  const SplinedRecording recording(std::vector<double>{1, 2, 3, 4, 5});
  for (const int64_t first : {-100, -3, 0, 3, 5, 100}) {
    std::vector<double> out(6, 7.0);
    addShiftedSpline(recording.view(), first, 0, 1, 6, out.data());
    for (int64_t t = 0; t < 6; ++t) {
      const int64_t k = first + t;
      const double added = k >= 0 && k < 5 ? static_cast<double>(k + 1) : 0;
      EXPECT_NEAR(out[static_cast<size_t>(t)], 7 + added, 1e-12);
    }
  }
}

} // namespace emeg
