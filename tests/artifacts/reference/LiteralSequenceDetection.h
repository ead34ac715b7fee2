#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// A plain second implementation of the MR sequence detection, step by step and without any restructuring, to
/// compare the real one with. Every intermediate result can be asked for on its own.

/// A signal with the coefficients of its cubic spline.
struct LiteralSpline {
  std::vector<double> y, b, c, d;
};

LiteralSpline literalSpline(const std::vector<double>& signal);
/// Value and derivative (per sample) at k + f, 0 <= f < 1; 0 where k is not a sample of the signal.
double literalSplineValue(const LiteralSpline& spline, int64_t k, double f);
double literalSplineDerivative(const LiteralSpline& spline, int64_t k, double f);

/// A stretch in which the envelope stays within the threshold.
struct LiteralRun {
  int64_t start = 0;
  int64_t length = 0;
};

/// Runs of similar length; `length` is that of its first member.
struct LiteralLengthClass {
  int64_t length = 0;
  int64_t count = 0;
};

/// Inclusive range of run lengths.
struct LiteralBand {
  int64_t shortest = 0;
  int64_t longest = -1;
};

/// Amplitude envelope of the part above 100 Hz.
std::vector<double> literalEnvelope(const std::vector<double>& channelSignal, double samplingFrequency,
                                    int32_t log2FftLength);
/// Half the mean of the envelope's top decile; nothing for a flat envelope.
std::optional<double> literalThreshold(const std::vector<double>& envelope);
/// Quiet runs of more than `minimalLength` samples.
std::vector<LiteralRun> literalQuietRuns(const std::vector<double>& envelope, double threshold,
                                         int64_t minimalLength);
/// Classes by descending count.
std::vector<LiteralLengthClass> literalLengthClasses(const std::vector<LiteralRun>& runs);
/// Index of the class that holds the gaps between volumes, if there is one.
std::optional<std::size_t> literalGapClass(const std::vector<LiteralLengthClass>& classes);
LiteralBand literalBand(int64_t length);

/// The quiet runs of one recording, by index; indices outside the list fit no band.
struct LiteralRunList {
  std::vector<LiteralRun> runs;
  int64_t nrOfTimePoints = 0;

  int64_t count() const { return static_cast<int64_t>(runs.size()); }
  bool fits(int64_t index, const LiteralBand& band) const;
  /// Onset of the burst that follows a run; the end of the recording behind the list, 0 before it.
  int64_t end(int64_t index) const;
};

/// Mean over j < length of (signal[start + j] - spline at position + j)^2.
double literalSplineMismatch(const LiteralSpline& spline, int64_t start, double position, int64_t length);
/// Delay in samples between the burst behind run `a` and the burst behind run `b`.
double literalBurstDelay(const LiteralSpline& spline, const LiteralRunList& list, int64_t a, int64_t b,
                         int32_t alignHalfWidth);

/// The acquisition's timing: what the removal needs of the detection. Durations in seconds.
struct LiteralTiming {
  int32_t nrOfVolumes = 0;
  int32_t nrOfSlicesPerVolume = 0;
  double volumeDuration = 0;
  double sliceDuration = 0;
  double firstTriggerTime = 0;
};

struct LiteralDetection : LiteralTiming {
  bool volumeGaps = false;
  bool found = false;
  int64_t firstSlice = 0;
  std::vector<std::string> log; ///< every line but those of the markers and of the window question
};

LiteralDetection literalDetectMRSequence(const std::vector<double>& channelSignal, double samplingFrequency,
                                         int32_t log2FftLength);

/// The averaging window in whole seconds for an answer in slices.
int32_t literalWindowHalfLength(int32_t answerInSlices, const LiteralTiming& timing);

/// Smallest k with 2^k >= n.
int32_t literalLog2Length(std::size_t n);

} // namespace emeg
