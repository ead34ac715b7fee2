#include "files/formats/Protocol.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace emeg {

namespace {

constexpr int64_t capacityWhenUnknown = 2048;
constexpr int64_t largestReservation = 1000000; // a count from a file or a detection is no promise
constexpr size_t maxLabelLength = 127;

} // namespace

Protocol::Protocol(bool isInteractive, std::string fileNameSuffix, TimeResolution resolution)
    : interactive(isInteractive), name(std::move(fileNameSuffix)), resolutionOfTime(resolution) {}

void Protocol::startConditions() {
  conditions.assign(1, Condition{});
  currentCondition_ = -1;
}

void Protocol::findOrAddCondition(const std::string& conditionName, int64_t capacity, int r, int g, int b) {
  if (conditions.empty()) startConditions();
  const auto known = std::find_if(conditions.begin(), conditions.end(), [&](const Condition& condition) {
    return condition.conditionName == conditionName;
  });
  if (known != conditions.end()) {
    currentCondition_ = static_cast<int>(known - conditions.begin());
    return;
  }
  if (nrOfConditions() >= maxNrOfConditions) {
    currentCondition_ = -1;
    return;
  }
  auto place = conditions.end();
  while (place != conditions.begin() && std::prev(place)->conditionName > conditionName) --place;

  Condition added;
  added.conditionName = conditionName;
  const auto reservation =
      static_cast<size_t>(std::min(capacity < 0 ? capacityWhenUnknown : capacity, largestReservation));
  added.onsets.reserve(reservation);
  added.offsets.reserve(reservation);
  if (r != -1)
    added.colour = Colour{static_cast<int16_t>(r), static_cast<int16_t>(g), static_cast<int16_t>(b)};
  currentCondition_ = static_cast<int>(place - conditions.begin());
  conditions.insert(place, std::move(added));
}

void Protocol::addInterval(double onset, double offset) {
  if (currentCondition_ < 0 || currentCondition_ >= nrOfConditions()) return;
  Condition& condition = conditions[static_cast<size_t>(currentCondition_)];
  condition.onsets.push_back(onset);
  condition.offsets.push_back(offset);
}

void Protocol::removeCondition(int index) {
  if (index < 0 || index >= nrOfConditions()) return;
  conditions.erase(conditions.begin() + index);
  if (currentCondition_ == index) {
    currentCondition_ = -1;
  } else if (currentCondition_ > index) {
    --currentCondition_;
  }
}

Colour colourOfHue(double degrees) {
  constexpr double saturation = 1.0;
  constexpr double value = 255.0;
  double h = std::isfinite(degrees) ? std::fmod(degrees, 360.0) : 0.0;
  if (h < 0) h += 360.0;

  std::array<double, 3> rgb{};
  if (h < 120.0) {
    rgb = {(120.0 - h) / 60.0, h / 60.0, 0.0};
  } else if (h < 240.0) {
    rgb = {0.0, (240.0 - h) / 60.0, (h - 120.0) / 60.0};
  } else {
    rgb = {(h - 240.0) / 60.0, 0.0, (360.0 - h) / 60.0};
  }
  std::array<int16_t, 3> rounded{};
  for (size_t i = 0; i < rgb.size(); ++i) {
    // The components pass through 32-bit floats, which decides how halves such as 76.5 are rounded.
    auto component = static_cast<float>(std::min(rgb[i], 1.0));
    component = static_cast<float>((saturation * static_cast<double>(component) + 1.0 - saturation) * value);
    rounded[i] = static_cast<int16_t>(std::floor(static_cast<double>(component) + 0.5));
  }
  return {rounded[0], rounded[1], rounded[2]};
}

void assignMissingColours(Protocol& protocol) {
  const int nrOfConditions = protocol.nrOfConditions();
  for (int c = 1; c < nrOfConditions; ++c) {
    Condition& condition = protocol.conditions[static_cast<size_t>(c)];
    if (!condition.colour) condition.colour = colourOfHue((c - 1) * 360.0 / (nrOfConditions - 1));
  }
}

namespace {

void cutIntervals(Condition& condition, double startUs, double endUs) {
  size_t nrOfKept = 0;
  for (size_t i = 0; i < condition.onsets.size(); ++i) {
    const double onset = std::max(condition.onsets[i], startUs) - startUs;
    const double offset = std::min(condition.offsets[i], endUs) - startUs;
    if (onset > offset) continue;
    condition.onsets[nrOfKept] = onset;
    condition.offsets[nrOfKept] = offset;
    ++nrOfKept;
  }
  condition.onsets.resize(nrOfKept);
  condition.offsets.resize(nrOfKept);
}

} // namespace

void cutToInterval(Protocol& protocol, double startUs, double endUs) {
  for (int c = 1; c < protocol.nrOfConditions();) {
    Condition& condition = protocol.conditions[static_cast<size_t>(c)];
    cutIntervals(condition, startUs, endUs);
    if (condition.onsets.empty()) {
      protocol.removeCondition(c); // the next condition now stands at c
    } else {
      ++c;
    }
  }
}

void scaleTimes(Protocol& protocol, double factor) {
  for (Condition& condition : protocol.conditions) {
    for (double& onset : condition.onsets) onset *= factor;
    for (double& offset : condition.offsets) offset *= factor;
  }
}

double timeFactorOf(TimeResolution resolution, double samplingFrequency) {
  switch (resolution) {
  case TimeResolution::Msec:
    return 0.001;
  case TimeResolution::Volumes:
    return samplingFrequency * 0.000001;
  case TimeResolution::Usec:
    break;
  }
  return 1.0;
}

std::string conditionLabel(const Protocol& protocol, int index) {
  if (index < 0 || index >= protocol.nrOfConditions()) return {};
  std::string label;
  if (protocol.interactive) {
    std::array<char, 32> prefix{};
    std::snprintf(prefix.data(), prefix.size(), "Condition%02d_", index);
    label = prefix.data();
  }
  const std::string code = "Code";
  std::string rest = protocol.conditions[static_cast<size_t>(index)].conditionName;
  if (rest.starts_with(code)) {
    label += code;
    rest.erase(0, code.size());
  }
  rest.erase(0, std::min(rest.find_first_not_of(' '), rest.size()));
  std::replace(rest.begin(), rest.end(), ' ', '_');
  label += rest;
  if (label.size() > maxLabelLength) label.resize(maxLabelLength);
  return label;
}

} // namespace emeg
