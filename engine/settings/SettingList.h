#pragma once

#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace emeg {

/// What a setting's value is made of.
enum class SettingKind {
  Flag,     ///< on or off
  Integer,  ///< a whole number
  Number,   ///< a finite real number
  Text,     ///< a name
  Names,    ///< a list of names, "NAME,NAME"
  Numbers,  ///< a list of real numbers, "HZ,HZ"
  Stretch,  ///< "START:END", one of which may be left out
  StopBands ///< a list of "HZ" or "HZ:WIDTH"
};

/// "flag", "integer", "number", "text", "names", "numbers", "stretch", "stop bands".
const char* nameOf(SettingKind kind);

/// One thing that a user can ask for: what stands about it in help texts, descriptions of runs, schemas and
/// manuals is made from this.
struct Setting {
  const char* name; ///< as on the command line, without dashes: "high-pass"
  const char* key;  ///< in the description of a run: "HighPass"
  SettingKind kind;
  const char* group;       ///< headline of the settings among which it is listed
  const char* placeholder; ///< stands for the value: "HZ"; empty for flags
  const char* unit;        ///< "Hz", "seconds", "slices", ...; empty where there is none
  std::string defaultText; ///< "150", or what happens without it: "none"; empty for flags, which are off
  std::string help;        ///< a sentence without its full stop, unit, range and default
  double smallest = -std::numeric_limits<double>::infinity(); ///< of a value or of every value of a list
  double largest = std::numeric_limits<double>::infinity();

  bool hasRange() const { return largest < std::numeric_limits<double>::infinity(); }
  /// "1 to 1000"; empty without a range.
  std::string rangeText() const;
  /// Everything on one line: "Half-length of the averaging window, in slices, 1 to 1000 [150]".
  std::string helpLine() const;
};

/// All settings of a correction, in the order in which they are listed. Their defaults are those of
/// CorrectionSettings.
std::span<const Setting> correctionSettings();

/// The setting of that name; null without one.
const Setting* settingNamed(std::span<const Setting> settings, std::string_view name);

} // namespace emeg
