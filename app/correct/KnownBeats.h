#pragma once

#include "app/correct/CorrectParameters.h"
#include "artifacts/cardiac/BcgSeries.h"
#include "artifacts/cardiac/KnownPulses.h"
#include "files/exchange/Recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// Where the heart beats come from: found in the EEG, the recording's markers, or an electrocardiogram.
enum class BeatSource { Blind, Markers, Ecg };

/// "blind", "markers", "ecg".
const char* nameOf(BeatSource source);

/// The heart beats that a run is to use.
struct BeatRequest {
  BeatSource source = BeatSource::Blind;
  std::string name;          ///< of the markers or of the channel
  std::vector<double> times; ///< of the markers, seconds from the first corrected sample
};

/// What `parameters` ask for, in the stretch of `nrOfTimePoints` samples from `firstTimePoint` on. Throws
/// UnusableInput when the recording has no such markers or channel, or markers that cannot be heart beats.
BeatRequest requestedBeats(const RecordingHeader& header, const CorrectParameters& parameters,
                           int64_t firstTimePoint, int64_t nrOfTimePoints);

/// Known beats, and how much later each channel shows their artifact.
struct KnownBeats {
  KnownPulses pulses;
  HeartPeriod period;
  std::vector<int32_t> delays; ///< per channel of the series, samples
  std::string problem;         ///< a sentence when there are too few; empty otherwise
};

/// The beats of a request that is not blind. `ecgSeries` is the electrocardiogram as the channels of `series`
/// are, empty where the request needs none.
KnownBeats findKnownBeats(const BeatRequest& request, const std::vector<double>& ecgSeries,
                          const BcgSeries& series);

} // namespace emeg
