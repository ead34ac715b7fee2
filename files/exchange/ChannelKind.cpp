#include "files/exchange/ChannelKind.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <span>
#include <string_view>
#include <utility>

namespace emeg {

namespace {

using KindOfWord = std::pair<std::string_view, ChannelKind>;

/// Types as EEGLAB, BIDS and EDF+ call them.
constexpr std::array kindsOfTypes = std::to_array<KindOfWord>({
    {"EEG", ChannelKind::Eeg},       {"REF", ChannelKind::Eeg},         {"ECG", ChannelKind::Ecg},
    {"EKG", ChannelKind::Ecg},       {"EOG", ChannelKind::Eog},         {"HEOG", ChannelKind::Eog},
    {"VEOG", ChannelKind::Eog},      {"REOG", ChannelKind::Eog},        {"EMG", ChannelKind::Emg},
    {"TRIG", ChannelKind::Trigger},  {"TRIGGER", ChannelKind::Trigger}, {"STIM", ChannelKind::Trigger},
    {"STATUS", ChannelKind::Status}, {"MISC", ChannelKind::Other},      {"OTHER", ChannelKind::Other},
    {"RESP", ChannelKind::Other},    {"GSR", ChannelKind::Other},       {"TEMP", ChannelKind::Other},
    {"PPG", ChannelKind::Other},     {"AUDIO", ChannelKind::Other},     {"ERG", ChannelKind::Other},
    {"MEG", ChannelKind::Other},     {"SAO2", ChannelKind::Other},
});

/// Whole names; digits at their end do not count.
constexpr std::array kindsOfNames = std::to_array<KindOfWord>({
    {"TRIG", ChannelKind::Trigger},
    {"TRIGGER", ChannelKind::Trigger},
    {"STI", ChannelKind::Trigger},
    {"STIM", ChannelKind::Trigger},
    {"MARKER", ChannelKind::Trigger},
    {"STATUS", ChannelKind::Status},
    {"RESP", ChannelKind::Other},
    {"GSR", ChannelKind::Other},
    {"EDA", ChannelKind::Other},
    {"TEMP", ChannelKind::Other},
    {"AUX", ChannelKind::Other},
});

constexpr std::array kindsOfParts = std::to_array<KindOfWord>({
    {"ECG", ChannelKind::Ecg},
    {"EKG", ChannelKind::Ecg},
    {"EOG", ChannelKind::Eog},
    {"EMG", ChannelKind::Emg},
});

std::string upperCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

const KindOfWord* entryOf(std::span<const KindOfWord> entries, std::string_view word) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [word](const KindOfWord& entry) { return entry.first == word; });
  return found == entries.end() ? nullptr : &*found;
}

std::string_view withoutNumber(std::string_view name) {
  const size_t last = name.find_last_not_of("0123456789 _-");
  return last == std::string_view::npos ? std::string_view() : name.substr(0, last + 1);
}

} // namespace

const char* nameOf(ChannelKind kind) {
  switch (kind) {
  case ChannelKind::Eeg:
    return "EEG";
  case ChannelKind::Ecg:
    return "ECG";
  case ChannelKind::Eog:
    return "EOG";
  case ChannelKind::Emg:
    return "EMG";
  case ChannelKind::Trigger:
    return "trigger";
  case ChannelKind::Status:
    return "status";
  case ChannelKind::Other:
    break;
  }
  return "other";
}

GuessedKind guessChannelKind(const std::string& name, const std::string& type, bool isVoltage) {
  if (const KindOfWord* entry = entryOf(kindsOfTypes, upperCase(type)))
    return {entry->second, "its type is \"" + type + "\""};

  const std::string upper = upperCase(name);
  if (const size_t blank = upper.find(' '); blank != std::string::npos && blank > 0)
    if (const KindOfWord* entry = entryOf(kindsOfTypes, std::string_view(upper).substr(0, blank)))
      return {entry->second, "its name begins with \"" + name.substr(0, blank) + "\""};
  if (const KindOfWord* entry = entryOf(kindsOfNames, withoutNumber(upper)))
    return {entry->second, "its name is \"" + name + "\""};
  for (const auto& [part, kind] : kindsOfParts)
    if (upper.find(part) != std::string::npos)
      return {kind, "its name contains \"" + std::string(part) + "\""};

  if (!isVoltage) return {ChannelKind::Other, "its unit is no voltage"};
  return {ChannelKind::Eeg, "no other rule applies"};
}

double microvoltsIn(const std::string& unit) {
  // The micro sign, the Greek letter, Latin-1's micro sign, and what is left of them in ASCII.
  for (const char* micro : {"uV", "\xC2\xB5V", "\xCE\xBCV", "\xB5V", "UV", "uv", "microvolt", "microvolts"})
    if (unit == micro) return 1;
  if (unit.empty()) return 1;
  if (unit == "V" || unit == "v" || unit == "volt" || unit == "volts") return 1e6;
  if (unit == "mV" || unit == "mv") return 1e3;
  if (unit == "nV" || unit == "nv") return 1e-3;
  return 0;
}

} // namespace emeg
