#pragma once

#include "files/exchange/ChannelKind.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace emeg {

/// A recording cannot be read or written. The message is a sentence: the file, the place, what was expected,
/// what to do.
class RecordingError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// How a file that stores integers turns them into values: value = step x integer + offset, in the units of
/// `RecordingReader::read`. A value that was read and not changed gives the integer back exactly:
/// `integerOf(value)`.
struct StoredIntegers {
  double step = 1;   ///< microvolts (or units of a channel that holds no voltage) per integer step
  double offset = 0; ///< value of the integer 0
  int64_t smallest = -32768;
  int64_t largest = 32767;

  double valueOf(int64_t integer) const { return step * static_cast<double>(integer) + offset; }
  /// The nearest integer. `value` must be finite and near the range.
  int64_t integerOf(double value) const;
};

struct RecordingChannel {
  std::string name;
  ChannelKind kind = ChannelKind::Eeg;
  std::string kindRule; ///< by which rule the kind was guessed, a short phrase for people
  std::string type;     ///< as the file says it, empty when it says none
  /// Unit in the file, as it is written there ("µV", "mV", "C"); empty: not said, taken as microvolts for a
  /// format that fixes them.
  std::string unit;
  /// Microvolts per `unit`; 0 when the unit is no voltage: values are then in `unit` itself.
  double microvoltsPerUnit = 1;
  bool good = true;
  std::string reference;  ///< BrainVision
  std::string transducer; ///< EDF, BDF
  std::string prefilter;  ///< EDF, BDF
  std::optional<StoredIntegers> stored;

  bool isVoltage() const { return microvoltsPerUnit != 0; }
};

struct RecordingMarker {
  static constexpr int allChannels = -1;

  std::string type;          ///< BrainVision's first field ("Stimulus"); empty where the format has none
  std::string description;   ///< bytes as in the file, UTF-8 where the file says so
  double onset = 0;          ///< samples of the recording, the first sample is 0; may lie between samples
  double duration = 0;       ///< samples
  int channel = allChannels; ///< index from 0
  std::string date;          ///< BrainVision's last field of a new segment: digits, year to microsecond
};

/// A date and time of day without a zone, as the file says it.
struct StartTime {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, microsecond = 0;
};

/// A part of a file's description that this program does not interpret but carries from format to format.
struct RecordingText {
  std::string name; ///< "Comment", "Patient", "Recording", a section's name
  std::string text; ///< lines separated by '\n'
};

/// What is known of a recording beside its samples.
struct RecordingHeader {
  std::string format;           ///< for people: "BrainVision, 16-bit integers, multiplexed"
  double samplingFrequency = 0; ///< Hz
  int64_t nrOfTimePoints = 0;   ///< per channel
  std::vector<RecordingChannel> channels;
  std::vector<RecordingMarker> markers; ///< in ascending order of onset
  std::optional<StartTime> start;
  std::vector<RecordingText> texts;
  std::vector<std::string> files;    ///< every file that was read for it, the one the user named first
  std::vector<std::string> warnings; ///< what was odd but could be understood, sentences for the user

  int nrOfChannels() const { return static_cast<int>(channels.size()); }
  /// Duration in seconds.
  double seconds() const { return static_cast<double>(nrOfTimePoints) / samplingFrequency; }
};

} // namespace emeg
