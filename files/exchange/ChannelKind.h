#pragma once

#include <string>

namespace emeg {

/// What a channel records.
enum class ChannelKind { Eeg, Ecg, Eog, Emg, Trigger, Status, Other };

/// "EEG", "ECG", "EOG", "EMG", "trigger", "status", "other".
const char* nameOf(ChannelKind kind);

struct GuessedKind {
  ChannelKind kind = ChannelKind::Eeg;
  std::string rule; ///< for people: "type \"EEG\"", "name contains \"ECG\"", "no rule applies: EEG"
};

/// What a channel probably records, by the first rule that applies (case does not count):
/// 1. the type that the file gives ("EEG", "EKG", "VEOG", "TRIG", "MISC", ...);
/// 2. the first word of a name of several words ("EEG Fp1", "ECG chest"), the EDF+ standard texts;
/// 3. a name that contains ECG, EKG, EOG or EMG (also behind or before a number: "EMG2", "VEOG"), or is one
/// of
///    the usual names of trigger ("TRIG", "STI 014", "Marker", ...) and status channels;
/// 4. a unit that is no voltage: other;
/// 5. EEG.
/// `type` is empty where the format has none.
GuessedKind guessChannelKind(const std::string& name, const std::string& type, bool isVoltage);

/// Microvolts per unit of that name: V, mV, µV (in either of Unicode's two letters, Latin-1 or "u"), nV; 1
/// for an empty name; 0 when it is no voltage.
double microvoltsIn(const std::string& unit);

} // namespace emeg
