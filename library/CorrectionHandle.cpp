#include "library/CorrectionHandle.h"

#include "engine/settings/OutputRate.h"
#include "engine/settings/SettingChecks.h"
#include "library/Guarded.h"
#include "library/ScratchStore.h"

#include <algorithm>
#include <utility>

namespace {

using emeg::Refusal;
using State = emeg_correction::State;

constexpr int64_t valuesPerBlock = 1 << 20;

/// The channel that the setting "ecg" names becomes the one that shows the heart beats.
void chooseElectrocardiogram(emeg_correction& correction) {
  const emeg::BeatRequest& beats = correction.settings.beats;
  if (beats.source != emeg::BeatSource::Ecg) return;
  const auto found = std::find(correction.names.begin(), correction.names.end(), beats.name);
  if (found == correction.names.end())
    throw Refusal(EMEG_BAD_SETTING, "The recording has no channel \"" + beats.name + "\" to be the ECG.");
  emeg::ChannelRole role;
  role.showsSequence = role.takesPartInPulses = role.takesPartInReference = false;
  role.showsHeartBeats = true;
  correction.shape.roles[static_cast<size_t>(found - correction.names.begin())] = role;
}

/// Whole channels are decimated, stretches get a new rate: the same wish in other words.
void chooseRate(emeg_correction& correction) {
  emeg::CorrectionSettings& settings = correction.settings;
  const double recorded = correction.shape.samplingFrequency;
  if (!settings.method.wholeChannels) {
    if (settings.rate <= 0 && settings.decimation > 1) settings.rate = recorded / settings.decimation;
    settings.decimation = 1;
  } else if (settings.rate > 0) {
    if (const auto problem = emeg::problemOfRate(recorded, settings.rate, settings.method))
      throw Refusal(EMEG_BAD_SETTING, *problem);
    settings.decimation = static_cast<int>(emeg::wholeDivisor(recorded, settings.rate));
    settings.rate = 0;
  }
}

} // namespace

emeg_correction::emeg_correction(const emeg_settings& given, const emeg_recording& recording)
    : settings(given.values), shape(recording.shape), names(recording.names) {
  for (const emeg_role role : recording.roles) isRaw.push_back(role == EMEG_TRIGGER);
  settings.timing.markers.clear();
  for (const double onset : given.onsets) settings.timing.markers.push_back(onset * shape.samplingFrequency);
}

void emeg_correction::prepare(const std::string& scratchFile) {
  chooseElectrocardiogram(*this);
  chooseRate(*this);
  emeg::checkSettings(settings, shape);
  // The plug-in knows no kinds of channels.
  if (settings.method.wholeChannels) shape.roles.assign(names.size(), emeg::ChannelRole());
  store = emeg::makeScratchStore(scratchFile, shape.nrOfChannels(),
                                 emeg::Correction::storeLength(settings, shape));
  run = std::make_unique<emeg::Correction>(settings, shape, *store, observer);
}

void emeg_correction::take(int64_t count, const Fill& fill) {
  emeg::Correction& engine = running();
  if (state != State::Taking) throw Refusal(EMEG_WRONG_ORDER, "The samples were taken already.");
  if (count < 0) throw Refusal(EMEG_BAD_ARGUMENT, "The count is below 0.");
  if (count > shape.nrOfSamples - nrOfTaken)
    throw Refusal(EMEG_WRONG_ORDER, "There are more samples than the recording has: " +
                                        std::to_string(shape.nrOfSamples) + ".");
  const auto channels = static_cast<int64_t>(names.size());
  const int64_t block = std::max<int64_t>(1, valuesPerBlock / channels);
  std::vector<double> microvolts;
  while (count > 0) {
    const int64_t length = std::min(block, count);
    microvolts.assign(static_cast<size_t>(length * channels), 0.0);
    fill(nrOfTaken, length, microvolts);
    state = State::Ended; // unless the block arrives
    engine.takeIn(length, microvolts);
    state = State::Taking;
    nrOfTaken += length;
    count -= length;
  }
}

void emeg_correction::find() {
  running();
  demandAllSamples();
  if (state == State::Found) return;
  state = State::Ended;
  run->find();
  state = State::Found;
}

void emeg_correction::correct(emeg::CorrectedSink& sink) {
  if (state != State::Found) find();
  state = State::Ended;
  run->correct(sink);
  state = State::Corrected;
}

const emeg::Findings& emeg_correction::findings() const {
  if (!run || (state != State::Found && state != State::Corrected))
    throw Refusal(EMEG_WRONG_ORDER, "Nothing was looked for yet.");
  return run->findings();
}

emeg::Correction& emeg_correction::running() const {
  if (!run) throw Refusal(EMEG_WRONG_ORDER, "The correction could not be made.");
  return *run;
}

void emeg_correction::demandAllSamples() const {
  if (state == State::Ended || state == State::Corrected)
    throw Refusal(EMEG_WRONG_ORDER, "The correction has ended; make another one.");
  if (nrOfTaken < shape.nrOfSamples)
    throw Refusal(EMEG_WRONG_ORDER, std::to_string(nrOfTaken) + " of " + std::to_string(shape.nrOfSamples) +
                                        " samples are there.");
}
