#include "library/SettingByName.h"

#include "engine/settings/SettingList.h"
#include "library/Guarded.h"

#include <array>
#include <charconv>
#include <cmath>
#include <vector>

namespace emeg {

namespace {

using Asked = CorrectionSettings;

/// A value as its kind has it: a flag is the number 0 or 1.
struct Value {
  std::string text;
  std::vector<double> numbers;
  std::vector<Notch> stopBands;

  double number() const { return numbers.front(); }
  int integer() const { return static_cast<int>(number()); }
  bool isOn() const { return number() != 0; }
};

struct Assignment {
  std::string_view name;
  void (*assign)(Asked&, const Value&);
};

void assignEcg(Asked& settings, const Value& value) {
  settings.beats.source = value.text.empty() ? BeatSource::Blind : BeatSource::Ecg;
  settings.beats.name = value.text;
  settings.beats.times.clear();
}

// clang-format off
const std::array assignments = {
    Assignment{"bcg", [](Asked& s, const Value& v) { s.heartBeats = v.isOn(); }},
    Assignment{"ecg", assignEcg},
    Assignment{"slice-wise", [](Asked& s, const Value& v) { s.timing.volumeWise = !v.isOn(); }},
    Assignment{"volume-wise", [](Asked& s, const Value& v) { s.timing.volumeWise = v.isOn(); }},
    Assignment{"window", [](Asked& s, const Value& v) { s.timing.windowSlices = v.integer(); }},
    Assignment{"line-noise", [](Asked& s, const Value& v) { s.lineNoise = v.numbers; }},
    Assignment{"repair-saturation", [](Asked& s, const Value& v) { s.repairSaturation = v.isOn(); }},
    Assignment{"as-plugin", [](Asked& s, const Value& v) { s.method = v.isOn() ? asThePluginDoes : stretchByStretch; }},
    Assignment{"tr", [](Asked& s, const Value& v) { s.timing.given.volumeDuration = v.number(); }},
    Assignment{"slices", [](Asked& s, const Value& v) { s.timing.given.nrOfSlicesPerVolume = v.integer(); }},
    Assignment{"first", [](Asked& s, const Value& v) { s.timing.given.firstOnset = v.number(); }},
    Assignment{"high-pass", [](Asked& s, const Value& v) { s.highPass = v.number(); }},
    Assignment{"low-pass", [](Asked& s, const Value& v) { s.lowPass = v.number(); }},
    Assignment{"notch", [](Asked& s, const Value& v) { s.notches = v.stopBands; }},
    Assignment{"decimate", [](Asked& s, const Value& v) { s.decimation = v.integer(); }},
    Assignment{"rate", [](Asked& s, const Value& v) { s.rate = v.number(); }},
    Assignment{"average-reference", [](Asked& s, const Value& v) { s.averageReference = v.isOn(); }},
    Assignment{"scale", [](Asked& s, const Value& v) { s.scalingOrder = v.integer(); }},
};
// clang-format on

[[noreturn]] void refuse(const Setting& setting, std::string_view value) {
  std::string wanted = setting.kind == SettingKind::Flag ? "1 or 0" : nameOf(setting.kind);
  if (setting.hasRange()) wanted += ", " + setting.rangeText();
  throw Refusal(EMEG_BAD_SETTING, std::string("The setting \"") + setting.name + "\" cannot be \"" +
                                      std::string(value) + "\"; it takes: " + wanted + ".");
}

double numberIn(const Setting& setting, std::string_view text, std::string_view value) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number) ||
      number < setting.smallest || number > setting.largest)
    refuse(setting, value);
  return number;
}

/// The parts between commas; none of an empty text.
std::vector<std::string_view> partsOf(std::string_view text) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const size_t comma = text.find(',');
    parts.push_back(text.substr(0, comma));
    text = comma == std::string_view::npos ? "" : text.substr(comma + 1);
  }
  return parts;
}

Notch notchIn(const Setting& setting, std::string_view text, std::string_view value) {
  const size_t colon = text.find(':');
  Notch notch;
  notch.frequency = numberIn(setting, text.substr(0, colon), value);
  notch.width =
      colon == std::string_view::npos ? Notch().width : numberIn(setting, text.substr(colon + 1), value);
  return notch;
}

Value valueOf(const Setting& setting, std::string_view value) {
  Value result;
  result.text = value;
  switch (setting.kind) {
  case SettingKind::Flag:
    if (value != "0" && value != "1") refuse(setting, value);
    result.numbers = {value == "1" ? 1.0 : 0.0};
    break;
  case SettingKind::Integer:
  case SettingKind::Number:
    result.numbers = {numberIn(setting, value, value)};
    if (setting.kind == SettingKind::Integer && result.number() != std::floor(result.number()))
      refuse(setting, value);
    break;
  case SettingKind::Numbers:
    for (const std::string_view part : partsOf(value))
      result.numbers.push_back(numberIn(setting, part, value));
    break;
  case SettingKind::StopBands:
    for (const std::string_view part : partsOf(value))
      result.stopBands.push_back(notchIn(setting, part, value));
    break;
  default:
    break;
  }
  return result;
}

} // namespace

void setByName(CorrectionSettings& settings, std::string_view name, std::string_view value) {
  const Setting* const setting = settingNamed(correctionSettings(), name);
  for (const Assignment& assignment : assignments)
    if (setting != nullptr && assignment.name == name)
      return assignment.assign(settings, valueOf(*setting, value));
  throw Refusal(EMEG_BAD_SETTING, "There is no setting \"" + std::string(name) + "\".");
}

std::string textOf(double number) {
  std::array<char, 32> digits{};
  return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr};
}

} // namespace emeg
