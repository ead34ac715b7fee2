#include "tests/artifacts/reference/LiteralTemplateRemoval.h"

#include "tests/artifacts/BurstTrain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace emeg {
namespace {

LiteralTiming trueTimingOf(const BurstTrain& train) {
  LiteralTiming timing;
  timing.nrOfVolumes = train.nrOfVolumes;
  timing.nrOfSlicesPerVolume = train.nrOfSlicesPerVolume;
  timing.volumeDuration = train.volumeDuration;
  timing.sliceDuration = train.sliceDuration;
  timing.firstTriggerTime = train.firstOnset;
  return timing;
}

double rms(const std::vector<double>& signal, double from, double to, double fs) {
  double sum = 0.0;
  double count = 0.0;
  for (std::size_t i = 0; i < signal.size(); ++i) {
    const double t = static_cast<double>(i) / fs;
    if (t < from || t >= to) continue;
    sum += signal[i] * signal[i];
    count += 1.0;
  }
  return std::sqrt(sum / count);
}

// How far the residual over the scan lies below the artifact, in dB.
double suppression(const BurstTrain& train, const LiteralTiming& timing, bool volumeWise) {
  const double fs = train.samplingFrequency;
  const std::vector<double> artifact = train.artifact();
  const std::vector<double> estimate = literalArtifactEstimate(
      train.recording(), fs, timing, literalWindowHalfLength(150, timing), volumeWise);
  std::vector<double> residual(artifact.size());
  for (std::size_t i = 0; i < residual.size(); ++i) residual[i] = artifact[i] - estimate[i];
  const double from = train.firstOnset;
  const double to = train.onset(train.nrOfVolumes, 0);
  return 20.0 * std::log10(rms(artifact, from, to, fs) / rms(residual, from, to, fs));
}

TEST(LiteralTemplateRemoval, RemovesTheArtifactWithTheDetectedTiming) {
  for (const bool gaps : {true, false}) {
    const BurstTrain train = gaps ? BurstTrain::withGaps() : BurstTrain::continuous();
    const std::vector<double> recording = train.recording();
    const LiteralDetection detection =
        literalDetectMRSequence(recording, train.samplingFrequency, literalLog2Length(recording.size() + 2));
    ASSERT_TRUE(detection.found);
    EXPECT_GT(suppression(train, detection, false), 30.0) << (gaps ? "gaps" : "continuous") << ", slices";
    EXPECT_GT(suppression(train, detection, true), 30.0) << (gaps ? "gaps" : "continuous") << ", volumes";
  }
}

TEST(LiteralTemplateRemoval, LeavesTheRestOfTheRecordingAlone) {
  const BurstTrain train = BurstTrain::withGaps();
  const double fs = train.samplingFrequency;
  const LiteralTiming timing = trueTimingOf(train);
  const double end = train.onset(train.nrOfVolumes, 0);
  for (const bool volumeWise : {false, true}) {
    const std::vector<double> estimate =
        literalArtifactEstimate(train.recording(), fs, timing, 12, volumeWise);
    EXPECT_EQ(rms(estimate, 0.0, train.firstOnset - train.volumeDuration, fs), 0.0);
    EXPECT_EQ(rms(estimate, end + 0.2, train.seconds, fs), 0.0);
    EXPECT_GT(rms(estimate, train.firstOnset, end, fs), 100.0);
  }
}

TEST(LiteralTemplateRemoval, AnExactlyRepeatingWaveformIsFoundSampleBySample) {
  // Without noise, first slices like the others and onsets on the grid: every average is the waveform itself.
  BurstTrain train = BurstTrain::withGaps();
  train.noiseRms = 0.0;
  train.sliceDuration = 0.075;
  train.volumeDuration = 1.0;
  train.firstOnset = 1.6;
  const std::vector<double> recording = train.recording();
  const std::vector<double> estimate =
      literalArtifactEstimate(recording, train.samplingFrequency, trueTimingOf(train), 12, false);
  const auto isJoint = [&](std::size_t i) {
    // Slice 0 ends a sample early, so that its ramp and the next one do not sum to 1 exactly.
    const double t = static_cast<double>(i) / train.samplingFrequency - 1.6;
    const double inVolume = t - std::floor(t);
    return inVolume > 0.049 && inVolume < 0.076;
  };
  const std::size_t first = 3200;
  const std::size_t end = 3200 + 12 * 2000;
  for (std::size_t i = first; i < end; ++i) {
    if (!isJoint(i)) {
      ASSERT_NEAR(estimate[i], recording[i], 0.05) << i; // the waveform's own edge is 0.03
    }
  }
}

TEST(LiteralTemplateRemoval, TheRampIsSmoothAndSymmetric) {
  EXPECT_EQ(literalRamp(0.0), 0.0);
  EXPECT_EQ(literalRamp(1.0), 1.0);
  EXPECT_DOUBLE_EQ(literalRamp(0.5), 0.5);
  for (double u = 0.0; u <= 1.0; u += 0.01) EXPECT_NEAR(literalRamp(u) + literalRamp(1.0 - u), 1.0, 1e-14);
}

TEST(LiteralTemplateRemoval, RampsOfAdjoiningSlicesSumToOne) {
  const BurstTrain train = BurstTrain::withGaps();
  const LiteralTiming timing = trueTimingOf(train);
  const double fs = train.samplingFrequency;
  for (int32_t v = 0; v < timing.nrOfVolumes; ++v) {
    for (int32_t s = 1; s < timing.nrOfSlicesPerVolume; ++s) { // s + 1 up to the slot
      const LiteralTemplate before = literalSliceTemplate(timing, fs, 12, v, s);
      const LiteralTemplate behind = literalSliceTemplate(timing, fs, 12, v, s + 1);
      ASSERT_EQ(before.end, behind.begin);
      ASSERT_FALSE(behind.fillsRest);
      for (int64_t p = behind.begin - behind.ramp + 1; p < before.end; ++p) {
        EXPECT_NEAR(before.rampWeight(p) + behind.rampWeight(p), 1.0, 1e-14);
      }
      EXPECT_EQ(before.rampWeight(before.end - before.ramp), 1.0);
      EXPECT_EQ(before.rampWeight(before.end), 0.0);
      EXPECT_EQ(behind.rampWeight(behind.begin), 1.0);
      EXPECT_EQ(behind.rampWeight(behind.begin - behind.ramp), 0.0);
    }
  }
}

TEST(LiteralTemplateRemoval, TheFirstSliceEndsOneSampleEarlier) {
  const BurstTrain train = BurstTrain::withGaps();
  const LiteralTiming timing = trueTimingOf(train);
  const double fs = train.samplingFrequency;
  const LiteralTemplate first = literalSliceTemplate(timing, fs, 12, 2, 0);
  EXPECT_EQ(first.end, static_cast<int64_t>(std::floor(first.onset + fs * timing.sliceDuration)) - 1);
  EXPECT_EQ(first.end + 1, literalSliceTemplate(timing, fs, 12, 2, 1).begin);
}

TEST(LiteralTemplateRemoval, RampsOfAdjoiningVolumesSumToOne) {
  for (const bool gaps : {true, false}) {
    const BurstTrain train = gaps ? BurstTrain::withGaps() : BurstTrain::continuous();
    const LiteralTiming timing = trueTimingOf(train);
    const double fs = train.samplingFrequency;
    for (int32_t v = 0; v + 1 < timing.nrOfVolumes; ++v) {
      const LiteralTemplate before = literalVolumeTemplate(timing, fs, 12, v);
      const LiteralTemplate behind = literalVolumeTemplate(timing, fs, 12, v + 1);
      ASSERT_LE(std::abs(before.end - behind.begin), 1); // the same place up to rounding
      if (before.end != behind.begin) continue;
      for (int64_t p = before.begin; p <= behind.begin; ++p) {
        EXPECT_NEAR(before.rampWeight(p) + behind.rampWeight(p), 1.0, 1e-14);
      }
    }
  }
}

// The sum of the last slice's, the slot's and the next first slice's weight.
double sumOfThree(const LiteralTiming& timing, double fs, int32_t volume, int64_t position) {
  const int32_t spv = timing.nrOfSlicesPerVolume;
  return literalSliceTemplate(timing, fs, 12, volume, spv - 1).rampWeight(position) +
         literalSliceTemplate(timing, fs, 12, volume, spv).rampWeight(position) +
         literalSliceTemplate(timing, fs, 12, volume + 1, 0).rampWeight(position);
}

TEST(LiteralTemplateRemoval, ATruncatedSlotFillsWhatItsNeighboursLeave) {
  // Dead times shorter and longer than a ramp (24 ms) and just below a slice.
  for (const double deadTime : {0.0006, 0.0043, 0.02, 0.03, 0.071}) {
    BurstTrain train = BurstTrain::continuous();
    train.volumeDuration = 14 * train.sliceDuration + deadTime;
    const LiteralTiming timing = trueTimingOf(train);
    const double fs = train.samplingFrequency;
    for (int32_t v = 0; v + 1 < timing.nrOfVolumes; ++v) {
      const LiteralTemplate last = literalSliceTemplate(timing, fs, 12, v, 13);
      const LiteralTemplate slot = literalSliceTemplate(timing, fs, 12, v, 14);
      const LiteralTemplate next = literalSliceTemplate(timing, fs, 12, v + 1, 0);
      ASSERT_TRUE(slot.fillsRest || !slot.exists);
      ASSERT_EQ(slot.end, next.begin);
      if (!slot.exists) continue;
      for (int64_t p = last.begin; p <= next.end - next.ramp; ++p) {
        ASSERT_NEAR(sumOfThree(timing, fs, v, p), 1.0, 1e-14) << deadTime << " s, volume " << v << ", " << p;
        ASSERT_GE(slot.rampWeight(p), 0.0);
      }
    }
  }
}

TEST(LiteralTemplateRemoval, TheSlotOfTheLastVolumeEndsWhereAnotherVolumeWouldBegin) {
  const BurstTrain train = BurstTrain::continuous();
  const LiteralTiming timing = trueTimingOf(train);
  const LiteralTemplate slot = literalSliceTemplate(timing, 2000.0, 12, timing.nrOfVolumes - 1, 14);
  EXPECT_TRUE(slot.exists);
  EXPECT_EQ(slot.end, static_cast<int64_t>(std::floor(train.onset(timing.nrOfVolumes, 0) * 2000.0)));
  EXPECT_EQ(slot.rampWeight(slot.end), 0.0);
}

TEST(LiteralTemplateRemoval, WithoutRoomThereIsNoSlot) {
  BurstTrain train = BurstTrain::continuous();
  train.volumeDuration = 14 * train.sliceDuration - 0.002;
  const LiteralTiming timing = trueTimingOf(train);
  const LiteralTemplate slot = literalSliceTemplate(timing, 2000.0, 12, 3, 14);
  EXPECT_FALSE(slot.exists);
  for (int64_t p = slot.begin - 100; p < slot.begin + 100; ++p) EXPECT_EQ(slot.rampWeight(p), 0.0);
}

TEST(LiteralTemplateRemoval, NoSliceOrVolumeContributesToItsOwnTemplate) {
  const LiteralTiming timing = trueTimingOf(BurstTrain::withGaps());
  for (int32_t v = 0; v < timing.nrOfVolumes; ++v) {
    for (int32_t s = 0; s <= timing.nrOfSlicesPerVolume; ++s) {
      for (const auto& neighbour : literalSliceTemplate(timing, 2000.0, 12, v, s).neighbours) {
        EXPECT_FALSE(neighbour.volume == v && neighbour.slice == s);
      }
    }
    for (const auto& neighbour : literalVolumeTemplate(timing, 2000.0, 12, v).neighbours) {
      EXPECT_NE(neighbour.volume, v);
    }
  }
}

TEST(LiteralTemplateRemoval, AnUnrepeatedEventInASliceLeavesThatSlicesTemplateUnchanged) {
  const BurstTrain train = BurstTrain::withGaps();
  const LiteralTiming timing = trueTimingOf(train);
  const std::vector<double> recording = train.recording();
  const LiteralTemplate piece = literalSliceTemplate(timing, 2000.0, 2, 5, 4);
  // In the middle third of the slice, which no other template's stretch of this slice reaches.
  const std::size_t place = static_cast<std::size_t>(piece.begin + 2 * piece.ramp - 25);
  std::vector<double> disturbed = recording;
  disturbed[place] += 1000.0;
  const std::vector<double> before = literalArtifactEstimate(recording, 2000.0, timing, 2, false);
  const std::vector<double> behind = literalArtifactEstimate(disturbed, 2000.0, timing, 2, false);
  EXPECT_NEAR(before[place], behind[place], 1e-9);
  double elsewhere = 0.0;
  for (std::size_t i = 0; i < before.size(); ++i)
    elsewhere = std::max(elsewhere, std::fabs(before[i] - behind[i]));
  EXPECT_GT(elsewhere, 1.0);
}

TEST(LiteralTemplateRemoval, InnerSlicesTakeTheirStrideClassAndOuterOnesOtherVolumes) {
  const LiteralTiming timing = trueTimingOf(BurstTrain::withGaps()); // stride 5 of slices 1 ... 8
  const auto inner = literalSliceTemplate(timing, 2000.0, 12, 3, 2).neighbours;
  EXPECT_EQ(inner.size(), 2U * 12U - 1U);
  for (const auto& neighbour : inner) EXPECT_TRUE(neighbour.slice == 2 || neighbour.slice == 7);
  for (const int32_t outer : {0, 9, 10}) {
    const auto neighbours = literalSliceTemplate(timing, 2000.0, 12, 3, outer).neighbours;
    EXPECT_EQ(neighbours.size(), 11U);
    for (const auto& neighbour : neighbours) EXPECT_EQ(neighbour.slice, outer);
  }
}

TEST(LiteralTemplateRemoval, NeighboursLieSymmetricallyAndWeighByTheirDistance) {
  const LiteralTiming timing = trueTimingOf(BurstTrain::withGaps());
  const LiteralTemplate piece = literalSliceTemplate(timing, 2000.0, 2, 6, 0);
  ASSERT_EQ(piece.neighbours.size(), 8U); // four volumes on each side: 2 x 2 s at 1.0003 s
  for (const auto& neighbour : piece.neighbours) {
    const double seconds = (neighbour.onset - piece.onset) / 2000.0;
    EXPECT_NEAR(neighbour.weight, std::exp(-std::pow(seconds / 2.0, 2.0)), 1e-12);
    EXPECT_NEAR(seconds, (neighbour.volume - 6) * timing.volumeDuration, 1e-9);
  }
  // Two volumes of half the window away: e^-1 of a neighbour at distance 0.
  LiteralTiming even = timing;
  even.volumeDuration = 1.0;
  for (const auto& neighbour : literalSliceTemplate(even, 2000.0, 2, 6, 0).neighbours) {
    if (std::abs(neighbour.volume - 6) == 2) {
      EXPECT_NEAR(neighbour.weight, std::exp(-1.0), 1e-12);
    }
  }
}

TEST(LiteralTemplateRemoval, TheFirstAndLastVolumeAreCorrectedButServeOnlySlices) {
  const BurstTrain train = BurstTrain::withGaps();
  const LiteralTiming timing = trueTimingOf(train);
  bool slicesUseThem = false;
  for (int32_t v = 0; v < timing.nrOfVolumes; ++v) {
    const LiteralTemplate piece = literalVolumeTemplate(timing, 2000.0, 12, v);
    EXPECT_FALSE(piece.neighbours.empty());
    for (const auto& neighbour : piece.neighbours) {
      EXPECT_NE(neighbour.volume, 0);
      EXPECT_NE(neighbour.volume, timing.nrOfVolumes - 1);
    }
    for (const auto& neighbour : literalSliceTemplate(timing, 2000.0, 12, v, 1).neighbours) {
      slicesUseThem = slicesUseThem || neighbour.volume == 0;
    }
  }
  EXPECT_TRUE(slicesUseThem);
  const std::vector<double> estimate = literalArtifactEstimate(train.recording(), 2000.0, timing, 12, true);
  for (const int32_t v : {0, timing.nrOfVolumes - 1}) {
    EXPECT_GT(rms(estimate, train.onset(v, 0), train.onset(v, 5), 2000.0), 100.0);
  }
}

TEST(LiteralTemplateRemoval, TemplatesWithoutNeighboursAreSkipped) {
  BurstTrain train = BurstTrain::withGaps();
  LiteralTiming single = trueTimingOf(train);
  single.nrOfVolumes = 1;
  single.nrOfSlicesPerVolume = 3; // one inner slice
  const std::vector<double> recording = train.recording();
  for (const bool volumeWise : {false, true}) {
    for (const double value : literalArtifactEstimate(recording, 2000.0, single, 12, volumeWise)) {
      ASSERT_EQ(value, 0.0);
    }
  }
  const LiteralTiming nothing;
  for (const double value : literalArtifactEstimate(recording, 2000.0, nothing, 12, false)) {
    ASSERT_EQ(value, 0.0);
  }
}

TEST(LiteralTemplateRemoval, SegmentsBeyondTheRecordingAreClipped) {
  BurstTrain train = BurstTrain::withGaps();
  std::vector<double> recording = train.recording();
  recording.resize(static_cast<std::size_t>(train.onset(10, 3) * 2000.0)); // ends within volume 10 of 12
  LiteralTiming timing = trueTimingOf(train);
  for (const bool volumeWise : {false, true}) {
    const std::vector<double> estimate = literalArtifactEstimate(recording, 2000.0, timing, 12, volumeWise);
    ASSERT_EQ(estimate.size(), recording.size());
    for (const double value : estimate) ASSERT_TRUE(std::isfinite(value));
  }
  timing.firstTriggerTime = -3.3;
  for (const double value : literalArtifactEstimate(recording, 2000.0, timing, 12, false)) {
    ASSERT_TRUE(std::isfinite(value));
  }
}

} // namespace
} // namespace emeg
