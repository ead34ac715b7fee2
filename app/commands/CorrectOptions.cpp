#include "app/commands/CorrectOptions.h"

#include "app/correct/RunOptions.h"
#include "engine/settings/SettingList.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace emeg {

namespace {

/// The whole text as a number.
std::optional<double> numberIn(const std::string& text) {
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

/// "START:END", "START:" or ":END".
std::optional<Seconds> intervalIn(const std::string& text) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos || text == ":") return std::nullopt;
  Seconds interval;
  const std::string start = text.substr(0, colon);
  const std::string end = text.substr(colon + 1);
  if (!start.empty()) {
    const std::optional<double> number = numberIn(start);
    if (!number) return std::nullopt;
    interval.start = *number;
  }
  if (!end.empty()) {
    interval.end = numberIn(end);
    if (!interval.end) return std::nullopt;
  }
  return interval;
}

/// "HZ" or "HZ:WIDTH".
std::optional<Notch> notchIn(const std::string& text) {
  const size_t colon = text.find(':');
  const std::optional<double> frequency = numberIn(text.substr(0, colon));
  const std::optional<double> width =
      colon == std::string::npos ? Notch().width : numberIn(text.substr(colon + 1));
  if (!frequency || !width) return std::nullopt;
  return Notch{*frequency, *width};
}

/// An empty name would select what the option's absence does.
std::string problemWithName(const std::string& text) {
  return text.empty() ? "the name is empty; leave the option out for what happens without it" : "";
}

/// Behind a check of the range, which lets pass what compares with nothing.
std::string problemWithNumber(const std::string& text) {
  const std::optional<double> number = numberIn(text);
  return number && std::isfinite(*number) ? "" : "\"" + text + "\" is not a number, such as 2.5";
}

std::string problemWithInterval(const std::string& text) {
  return intervalIn(text) ? "" : "\"" + text + "\" is not START:END in seconds, such as 12:312 or 12:";
}

std::string problemWithNotch(const std::string& text) {
  return notchIn(text) ? "" : "\"" + text + "\" is not HZ or HZ:WIDTH, such as 50 or 50:4";
}

/// Declares one option by its description; what it can take follows from the type of its value.
class Declarer {
public:
  Declarer(CLI::App& app, std::span<const Setting> settings) : app_(app), settings_(settings) {}

  template <typename Value>
  void operator()(const char* name, Value& value) const {
    const Setting& setting = *settingNamed(settings_, name);
    CLI::Option* option = add(setting, value);
    option->group(setting.group);
    if (setting.kind != SettingKind::Flag) option->type_name(setting.placeholder);
    if (setting.hasRange()) option->check(CLI::Range(setting.smallest, setting.largest));
    if (setting.kind == SettingKind::Number) option->check(problemWithNumber);
  }

private:
  static std::string namesOf(const Setting& setting) {
    const std::string name = std::string("--") + setting.name;
    return name == "--output" ? "-o," + name : name;
  }

  CLI::Option* add(const Setting& setting, bool& value) const {
    return app_.add_flag(namesOf(setting), value, setting.helpLine());
  }
  template <typename Value>
  CLI::Option* add(const Setting& setting, Value& value) const {
    return app_.add_option(namesOf(setting), value, setting.helpLine());
  }
  CLI::Option* add(const Setting& setting, std::string& value) const {
    return app_.add_option(namesOf(setting), value, setting.helpLine())->check(problemWithName);
  }
  template <typename Value>
  CLI::Option* add(const Setting& setting, std::vector<Value>& values) const {
    return app_.add_option(namesOf(setting), values, setting.helpLine())
        ->allow_extra_args(false)
        ->delimiter(',');
  }
  CLI::Option* add(const Setting& setting, std::optional<Seconds>& value) const {
    const auto take = [&value](const std::string& text) { value = intervalIn(text); };
    return app_.add_option_function<std::string>(namesOf(setting), take, setting.helpLine())
        ->check(problemWithInterval);
  }
  CLI::Option* add(const Setting& setting, std::vector<Notch>& values) const {
    const auto take = [&values](const std::vector<std::string>& texts) {
      for (const std::string& text : texts)
        if (const std::optional<Notch> notch = notchIn(text)) values.push_back(*notch);
    };
    return app_.add_option_function<std::vector<std::string>>(namesOf(setting), take, setting.helpLine())
        ->allow_extra_args(false)
        ->delimiter(',')
        ->check(problemWithNotch);
  }

  CLI::App& app_;
  std::span<const Setting> settings_;
};

/// Which options do not go together, or not without another one.
void relate(CLI::App& app) {
  const auto option = [&app](const char* name) { return app.get_option(std::string("--") + name); };
  option("pulse-markers")->needs(option("bcg"));
  option("ecg")->needs(option("bcg"))->excludes(option("pulse-markers"));
  option("volume-wise")->excludes(option("slice-wise"));
  option("slice-markers")->excludes(option("volume-markers"));
  option("tr")->excludes(option("volume-markers"))->excludes(option("slice-markers"));
  option("first")->needs(option("tr"));
  option("rate")->excludes(option("decimate"));
  option("bids")->excludes(option("output"));
  option("verbose")->excludes(option("quiet"));
  // The plug-in knows nothing of these.
  for (const char* name : {"pulse-markers", "ecg", "volume-markers", "slice-markers", "tr", "slices", "first",
                           "treat-as-eeg", "repair-saturation"})
    option("as-plugin")->excludes(option(name));
  option("scratch")->check(CLI::ExistingDirectory);
}

} // namespace

void declareCorrectOptions(CLI::App& app, CorrectParameters& parameters) {
  visitSettings(parameters, Declarer(app, correctionSettings()));
  visitRunOptions(parameters, Declarer(app, runOptions()));
  relate(app);
}

} // namespace emeg
