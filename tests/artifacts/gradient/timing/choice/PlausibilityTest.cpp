#include "artifacts/gradient/timing/choice/Plausibility.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace emeg {
namespace {

using testing::HasSubstr;

constexpr double fs = 2000;

/// 30 volumes of 20 slices in 66 s, 300 ms of pause behind each volume.
MRSequence goodSequence() {
  MRSequence sequence;
  sequence.nrOfVolumes = 30;
  sequence.nrOfSlicesPerVolume = 20;
  sequence.volumeDuration = 1.8;
  sequence.sliceDuration = 0.075;
  sequence.firstTriggerTime = 3;
  sequence.hasVolumeGaps = true;
  return sequence;
}

std::string doubt(const MRSequence& sequence) {
  return doubtAbout(sequence, 66, fs);
}

TEST(Plausibility, AGoodSequenceRaisesNoDoubt) {
  EXPECT_EQ(doubt(goodSequence()), "");
}

TEST(Plausibility, NothingFound) {
  EXPECT_THAT(doubt(MRSequence()), HasSubstr("no slices"));
}

TEST(Plausibility, NumbersThatMeanNothing) {
  MRSequence sequence = goodSequence();
  sequence.volumeDuration = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(doubt(sequence), HasSubstr("mean nothing"));
  sequence = goodSequence();
  sequence.firstTriggerTime = std::numeric_limits<double>::infinity();
  EXPECT_THAT(doubt(sequence), HasSubstr("mean nothing"));
  sequence = goodSequence();
  sequence.nrOfSlicesPerVolume = -2;
  EXPECT_THAT(doubt(sequence), HasSubstr("mean nothing"));
}

TEST(Plausibility, CountsThatContradictTheLength) {
  MRSequence sequence = goodSequence();
  sequence.nrOfVolumes = 40;
  EXPECT_THAT(doubt(sequence), HasSubstr("than the recording is long"));
  sequence = goodSequence();
  sequence.firstTriggerTime = -1;
  EXPECT_THAT(doubt(sequence), HasSubstr("than the recording is long"));
  sequence = goodSequence();
  sequence.nrOfSlicesPerVolume = 40;
  EXPECT_THAT(doubt(sequence), HasSubstr("longer than their volume"));
}

TEST(Plausibility, SlicesWithoutAnyPauseDoNotTellWhereVolumesBegin) {
  MRSequence sequence = goodSequence();
  sequence.hasVolumeGaps = false;
  sequence.nrOfSlicesPerVolume = 24;
  sequence.sliceDuration = 0.07500002;
  EXPECT_THAT(doubt(sequence), HasSubstr("where a volume begins"));
  sequence.sliceDuration = 0.0748; // 4.8 ms of dead time
  EXPECT_EQ(doubt(sequence), "");
}

TEST(Plausibility, HardlyAnyVolumes) {
  MRSequence sequence = goodSequence();
  sequence.nrOfVolumes = 3;
  EXPECT_THAT(doubt(sequence), HasSubstr("hardly any volumes"));
}

} // namespace
} // namespace emeg
