#include "library/Guarded.h"
#include "library/Handles.h"
#include "library/SettingByName.h"

#include <cmath>
#include <memory>
#include <utility>

namespace {

constexpr size_t fewestOnsets = 3;

/// A list that a caller gave, or nothing where its length is 0.
std::vector<double> listOf(const double* seconds, size_t count) {
  if (count == 0) return {};
  emeg::refuseNull(seconds, "seconds");
  std::vector<double> list(seconds, seconds + count);
  for (const double second : list)
    if (!std::isfinite(second)) throw emeg::Refusal(EMEG_BAD_ARGUMENT, "One of the times is not a number.");
  return list;
}

void setOnsets(emeg_settings& settings, const double* seconds, size_t count, emeg::MarkerKind kind) {
  std::vector<double> onsets = listOf(seconds, count);
  if (!onsets.empty() && onsets.size() < fewestOnsets)
    throw emeg::Refusal(EMEG_BAD_SETTING, "Three onsets are needed to tell when volumes begin.");
  settings.values.timing.markerKind.reset();
  if (!onsets.empty()) settings.values.timing.markerKind = kind;
  settings.onsets = std::move(onsets);
}

void setBeats(emeg_settings& settings, const double* seconds, size_t count) {
  std::vector<double> beats = listOf(seconds, count);
  settings.values.beats.source = beats.empty() ? emeg::BeatSource::Blind : emeg::BeatSource::Markers;
  settings.values.beats.name.clear();
  settings.values.beats.times = std::move(beats);
}

} // namespace

emeg_status emeg_settings_create(emeg_settings** settings) {
  if (settings == nullptr) return EMEG_BAD_ARGUMENT;
  *settings = nullptr;
  return emeg::guarded([&] { *settings = std::make_unique<emeg_settings>().release(); });
}

emeg_status emeg_settings_copy(const emeg_settings* settings, emeg_settings** copy) {
  if (settings == nullptr || copy == nullptr) return EMEG_BAD_ARGUMENT;
  *copy = nullptr;
  return emeg::guarded([&] { *copy = std::make_unique<emeg_settings>(*settings).release(); });
}

void emeg_settings_free(emeg_settings* settings) {
  delete settings;
}

emeg_status emeg_settings_set(emeg_settings* settings, const char* name, const char* value) {
  if (settings == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(settings->error, [&] {
    emeg::refuseNull(name, "name");
    emeg::refuseNull(value, "value");
    emeg::CorrectionSettings changed = settings->values;
    emeg::setByName(changed, name, value);
    settings->values = std::move(changed);
  });
}

emeg_status emeg_settings_set_number(emeg_settings* settings, const char* name, double value) {
  if (settings == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(settings->error, [&] {
    emeg::refuseNull(name, "name");
    emeg::CorrectionSettings changed = settings->values;
    emeg::setByName(changed, name, emeg::textOf(value));
    settings->values = std::move(changed);
  });
}

emeg_status emeg_settings_set_volume_onsets(emeg_settings* settings, const double* seconds, size_t count) {
  if (settings == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(settings->error,
                       [&] { setOnsets(*settings, seconds, count, emeg::MarkerKind::Volume); });
}

emeg_status emeg_settings_set_slice_onsets(emeg_settings* settings, const double* seconds, size_t count) {
  if (settings == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(settings->error,
                       [&] { setOnsets(*settings, seconds, count, emeg::MarkerKind::Slice); });
}

emeg_status emeg_settings_set_beats(emeg_settings* settings, const double* seconds, size_t count) {
  if (settings == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(settings->error, [&] { setBeats(*settings, seconds, count); });
}

const char* emeg_settings_error(const emeg_settings* settings) {
  return settings == nullptr ? "" : settings->error.c_str();
}
