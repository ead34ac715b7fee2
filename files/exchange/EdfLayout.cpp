#include "files/exchange/EdfLayout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <tuple>

namespace emeg {

namespace {

constexpr double shortestRecord = 0.001;
constexpr double longestRecord = 60;
constexpr double shortestUsualRecord = 0.1;
constexpr double longestUsualRecord = 10;
constexpr double unitsPerSecond = 1e5; // of EDFlib's record duration
constexpr int64_t mostAnnotationSignals = 64;
constexpr int64_t bytesPerAnnotationSignal = 120;
constexpr int64_t largestEdfRecord = 10 << 20;
constexpr int64_t largestBdfRecord = 15 << 20;
constexpr int most16 = 32767;
constexpr int most24 = 8388607;

constexpr size_t widthOfNumber = 8;

/// What speaks against a layout, the worst first; a smaller one is better.
struct Penalty {
  int64_t rateError = 0; ///< of the rate that the record's rounded duration gives, in 1e-12
  bool unusualDuration = false;
  int64_t nrOfPaddedTimePoints = 0;
  bool rateRounds = false; ///< readers compute the rate with a wrong last bit
  double distanceFromOneSecond = 0;

  bool operator<(const Penalty& other) const { return parts() < other.parts(); }

private:
  std::tuple<int64_t, bool, int64_t, bool, double> parts() const {
    return {rateError, unusualDuration, nrOfPaddedTimePoints, rateRounds, distanceFromOneSecond};
  }
};

Penalty penaltyOf(const EdfRecordLayout& layout, double samplingFrequency) {
  const double duration = layout.recordDuration();
  Penalty penalty;
  penalty.rateError = std::llround(std::abs(layout.samplingFrequency() / samplingFrequency - 1) * 1e12);
  penalty.unusualDuration = duration < shortestUsualRecord || duration > longestUsualRecord;
  penalty.nrOfPaddedTimePoints = layout.nrOfPaddedTimePoints;
  penalty.rateRounds = layout.samplingFrequency() != samplingFrequency;
  penalty.distanceFromOneSecond = std::abs(std::log(duration));
  return penalty;
}

/// `value` with that many decimals, when this takes at most eight characters.
std::optional<double> withDecimals(double value, int decimals, bool below) {
  const double power = std::pow(10, decimals);
  const double rounded = (below ? std::floor(value * power) : std::ceil(value * power)) / power;
  std::array<char, 400> text{};
  const int length = std::snprintf(text.data(), text.size(), "%.*f", decimals, rounded);
  if (length < 0 || static_cast<size_t>(length) > widthOfNumber) return std::nullopt;
  const double read = std::strtod(text.data(), nullptr);
  const bool held = below ? read <= value : read >= value;
  return held ? std::optional(read) : std::nullopt;
}

std::optional<double> eightCharacters(double value, bool below) {
  if (!std::isfinite(value)) return std::nullopt;
  for (int decimals = 6; decimals >= 0; --decimals)
    if (const auto number = withDecimals(value, decimals, below)) return number;
  return std::nullopt;
}

EdfScale emptyScale(bool is24Bit) {
  EdfScale scale;
  scale.digitalMaximum = is24Bit ? most24 : most16;
  scale.digitalMinimum = -scale.digitalMaximum - 1;
  return scale;
}

double unitsOf(double value, const RecordingChannel& channel) {
  return channel.isVoltage() ? value / channel.microvoltsPerUnit : value;
}

} // namespace

double EdfScale::step() const {
  return (physicalMaximum - physicalMinimum) /
         (static_cast<double>(digitalMaximum) - static_cast<double>(digitalMinimum));
}

std::optional<double> eightCharactersBelow(double value) {
  return eightCharacters(value, true);
}

std::optional<double> eightCharactersAbove(double value) {
  return eightCharacters(value, false);
}

std::string eightCharacterText(double number) {
  std::array<char, 400> text{};
  for (int decimals = 0; decimals <= 6; ++decimals) {
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    if (std::strtod(text.data(), nullptr) == number) break;
  }
  return text.data();
}

std::optional<EdfRecordLayout> chooseEdfRecords(double samplingFrequency, int64_t nrOfTimePoints,
                                                int nrOfChannels, int64_t nrOfMarkers, bool is24Bit) {
  const int64_t bytesPerSample = is24Bit ? 3 : 2;
  const int64_t largestRecord = is24Bit ? largestBdfRecord : largestEdfRecord;
  // A recording shorter than a record of the shortest duration is padded.
  const auto first = std::max<int64_t>(1, std::llround(std::ceil(samplingFrequency * shortestRecord)));
  const auto last = std::clamp<int64_t>(std::llround(std::floor(samplingFrequency * longestRecord)), first,
                                        std::max(first, nrOfTimePoints));
  std::optional<EdfRecordLayout> best;
  Penalty smallest;
  for (int64_t n = first; n <= last; ++n) {
    const double duration = static_cast<double>(n) / samplingFrequency;
    const auto units = static_cast<int>(std::lround(duration * unitsPerSecond));
    if (units < shortestRecord * unitsPerSecond || units > longestRecord * unitsPerSecond) continue;
    EdfRecordLayout layout;
    layout.samplesPerRecord = static_cast<int>(n);
    layout.durationIn10us = units;
    layout.nrOfRecords = (nrOfTimePoints + n - 1) / n;
    layout.nrOfPaddedTimePoints = layout.nrOfRecords * n - nrOfTimePoints;
    const int64_t annotationSignals =
        std::max<int64_t>(1, (nrOfMarkers + layout.nrOfRecords - 1) / layout.nrOfRecords);
    layout.nrOfAnnotationSignals = static_cast<int>(std::min(annotationSignals, mostAnnotationSignals));
    const int64_t recordSize =
        nrOfChannels * n * bytesPerSample + layout.nrOfAnnotationSignals * bytesPerAnnotationSignal;
    if (annotationSignals > mostAnnotationSignals || recordSize > largestRecord) continue;

    const Penalty penalty = penaltyOf(layout, samplingFrequency);
    if (best && !(penalty < smallest)) continue;
    best = layout;
    smallest = penalty;
  }
  return best;
}

std::optional<EdfScale> edfScaleFor(const ValueRange& range, const RecordingChannel& channel, bool is24Bit) {
  double smallest = unitsOf(range.smallest, channel);
  double largest = unitsOf(range.largest, channel);
  if (!(smallest < largest)) {
    smallest -= 1;
    largest += 1;
  }
  EdfScale scale = emptyScale(is24Bit);
  // Around 0 the range is symmetric, so that 0 stays 0.
  if (smallest <= 0 && largest >= 0) {
    largest = std::max(-smallest, largest);
    smallest = -largest;
    scale.digitalMinimum = -scale.digitalMaximum;
  }
  const auto below = eightCharactersBelow(smallest);
  const auto above = eightCharactersAbove(largest);
  if (!below || !above) return std::nullopt;
  scale.physicalMinimum = *below;
  scale.physicalMaximum = *above;
  // A minus sign takes a digit: the farther end counts.
  if (scale.digitalMinimum == -scale.digitalMaximum) scale.physicalMaximum = -*below;
  return scale;
}

std::optional<EdfScale> edfScaleOfStored(const RecordingChannel& channel, bool is24Bit) {
  if (!channel.stored) return std::nullopt;
  const StoredIntegers& stored = *channel.stored;
  EdfScale scale = emptyScale(is24Bit);
  if (stored.smallest < scale.digitalMinimum || stored.largest > scale.digitalMaximum) return std::nullopt;
  const double low = unitsOf(stored.valueOf(stored.smallest), channel);
  const double high = unitsOf(stored.valueOf(stored.largest), channel);
  const double step = std::abs(unitsOf(stored.step, channel));
  // The nearest of the eight-character numbers, in whichever direction it lies.
  const auto nearest = [](double value) -> std::optional<double> {
    const auto below = eightCharactersBelow(value);
    const auto above = eightCharactersAbove(value);
    if (!below || !above) return std::nullopt;
    return value - *below < *above - value ? below : above;
  };
  const auto minimum = nearest(low);
  const auto maximum = nearest(high);
  if (!minimum || !maximum || std::abs(*minimum - low) > step / 2 || std::abs(*maximum - high) > step / 2)
    return std::nullopt;
  scale.physicalMinimum = *minimum;
  scale.physicalMaximum = *maximum;
  scale.digitalMinimum = static_cast<int>(stored.smallest);
  scale.digitalMaximum = static_cast<int>(stored.largest);
  return scale;
}

} // namespace emeg
