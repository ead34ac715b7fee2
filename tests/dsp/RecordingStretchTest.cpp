#include "dsp/RecordingStretch.h"

#include "tests/dsp/reference/PlainFilter.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <vector>

namespace emeg {
namespace {

const std::vector<double> ramp = {1, 2, 4, 8};

std::vector<double> continuedFrom(const RecordingStretch& stretch, int64_t from, std::size_t count) {
  std::vector<double> out(count);
  copyContinued(stretch, from, out);
  return out;
}

TEST(RecordingStretch, BeyondTheEndsTheSignalIsReflectedAndThenStays) {
  EXPECT_EQ(continuedFrom(wholeRecording(ramp), -6, 16),
            (std::vector<double>{-6, -6, -6, -6, -2, 0, 1, 2, 4, 8, 12, 14, 15, 15, 15, 15}));
}

TEST(RecordingStretch, AnyRangeIsThatOfTheContinuedSignal) {
  const std::vector<double> x = reference::whiteNoise(9, 3);
  for (int64_t from = -30; from < 30; ++from)
    for (std::size_t count = 0; count < 25; ++count) {
      const std::vector<double> copied = continuedFrom(wholeRecording(x), from, count);
      for (std::size_t i = 0; i < count; ++i)
        EXPECT_EQ(copied[i], reference::continued(x, from + static_cast<int64_t>(i)));
    }
}

TEST(RecordingStretch, ASingleSampleContinuesAsAConstant) {
  const std::vector<double> one = {7};
  EXPECT_EQ(continuedFrom(wholeRecording(one), -2, 5), (std::vector<double>{7, 7, 7, 7, 7}));
}

TEST(RecordingStretch, AStretchIsCopiedByPositionsOfTheRecording) {
  const RecordingStretch inner{ramp, 100, 1000};
  EXPECT_EQ(continuedFrom(inner, 101, 2), (std::vector<double>{2, 4}));
}

TEST(RecordingStretch, AMissingSampleIsAnError) {
  const RecordingStretch inner{ramp, 100, 1000};
  EXPECT_THROW(continuedFrom(inner, 99, 2), std::invalid_argument);
  EXPECT_THROW(continuedFrom(inner, 102, 3), std::invalid_argument);
  EXPECT_THROW(continuedFrom(inner, -2, 1), std::invalid_argument);
  EXPECT_THROW(continuedFrom(inner, 1001, 1), std::invalid_argument);
  EXPECT_THROW(continuedFrom({ramp, 0, 1000}, -4, 4), std::invalid_argument);
}

TEST(RecordingStretch, AStretchOutsideOfItsRecordingIsAnError) {
  constexpr int64_t largest = std::numeric_limits<int64_t>::max();
  for (const RecordingStretch& wrong :
       {RecordingStretch{ramp, -1, 1000}, RecordingStretch{ramp, 997, 1000}, RecordingStretch{ramp, 0, 3},
        RecordingStretch{ramp, 0, -1}, RecordingStretch{ramp, largest, largest}})
    EXPECT_THROW(checkStretch(wrong), std::invalid_argument) << wrong.first;
}

TEST(RecordingStretch, AnEmptyRecordingHasNoContinuation) {
  EXPECT_NO_THROW(continuedFrom({}, 5, 0));
  EXPECT_THROW(continuedFrom({}, 0, 1), std::invalid_argument);
}

TEST(RecordingStretch, ContextEndsWhereTheRecordingDoes) {
  const PositionRange inner = withContext({10, 20}, 4, 100);
  EXPECT_EQ(inner.begin, 6);
  EXPECT_EQ(inner.end, 24);
  const PositionRange all = withContext({10, 20}, 400, 100);
  EXPECT_EQ(all.begin, 0);
  EXPECT_EQ(all.end, 100);
  EXPECT_EQ(withContext({10, 10}, 4, 100).length(), 0);
}

TEST(RecordingStretch, OutputsMustExistAndHaveAPlace) {
  EXPECT_NO_THROW(checkOutputs({3, 5}, 5, 2));
  EXPECT_NO_THROW(checkOutputs({0, 0}, 0, 0));
  EXPECT_THROW(checkOutputs({3, 6}, 5, 3), std::invalid_argument);
  EXPECT_THROW(checkOutputs({-1, 2}, 5, 3), std::invalid_argument);
  EXPECT_THROW(checkOutputs({3, 2}, 5, 0), std::invalid_argument);
  EXPECT_THROW(checkOutputs({3, 5}, 5, 3), std::invalid_argument);
}

} // namespace
} // namespace emeg
