#include "app/correct/ChannelPlan.h"

#include "files/exchange/ChannelKind.h"

#include <algorithm>
#include <fmt/format.h>

namespace emeg {

namespace {

constexpr const char* allNames = "all";

bool isOneOf(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void checkNames(const RecordingHeader& header, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    const bool isThere = name == allNames || std::any_of(header.channels.begin(), header.channels.end(),
                                                         [&name](const RecordingChannel& channel) {
                                                           return channel.name == name;
                                                         });
    if (!isThere)
      throw UnusableInput(
          fmt::format("--treat-as-eeg: the recording has no channel \"{}\"; `emeg info` lists "
                      "its channels.",
                      name));
  }
}

ChannelRole roleOf(ChannelKind kind) {
  ChannelRole role;
  const bool isEeg = kind == ChannelKind::Eeg;
  role.showsSequence = isEeg;
  role.takesPartInPulses = isEeg;
  role.takesPartInReference = isEeg;
  role.passesUnchanged = kind == ChannelKind::Trigger || kind == ChannelKind::Status;
  return role;
}

ChannelRole electrocardiogramRole() {
  ChannelRole role = roleOf(ChannelKind::Ecg);
  role.showsHeartBeats = true;
  return role;
}

/// The channel that --ecg names; -1 when there is none.
int electrocardiogramOf(const RecordingHeader& header, const CorrectParameters& parameters) {
  if (parameters.ecg.empty()) return -1;
  if (isOneOf(parameters.treatAsEeg, parameters.ecg))
    throw UnusableInput(
        fmt::format("--ecg and --treat-as-eeg name the same channel \"{}\": the heart beats are either found "
                    "in it or removed from it.",
                    parameters.ecg));
  for (int c = 0; c < header.nrOfChannels(); ++c)
    if (header.channels[static_cast<size_t>(c)].name == parameters.ecg) return c;
  return -1;
}

} // namespace

int ChannelPlan::placeAmongCorrected(int channel) const {
  const auto place = std::find(corrected.begin(), corrected.end(), channel);
  return place == corrected.end() ? -1 : static_cast<int>(place - corrected.begin());
}

ChannelPlan planChannels(const RecordingHeader& header, const CorrectParameters& parameters) {
  checkNames(header, parameters.treatAsEeg);
  const bool treatAll = parameters.asPlugin || isOneOf(parameters.treatAsEeg, allNames);
  ChannelPlan plan;
  const int ecg = electrocardiogramOf(header, parameters);
  bool hasEeg = false;
  for (int c = 0; c < header.nrOfChannels(); ++c) {
    const RecordingChannel& channel = header.channels[static_cast<size_t>(c)];
    const bool asEeg = treatAll || isOneOf(parameters.treatAsEeg, channel.name);
    const ChannelRole role =
        c == ecg ? electrocardiogramRole() : roleOf(asEeg ? ChannelKind::Eeg : channel.kind);
    if (!role.passesUnchanged) plan.corrected.push_back(c);
    hasEeg = hasEeg || role.showsSequence;
    plan.roles.push_back(role);
  }
  if (!hasEeg)
    throw UnusableInput(
        fmt::format("\"{}\": none of the {} channels is an EEG channel, in which the scanner's "
                    "timing could be found. Name channels to be treated so with --treat-as-eeg "
                    "NAME,... (or all); `emeg info` shows what they are taken for and why.",
                    parameters.input, header.nrOfChannels()));
  return plan;
}

std::string treatmentOf(const ChannelRole& role) {
  if (role.passesUnchanged) return "unchanged";
  return role.takesPartInPulses ? "corrected" : "gradient artifact removed";
}

} // namespace emeg
