#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

struct SampleSpans : ::testing::Test {
  void use(int64_t nrOfTimePoints, double samplingFrequency) {
    pretendInput(converter, 2, nrOfTimePoints, samplingFrequency);
  }
  void restrictTo(float startMs, float endMs) {
    converter.switches.intervalRestricted = true;
    converter.values.intervalStartMs = startMs;
    converter.values.intervalEndMs = endMs;
  }
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(SampleSpans, WithoutFilterOrArtifactCorrectionIsTheIntervalItself) {
  use(1000, 100);
  restrictTo(1000, 2000);
  EXPECT_TRUE(converter.deriveSampleSpan());
  const SampleSpan& span = converter.span;
  EXPECT_EQ(span.firstProcessedTimePoint, 100);
  EXPECT_EQ(span.lastProcessedTimePoint, 199);
  EXPECT_EQ(span.marginTimePoints, 0);
  EXPECT_EQ(span.fftLength, span.nrOfOutputTimePoints);
  EXPECT_EQ(span.timePointsPerChunk, 4); // 100 / 32, rounded up
}

TEST_F(SampleSpans, IsWidenedByFiveSamplesOnBothSides) {
  use(1000, 100);
  restrictTo(1000, 2000);
  converter.switches.anyArtifactCorrection = true;
  EXPECT_TRUE(converter.deriveSampleSpan());
  const SampleSpan& span = converter.span;
  EXPECT_EQ(span.marginTimePoints, 5);
  EXPECT_EQ(span.firstTimePoint, 100);
  EXPECT_EQ(span.firstProcessedTimePoint, 95);
  EXPECT_EQ(span.lastProcessedTimePoint, 204);
  EXPECT_EQ(span.log2FftLength, 7); // 110 samples
  EXPECT_EQ(span.fftLength, 128);
  EXPECT_EQ(span.timePointsPerChunk, 4);
}

TEST_F(SampleSpans, IsWidenedByFiveDecimatedSamples) {
  use(1000, 100);
  restrictTo(1000, 2000);
  converter.switches.filteringNeeded = true;
  converter.filters.decimationFactor = 7;
  EXPECT_TRUE(converter.deriveSampleSpan());
  EXPECT_EQ(converter.span.marginTimePoints, 35);
  EXPECT_EQ(converter.span.firstProcessedTimePoint, 65);
  EXPECT_EQ(converter.span.lastProcessedTimePoint, 234);
  EXPECT_EQ(converter.span.fftLength, 256);           // 170 samples
  EXPECT_EQ(converter.span.nrOfOutputTimePoints, 15); // 0, 7, ... 98
}

TEST_F(SampleSpans, TheTransformLengthIsThatBeforeTheMarginIsClipped) {
  use(250, 100);
  converter.switches.filteringNeeded = true;
  EXPECT_TRUE(converter.deriveSampleSpan());
  EXPECT_EQ(converter.span.firstProcessedTimePoint, 0);
  EXPECT_EQ(converter.span.lastProcessedTimePoint, 249);
  EXPECT_EQ(converter.span.fftLength, 512) << "260 samples with the margins, 250 without";
  EXPECT_EQ(converter.span.log2FftLength, 9);
}

TEST_F(SampleSpans, AnExactPowerOfTwoNeedsNoLongerTransform) {
  use(118, 100);
  converter.switches.filteringNeeded = true;
  EXPECT_TRUE(converter.deriveSampleSpan());
  EXPECT_EQ(converter.span.fftLength, 128);
}

TEST_F(SampleSpans, TheOutputHoldsEveryFirstOfDecimationFactorSamples) {
  const std::vector<std::array<int64_t, 3>> cases = {{100, 1, 100}, {100, 2, 50}, {101, 2, 51},
                                                     {99, 2, 50},   {100, 7, 15}, {3, 20, 1}};
  for (const auto& [samples, factor, outputs] : cases) {
    use(samples, 100);
    converter.filters.decimationFactor = static_cast<int32_t>(factor);
    EXPECT_TRUE(converter.deriveSampleSpan());
    EXPECT_EQ(converter.span.nrOfOutputTimePoints, outputs) << samples << " by " << factor;
  }
}

TEST_F(SampleSpans, ChunksHoldAThirtySecondRoundedUp) {
  for (const auto& [samples, perChunk] :
       {std::pair<int64_t, int64_t>{1, 1}, {32, 1}, {33, 2}, {64, 2}, {65, 3}, {3200, 100}}) {
    use(samples, 100);
    EXPECT_TRUE(converter.deriveSampleSpan());
    EXPECT_EQ(converter.span.timePointsPerChunk, perChunk) << samples;
  }
}

struct ChunkLayouts : ::testing::Test {
  ChunkLayouts() {
    pretendInput(converter, 3, 1000, 100);
    converter.input.dataOffset = 32;
    converter.input.inputSampleFormat = SampleFormat::Int16;
  }
  void useSpan(int64_t first, int64_t last) {
    converter.span.firstProcessedTimePoint = first;
    converter.span.lastProcessedTimePoint = last;
    converter.span.timePointsPerChunk = (last - first + 1 + 31) / 32;
  }
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(ChunkLayouts, MapEveryChunkOntoOneBlockOfTheInput) {
  useSpan(95, 194); // 100 time points, 4 per chunk
  EXPECT_TRUE(converter.computeChunkLayout());
  const ChunkLayout& layout = converter.chunkLayout;
  EXPECT_EQ(layout.sourceChunkLength, 4);
  EXPECT_EQ(layout.nrOfSourceChunks, 32);
  EXPECT_EQ(layout.valuesPerSourceChunk, 12);
  ASSERT_EQ(layout.sourceChunks.size(), 32u);
  ASSERT_GE(layout.sources.size(), 25u);
  for (int64_t i = 0; i < 25; ++i) {
    const ChunkSource& source = layout.sources[static_cast<size_t>(i)];
    EXPECT_EQ(source.firstSourceChunk, i);
    EXPECT_EQ(source.lastSourceChunk, i);
    EXPECT_EQ(source.offsetInFirst, 0);
    EXPECT_EQ(source.offsetInLast, 3);
    const SourceChunk& block = layout.sourceChunks[static_cast<size_t>(i)];
    EXPECT_EQ(block.stream, &converter.input.ctcFile);
    EXPECT_EQ(block.byteOffset, 32 + (95 * 3 + i * 12) * 2);
  }
}

TEST_F(ChunkLayouts, TheLastChunkIsShorterWhenTheSpanIsNotDivisibleByThirtyTwo) {
  useSpan(10, 10 + 31 * 4 + 1); // 126 time points
  EXPECT_TRUE(converter.computeChunkLayout());
  EXPECT_EQ(converter.chunkLayout.sources[31].offsetInLast, 1);
  EXPECT_EQ(converter.chunkLayout.sources[30].offsetInLast, 3);
}

TEST_F(ChunkLayouts, ThirtyThreeTimePointsFillSeventeenChunks) {
  useSpan(0, 32);
  EXPECT_EQ(converter.span.timePointsPerChunk, 2);
  EXPECT_TRUE(converter.computeChunkLayout());
  EXPECT_EQ(converter.chunkLayout.sources[15].offsetInLast, 1);
  EXPECT_EQ(converter.chunkLayout.sources[16].offsetInLast, 0);
}

TEST_F(ChunkLayouts, AreNotNeededForInputThatIsStoredChannelAfterChannel) {
  converter.input.multiplexedInput = false;
  useSpan(0, 99);
  EXPECT_TRUE(converter.computeChunkLayout());
  EXPECT_TRUE(converter.chunkLayout.sources.empty());
  EXPECT_TRUE(converter.chunkLayout.sourceChunks.empty());
}

TEST_F(ChunkLayouts, OfAGivenSourceChunkingCrossItsBoundaries) {
  converter.chunkLayout.nrOfSourceChunks = 5;
  converter.chunkLayout.sourceChunkLength = 30;
  converter.chunkLayout.sourceChunks.resize(5);
  useSpan(7, 139); // 133 time points, 5 per chunk, 27 chunks
  EXPECT_TRUE(converter.computeChunkLayout());
  const ChunkLayout& layout = converter.chunkLayout;
  EXPECT_EQ(layout.valuesPerSourceChunk, 90);
  EXPECT_EQ(layout.nrOfSourceChunks, 5);
  ASSERT_GE(layout.sources.size(), 27u);
  for (int64_t i = 0; i < 27; ++i) {
    const int64_t start = 7 + 5 * i;
    const int64_t end = i == 26 ? 139 : start + 4;
    const ChunkSource& source = layout.sources[static_cast<size_t>(i)];
    EXPECT_EQ(source.firstSourceChunk, start / 30) << i;
    EXPECT_EQ(source.offsetInFirst, start % 30) << i;
    EXPECT_EQ(source.lastSourceChunk, end / 30) << i;
    EXPECT_EQ(source.offsetInLast, end - end / 30 * 30) << i;
  }
}

TEST_F(ChunkLayouts, SampleSizesFollowFromTheSampleFormat) {
  for (const auto& [format, size] : {std::pair<SampleFormat, int>{SampleFormat::Int16, 2},
                                     {SampleFormat::Float32, 4},
                                     {SampleFormat::Int32, 4},
                                     {SampleFormat::Float64, 8}}) {
    QuietConverter other;
    pretendInput(other, 1, 10, 100);
    other.span.lastProcessedTimePoint = 9;
    other.span.timePointsPerChunk = 1;
    other.input.inputSampleFormat = format;
    EXPECT_TRUE(other.computeChunkLayout());
    EXPECT_EQ(other.input.bytesPerSample, size);
  }
}

} // namespace
} // namespace emeg
