#include "library/Guarded.h"
#include "library/Handles.h"

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace {

using emeg::ChannelRole;
using emeg::Refusal;

ChannelRole engineRoleOf(int role) {
  ChannelRole result;
  const bool isEeg = role == EMEG_EEG;
  result.showsSequence = isEeg;
  result.takesPartInPulses = isEeg;
  result.takesPartInReference = isEeg;
  result.passesUnchanged = role == EMEG_TRIGGER;
  return result;
}

void addChannel(emeg_recording& recording, const char* name, int role) {
  emeg::refuseNull(name, "name");
  if (role < EMEG_EEG || role > EMEG_TRIGGER)
    throw Refusal(EMEG_BAD_ARGUMENT, "The channel's role is none of emeg_role.");
  if (recording.names.size() >= static_cast<size_t>(std::numeric_limits<int16_t>::max()))
    throw Refusal(EMEG_BAD_ARGUMENT, "A recording has 32767 channels at most.");
  emeg_recording longer = recording; // either all lists grow or none
  longer.names.emplace_back(name);
  longer.roles.push_back(static_cast<emeg_role>(role));
  longer.shape.roles.push_back(engineRoleOf(role));
  longer.shape.integers.emplace_back();
  recording = std::move(longer);
}

void setIntegers(emeg_recording& recording, int channel, const emeg::IntegerRange& range) {
  if (channel < 0 || channel >= recording.shape.nrOfChannels())
    throw Refusal(EMEG_BAD_ARGUMENT, "There is no channel " + std::to_string(channel) + ".");
  if (!std::isfinite(range.step) || range.step == 0 || !std::isfinite(range.offset) ||
      range.smallest >= range.largest)
    throw Refusal(EMEG_BAD_ARGUMENT,
                  "The step must not be 0, and the smallest integer must be below the largest.");
  recording.shape.integers[static_cast<size_t>(channel)] = range;
}

} // namespace

emeg_status emeg_recording_create(double sampling_frequency, int64_t samples, emeg_recording** recording) {
  if (recording == nullptr) return EMEG_BAD_ARGUMENT;
  *recording = nullptr;
  return emeg::guarded([&] {
    if (!(sampling_frequency > 0) || !std::isfinite(sampling_frequency) || samples < 1)
      throw Refusal(EMEG_BAD_ARGUMENT, "");
    auto created = std::make_unique<emeg_recording>();
    created->shape.samplingFrequency = sampling_frequency;
    created->shape.nrOfSamples = samples;
    *recording = created.release();
  });
}

void emeg_recording_free(emeg_recording* recording) {
  delete recording;
}

emeg_status emeg_recording_add_channel(emeg_recording* recording, const char* name, int role) {
  if (recording == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(recording->error, [&] { addChannel(*recording, name, role); });
}

emeg_status emeg_recording_set_integers(emeg_recording* recording, int channel, double step, double offset,
                                        int64_t smallest, int64_t largest) {
  if (recording == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(recording->error, [&] {
    setIntegers(*recording, channel, {step, offset, smallest, largest});
  });
}

const char* emeg_recording_error(const emeg_recording* recording) {
  return recording == nullptr ? "" : recording->error.c_str();
}
