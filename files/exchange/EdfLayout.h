#pragma once

#include "files/exchange/RecordingReader.h"

#include <cstdint>
#include <optional>
#include <string>

namespace emeg {

/// How a recording is cut into data records of the same duration, which must be a multiple of 10 us between
/// 1 ms and 60 s.
struct EdfRecordLayout {
  int samplesPerRecord = 0; ///< of one channel
  int durationIn10us = 0;
  int64_t nrOfRecords = 0;
  int64_t nrOfPaddedTimePoints = 0; ///< behind the end of the recording, in the last record
  int nrOfAnnotationSignals = 1;

  double recordDuration() const { return durationIn10us / 1e5; }
  double samplingFrequency() const { return samplesPerRecord / recordDuration(); }
};

/// The records that hold the recording with the fewest padded time points and room for its markers, at best
/// of about a second. Nothing when there is no room for that many markers or channels.
std::optional<EdfRecordLayout> chooseEdfRecords(double samplingFrequency, int64_t nrOfTimePoints,
                                                int nrOfChannels, int64_t nrOfMarkers, bool is24Bit);

/// How a channel's values become the integers of an EDF (16 bits) or BDF (24 bits) file: a range in the
/// channel's unit whose ends have at most eight characters, and the integers at its ends.
struct EdfScale {
  double physicalMinimum = -1, physicalMaximum = 1; ///< in the channel's unit
  int digitalMinimum = -32768, digitalMaximum = 32767;

  /// Units per integer.
  double step() const;
};

/// The scale that holds `range` (microvolts or the channel's own unit). Nothing when it needs more than eight
/// characters.
std::optional<EdfScale> edfScaleFor(const ValueRange& range, const RecordingChannel& channel, bool is24Bit);

/// The scale that keeps the integers of the channel's source. Nothing when it has none, when they have too
/// many bits or when eight characters do not say their range to within half a step.
std::optional<EdfScale> edfScaleOfStored(const RecordingChannel& channel, bool is24Bit);

/// The number of at most eight characters that lies nearest to `value` among those not above it, and among
/// those not below it. Nothing when there is none.
std::optional<double> eightCharactersBelow(double value);
std::optional<double> eightCharactersAbove(double value);

/// Such a number as text, without needless zeros.
std::string eightCharacterText(double number);

} // namespace emeg
