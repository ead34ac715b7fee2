#pragma once

#include "artifacts/cardiac/search/HeartPeriod.h"
#include "artifacts/cardiac/series/BcgSeries.h"
#include "tests/artifacts/reference/LiteralHeartPeriod.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// A recording to compare implementations on. Behind the `length` samples of every channel stand a few that
/// do not belong to it and must not be read.
struct TestRecording {
  std::string name;
  std::vector<std::vector<double>> channels;
  int32_t length = 0;
  float rate = 0;

  BcgSeries view() const { return {channels, length, rate}; }
};

TestRecording makeRecording(std::string name, std::vector<std::vector<double>> channels, float rate);

/// A heart beat artifact in background EEG, made as a scanner's recording is.
TestRecording simulatedHeart(double beatsPerMinute, uint64_t seed, double seconds, int nrOfChannels,
                             double samplingFrequency);

/// Hearts of several rates, in recordings of several channel counts and sampling rates, odd ones among them.
std::vector<TestRecording> simulatedRecordings();
/// Nothing periodic, at low rates: cheap enough for many.
std::vector<TestRecording> noiseRecordings(uint32_t firstSeed, int count);
/// Values that agree exactly, or but for rounding: sums of cosines, beats that repeat exactly, identical and
/// inverted channels, beats of two shapes in turn, coarse quantisation.
std::vector<TestRecording> tiedRecordings();
/// Nothing to align the beats with where they start: they never get ahead, and the tracking ends when its
/// list is full.
std::vector<TestRecording> stuckRecordings();
/// Channels that are dead throughout, for half of the recording or but for one sample.
std::vector<TestRecording> impairedRecordings();
/// From one sample to a few periods.
std::vector<TestRecording> shortRecordings();
/// Huge and tiny samples, also such that all squares vanish or overflow.
std::vector<TestRecording> extremeRecordings();

/// Zero but for unit impulses.
std::vector<double> impulses(int32_t length, const std::vector<int32_t>& positions);

/// Beats like a heart: a wave of both signs every 48 to 52 samples, in a little noise.
std::vector<double> beatingChannel(int32_t length, uint32_t seed);

HeartPeriod heartOf(const LiteralPeriod& literal);
LiteralPeriod literalOf(const HeartPeriod& heart);
/// The accepted intervals of a period.
HeartPeriod heartOfPeriod(int32_t period);

/// Equal, number by number; not a number equals itself.
::testing::AssertionResult sameValues(const std::vector<float>& actual, const std::vector<float>& expected);
::testing::AssertionResult sameValues(const std::vector<double>& actual, const std::vector<double>& expected);

} // namespace emeg
