#include "library/CorrectionHandle.h"
#include "library/FindingsJson.h"
#include "library/Guarded.h"

namespace {

emeg_scan scanOf(const emeg::FoundScan& found) {
  emeg_scan scan{};
  scan.begin = found.begin;
  scan.end = found.end;
  scan.first_onset = found.sequence.firstTriggerTime;
  scan.volume_duration = found.sequence.volumeDuration;
  scan.slice_duration = found.sequence.sliceDuration;
  scan.volumes = found.sequence.nrOfVolumes;
  scan.slices = found.sequence.nrOfSlicesPerVolume;
  scan.counts_are_certain = found.isCountIdentifiable ? 1 : 0;
  scan.channels_agreeing = found.nrOfChannelsAgreeing;
  scan.channels_asked = found.nrOfChannelsAsked;
  return scan;
}

} // namespace

emeg_status emeg_correction_scans(const emeg_correction* correction, size_t* count) {
  if (correction == nullptr || count == nullptr) return EMEG_BAD_ARGUMENT;
  *count = 0;
  return emeg::guarded(correction->error, [&] { *count = correction->findings().timing.scans.size(); });
}

emeg_status emeg_correction_scan(const emeg_correction* correction, size_t index, emeg_scan* scan) {
  if (correction == nullptr || scan == nullptr) return EMEG_BAD_ARGUMENT;
  *scan = emeg_scan{};
  return emeg::guarded(correction->error, [&] {
    const auto& scans = correction->findings().timing.scans;
    if (index >= scans.size())
      throw emeg::Refusal(EMEG_BAD_ARGUMENT, "There is no scan " + std::to_string(index) + ".");
    *scan = scanOf(scans[index]);
  });
}

emeg_status emeg_correction_beats(const emeg_correction* correction, const double** seconds, size_t* count) {
  if (correction == nullptr || seconds == nullptr || count == nullptr) return EMEG_BAD_ARGUMENT;
  *seconds = nullptr;
  *count = 0;
  return emeg::guarded(correction->error, [&] {
    const std::vector<double>& beats = correction->findings().pulseTimes;
    *seconds = beats.data();
    *count = beats.size();
  });
}

emeg_status emeg_correction_findings(emeg_correction* correction, const char** json) {
  if (correction == nullptr || json == nullptr) return EMEG_BAD_ARGUMENT;
  *json = "";
  return emeg::guarded(correction->error, [&] {
    correction->json = emeg::findingsJson(*correction);
    *json = correction->json.c_str();
  });
}
