#include "tests/run/ExpectedCalls.h"

#include <algorithm>
#include <optional>

namespace emeg::test {

using nlohmann::json;

namespace {

const std::string prefix = "// EMEG artifacts > ";

std::string patternOf(const std::string& kind) {
  return kind == "CCD" ? "*.ccd" : kind == "PRT" ? "*.prt" : "*.ctc";
}

json fileDialogue(const std::string& kind, int answer, const std::string& path) {
  return {{"call", "lmGetOpenFileName"},
          {"title", "Please select a " + kind + " file..."},
          {"pattern", patternOf(kind)},
          {"description", kind + " files (" + patternOf(kind) + ")"},
          {"answer", answer},
          {"path", path}};
}

} // namespace

ExpectedCalls& ExpectedCalls::add(json call) {
  calls_.push_back(std::move(call));
  return *this;
}

ExpectedCalls ExpectedCalls::ofARun() {
  return ExpectedCalls().version(2, 1, 0).version(2, 1, 0);
}

ExpectedCalls& ExpectedCalls::version(int major, int minor, int revision) {
  return add({{"call", "lmGetVersionOfLumetra"}, {"answer", {major, minor, revision}}});
}

ExpectedCalls& ExpectedCalls::chooses(const std::string& kind, const std::string& path) {
  add(fileDialogue(kind, 1, path));
  return add({{"call", "lmUpdateActiveWindow"}});
}

ExpectedCalls& ExpectedCalls::choosesNo(const std::string& kind) {
  return add(fileDialogue(kind, 0, ""));
}

ExpectedCalls& ExpectedCalls::choosesOnly(const std::string& ctcPath) {
  return choosesNo("CCD").choosesNo("PRT").chooses("CTC", ctcPath);
}

ExpectedCalls& ExpectedCalls::logs(const std::string& message) {
  return logsLine(prefix + message);
}

ExpectedCalls& ExpectedCalls::logsLine(const std::string& line) {
  return add({{"call", "lmLogText"}, {"text", line}});
}

ExpectedCalls& ExpectedCalls::shows(const std::string& message) {
  return add({{"call", "lmMessageBox"}, {"text", message}});
}

ExpectedCalls& ExpectedCalls::asksCorrection(int answer) {
  return add(
      {{"call", "lmGetIntegerInput"},
       {"prompt",
        "Please make a choice for EEG-fMRI artifact correction:\n1 - Correct MRI gradient artifact only.\n2 "
        "- "
        "Correct MRI gradient artifact and BCG artifact (experimental)\n\nPlease Note: BCG artifact "
        "correction "
        "is only experimental and its use may lead to instability or unsatisfactory results.\nIn such cases, "
        "please use the general purpose ICA or OBS methods (available among the other EEG-MEG plugins)\n"},
       {"default", 1},
       {"minimum", 1},
       {"maximum", 2},
       {"answer", answer}});
}

ExpectedCalls& ExpectedCalls::asksVolumeWise(int answer) {
  return add(
      {{"call", "lmYesNoMessageBox"},
       {"prompt", "Should artifact correction be performed volume-wise (preferred)?\nOtherwise it will be "
                  "performed slice-wise."},
       {"answer", answer}});
}

ExpectedCalls& ExpectedCalls::readsWindowParameter(int answer) {
  return add({{"call", "lmGetDlgIntegerParameter"}, {"index", 0}, {"answer", answer}});
}

ExpectedCalls& ExpectedCalls::asksWindow(const std::string& slicesPerSecond, int answer) {
  readsWindowParameter(-1);
  return add({{"call", "lmGetIntegerInput"},
              {"prompt", "Window half-length in slices (" + slicesPerSecond + " slices/s):"},
              {"default", 150},
              {"minimum", 1},
              {"maximum", 1000},
              {"answer", answer}});
}

ExpectedCalls& ExpectedCalls::definesParameters(int volumeWise) {
  return logs("Defining parameters").asksCorrection(1).asksVolumeWise(volumeWise);
}

ExpectedCalls& ExpectedCalls::createsChunks(int count) {
  for (int i = 1; i <= count; ++i) logs("Creating chunk #" + std::to_string(i) + "/32");
  return *this;
}

ExpectedCalls& ExpectedCalls::findsNothing(int nrOfVolumes, int nrOfSlicesPerVolume, int firstSlice) {
  return logs("Automatic detection of MR sequence parameters")
      .logs("No volumes gaps in this data set (continuous acquisition)")
      .logs("Number of volumes: " + std::to_string(nrOfVolumes))
      .logs("Number of slices per volume: " + std::to_string(nrOfSlicesPerVolume))
      .logs("First slice: " + std::to_string(firstSlice));
}

ExpectedCalls& ExpectedCalls::aborts() {
  return logsLine("").logs("Plugin execution was aborted.");
}

ExpectedCalls& ExpectedCalls::writesEverything() {
  return logs("Writing CTC")
      .logs("Writing PRT")
      .logs("Writing CCD")
      .logs("Operations successfully executed!");
}

ExpectedCalls& ExpectedCalls::returns(bool result) {
  return add({{"call", "execute"}, {"answer", result}});
}

std::string differenceOf(const std::vector<json>& calls, const ExpectedCalls& expected) {
  const std::vector<json>& wanted = expected.calls();
  for (size_t i = 0; i < std::max(calls.size(), wanted.size()); ++i) {
    const std::string is = i < calls.size() ? calls[i].dump() : "(the calls end)";
    const std::string should = i < wanted.size() ? wanted[i].dump() : "(the calls end)";
    // Compared as values: the order of the keys does not matter.
    if (i < calls.size() && i < wanted.size() && calls[i] == wanted[i]) continue;
    return "call " + std::to_string(i) + " is\n  " + is + "\nand should be\n  " + should;
  }
  return {};
}

namespace {

/// The value of a text that is a number with this many decimals and nothing else.
std::optional<double> numberIn(const std::string& text, size_t decimals) {
  const size_t point = text.size() - std::min(text.size(), decimals + (decimals > 0 ? 1 : 0));
  const size_t start = text.rfind('-', 0) == 0 ? 1 : 0;
  if (point <= start) return std::nullopt;
  for (size_t i = start; i < text.size(); ++i) {
    const bool isDigit = text[i] >= '0' && text[i] <= '9';
    if (i == point ? text[i] != '.' : !isDigit) return std::nullopt;
  }
  return std::stod(text);
}

/// Replaces the number behind `label` by "#" and keeps it.
bool takeNumber(std::string& line, const std::string& label, size_t decimals, std::vector<double>& numbers) {
  const std::string begin = prefix + label;
  if (line.rfind(begin, 0) != 0) return false;
  const std::optional<double> number = numberIn(line.substr(begin.size()), decimals);
  if (!number) return false;
  numbers.push_back(*number);
  line = begin + "#";
  return true;
}

/// Replaces the three numbers of an interval and keeps them.
bool takeInterval(std::string& line, std::vector<MeasuredNumbers::Interval>& intervals) {
  const std::string separator = " / ";
  const size_t first = line.find(separator);
  const size_t second = first == std::string::npos ? first : line.find(separator, first + 1);
  if (second == std::string::npos || line.rfind(prefix, 0) != 0) return false;
  const size_t behindFirst = first + separator.size();
  const std::optional<double> run = numberIn(line.substr(prefix.size(), first - prefix.size()), 0);
  const std::optional<double> duration = numberIn(line.substr(behindFirst, second - behindFirst), 10);
  const std::optional<double> threshold = numberIn(line.substr(second + separator.size()), 10);
  if (!run || !duration || !threshold) return false;
  intervals.push_back({static_cast<int>(*run), *duration, *threshold});
  line = prefix + "# / # / #";
  return true;
}

} // namespace

MeasuredNumbers withoutMeasuredNumbers(const std::vector<json>& calls) {
  MeasuredNumbers numbers;
  for (json call : calls) {
    if (call.at("call") == "lmLogText") {
      std::string line = call.at("text").get<std::string>();
      const bool taken = takeNumber(line, "Volume duration (s): ", 14, numbers.volumeDurations) ||
                         takeNumber(line, "Slice duration (s): ", 14, numbers.sliceDurations) ||
                         takeNumber(line, "First trigger time (s): ", 6, numbers.firstTriggerTimes) ||
                         takeNumber(line, "First trigger time: ", 6, numbers.firstTriggerTimes) ||
                         takeInterval(line, numbers.intervals);
      if (taken) call["text"] = line;
    }
    numbers.calls.push_back(std::move(call));
  }
  return numbers;
}

} // namespace emeg::test
