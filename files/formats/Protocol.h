#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// Unit of the times in a protocol (PRT) file.
enum class TimeResolution : int32_t { Usec = 0, Msec = 1, Volumes = 2 };

struct Colour {
  int16_t r = 0, g = 0, b = 0;
};

/// A named condition with its intervals; in memory the times are microseconds.
struct Condition {
  std::string conditionName;
  std::vector<double> onsets;
  std::vector<double> offsets; ///< as many as onsets
  std::optional<Colour> colour;
  int32_t nrOfIntervals() const { return static_cast<int32_t>(onsets.size()); }
};

/// A stimulation protocol: named conditions in slots, slot 0 an empty placeholder, at most 256 slots.
class Protocol {
public:
  static constexpr int maxNrOfConditions = 256;

  Protocol() = default;
  Protocol(bool isInteractive, std::string fileNameSuffix, TimeResolution resolution);

  bool interactive = false; ///< condition numbers and the customisation dialogue on writing
  std::string name;         ///< suffix of the file name; empty for the main protocol
  TimeResolution resolutionOfTime = TimeResolution::Usec;
  std::vector<Condition> conditions; ///< slot 0 is the placeholder, once started

  /// Slots in use, the placeholder included.
  int nrOfConditions() const { return static_cast<int>(conditions.size()); }

  /// Leaves the placeholder slot alone.
  void startConditions();

  /// Makes the condition of that name current, inserting it in ascending byte order of names when there is
  /// none. An existing condition keeps its colour and intervals. With 256 slots in use the current condition
  /// becomes none. Conditions that were not started yet are. `capacity` is the expected number of intervals
  /// (-1: unknown); it reserves memory and limits nothing. No colour is stored when r is -1.
  void findOrAddCondition(const std::string& conditionName, int64_t capacity, int r, int g, int b);

  /// Appends an interval to the current condition; ignored while there is none.
  void addInterval(double onset, double offset);

  /// Removes a slot; later ones move down one place and the current condition stays the one it was, or
  /// becomes none.
  void removeCondition(int index);

  /// Index of the current condition; -1: none.
  int currentCondition() const { return currentCondition_; }

private:
  int currentCondition_ = -1;
};

/// The saturated colour of a hue in degrees: 0 red, 120 green, 240 blue; whole turns do not count.
Colour colourOfHue(double degrees);

/// Gives every real condition without a colour one of evenly spaced hues, the first one red.
void assignMissingColours(Protocol& protocol);

/// Cuts every interval to [startUs, endUs], shifts it by -startUs, and drops what lies outside; conditions
/// that are left without intervals disappear and later ones move up.
void cutToInterval(Protocol& protocol, double startUs, double endUs);

/// Multiplies every time by `factor` (from a file's own unit to microseconds).
void scaleTimes(Protocol& protocol, double factor);

/// Factor by which the writer multiplies microseconds to get the file's unit: "usec" 1, "msec" 0.001,
/// "Volumes" samplingFrequency x 0.000001.
double timeFactorOf(TimeResolution resolution, double samplingFrequency);

/// Label of slot `index` in a file, at most 127 characters: "Condition%02d_" first when the protocol is
/// interactive, blanks replaced by '_', "Code 12" written as "Code12".
std::string conditionLabel(const Protocol& protocol, int index);

} // namespace emeg
