#include "app/correct/Sidecar.h"

#include "app/correct/KnownBeats.h"
#include "engine/beats/BeatDoubts.h"
#include "engine/settings/SettingList.h"
#include "files/exchange/PendingFiles.h"
#include "files/formats/BinaryFile.h"

#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using Json = nlohmann::ordered_json;

const char* const references[] = {"Allen, Josephs, Turner: A method for removing imaging artifact from "
                                  "continuous EEG recorded during functional "
                                  "MRI. NeuroImage 12 (2000)",
                                  "Niazy, Beckmann, Iannetti, Brady, Smith: Removal of FMRI environment "
                                  "artifacts from EEG data using optimal basis "
                                  "sets. NeuroImage 28 (2005)",
                                  "Glaser, Beisteiner, Bauer, Fischmeister: FACET, a flexible artifact "
                                  "correction and evaluation toolbox for "
                                  "concurrently recorded EEG/fMRI data. BMC Neuroscience 14 (2013)"};

Json inputOf(const CorrectionResult& result) {
  Json files = Json::array();
  for (const InputFile& file : result.inputFiles)
    files.push_back({{"Path", file.path}, {"SHA256", file.sha256}});
  return {{"Files", files},
          {"Format", result.header.format},
          {"SamplingFrequency", result.header.samplingFrequency},
          {"Seconds", result.header.seconds()},
          {"NumberOfChannels", result.header.nrOfChannels()}};
}

/// Values as JSON: nothing where a name or number was not given.
Json valueOf(const Setting&, bool value) {
  return value;
}
Json valueOf(const Setting&, const std::string& value) {
  return value.empty() ? Json() : Json(value);
}
Json valueOf(const Setting&, const std::optional<double>& value) {
  return value ? Json(*value) : Json();
}
Json valueOf(const Setting&, const std::optional<Seconds>& value) {
  return value ? Json({value->start, value->end ? Json(*value->end) : Json()}) : Json();
}
Json valueOf(const Setting&, const std::vector<Notch>& values) {
  Json notches = Json::array();
  for (const Notch& notch : values)
    notches.push_back({{"Frequency", notch.frequency}, {"Width", notch.width}});
  return notches;
}
template <typename Value>
Json valueOf(const Setting&, const std::vector<Value>& values) {
  return values;
}
template <typename Number>
Json valueOf(const Setting& setting, const Number& value) {
  const bool isNotGiven = value == 0 && setting.smallest > 0;
  return isNotGiven ? Json() : Json(value);
}

Json parametersOf(const CorrectionResult& result, const CorrectParameters& parameters) {
  Json json;
  visitSettings(parameters, [&json](const char* name, const auto& value) {
    const Setting& setting = *settingNamed(correctionSettings(), name);
    json[setting.key] = valueOf(setting, value);
  });
  const CorrectionPlan& plan = result.plan;
  const double fs = result.header.samplingFrequency;
  json["IntervalStart"] = static_cast<double>(plan.firstTimePoint) / fs;
  json["IntervalEnd"] = static_cast<double>(plan.endTimePoint()) / fs;
  json["AllowUncorrected"] = parameters.allowUncorrected;
  return json;
}

Json scanOf(const FoundScan& scan) {
  const MRSequence& sequence = scan.sequence;
  return {{"NumberOfVolumes", sequence.nrOfVolumes},
          {"SlicesPerVolume", sequence.nrOfSlicesPerVolume},
          {"CountsIdentifiable", scan.isCountIdentifiable},
          {"VolumeDuration", sequence.volumeDuration},
          {"SliceDuration", sequence.sliceDuration},
          {"FirstVolumeOnset", sequence.firstTriggerTime},
          {"Begin", scan.begin},
          {"End", scan.end},
          {"BeginsWithinVolume", scan.partsBefore > 0},
          {"EndsWithinVolume", scan.partsBehind > 0},
          {"PausesBetweenVolumes", sequence.hasVolumeGaps},
          {"WindowHalfLengthSeconds", sequence.windowHalfLength},
          {"ChannelsAgreeing", scan.nrOfChannelsAgreeing},
          {"ChannelsAsked", scan.nrOfChannelsAsked}};
}

Json timingOf(const CorrectionResult& result) {
  const FoundScans& timing = result.found.timing;
  return {{"Source", nameOf(timing.source)},
          {"DoubtAboutQuietBetweenSlices", timing.doubt.empty() ? Json() : Json(timing.doubt)},
          {"UnexplainedShare", timing.evidence.unexplained},
          {"UnlikeVolumes", timing.evidence.unlikeVolumes},
          {"UnlikeFarVolumes", timing.evidence.unlikeFar},
          {"UnlikeSlices", timing.evidence.unlikeSlices},
          {"Averaging", result.volumeWise() ? "volume-wise" : "slice-wise"}};
}

Json stretchesOf(const std::vector<Stretch>& stretches) {
  Json list = Json::array();
  for (const Stretch& stretch : stretches) list.push_back({stretch.start, stretch.end});
  return list;
}

Json heartBeatsOf(const CorrectionResult& result) {
  const Findings& found = result.found;
  const BeatRequest& request = result.plan.settings.beats;
  Json beats = {{"Source", nameOf(request.source)},
                {"NumberOfBeats", found.pulseTimes.size()},
                {"BeatsPerMinute", found.beatsPerMinute},
                {"StretchesWithoutModel", stretchesOf(found.withoutModel)}};
  if (const auto& pulses = found.plausibility)
    beats["Plausibility"] = {
        {"CommonBeatsPerMinute",
         pulses->commonPeriod > 0 ? Json(60 * found.pulseSampleRate / pulses->commonPeriod) : Json()},
        {"IntervalsOffByAThird", pulses->offIntervals},
        {"CommonShareOfEnergy", pulses->commonShare},
        {"UnlikeBeats", pulses->unlikePulses}};
  if (request.source == BeatSource::Blind) return beats;
  int64_t nrOfGuessed = 0;
  for (const FilledGap& gap : found.knownPulses.gaps) nrOfGuessed += gap.nrOfBeats;
  beats[request.source == BeatSource::Ecg ? "Channel" : "Markers"] = request.name;
  beats["LeftOut"] = found.knownPulses.nrOfDoubled + found.knownPulses.nrOfStray;
  beats["Guessed"] = nrOfGuessed;
  beats["StretchesWithGuessedBeats"] = stretchesOf(guessedStretches(found));
  return beats;
}

Json detectedOf(const CorrectionResult& result, const CorrectParameters& parameters) {
  Json detected;
  detected["Scans"] = Json::array();
  detected["Timing"] = Json();
  if (result.found.hasSequence()) {
    for (const FoundScan& scan : result.found.timing.scans) detected["Scans"].push_back(scanOf(scan));
    detected["Timing"] = timingOf(result);
  }
  detected["HeartBeats"] = parameters.bcg ? heartBeatsOf(result) : Json();
  return detected;
}

Json lineFiguresOf(const VolumeLockedPart& part, const SlicePeaks& peaks) {
  return {{"SliceHarmonics", part.sliceHarmonics},
          {"VolumeHarmonics", part.volumeHarmonics},
          {"Background", part.background},
          {"LineToBackground", part.lineToBackground},
          {"MedianSliceToBackground", part.medianSliceToBackground},
          {"VolumeLockedArtifact", part.artifact()},
          {"SlicePeaks", peaks.rms},
          {"SlicePeaksToBackground", peaks.toBackground}};
}

Json bandsOf(const ChannelQuality& channel) {
  Json bands;
  for (size_t b = 0; b < eegBands.size(); ++b) {
    const double before = channel.bandsBefore[b];
    const double after = channel.bandsAfter[b];
    bands[eegBands[b].name] = {
        {"Before", before}, {"After", after}, {"Ratio", before > 0 ? Json(after / before) : Json()}};
  }
  return bands;
}

Json channelsOf(const CorrectionResult& result) {
  const QualityFigures* const figures = result.qualityOfLongest();
  Json channels = Json::array();
  size_t pulseChannel = 0;
  size_t corrected = 0;
  for (size_t c = 0; c < result.header.channels.size(); ++c) {
    const RecordingChannel& channel = result.header.channels[c];
    const ChannelRole& role = result.plan.channels.roles[c];
    Json entry = {{"Name", channel.name},
                  {"Kind", nameOf(channel.kind)},
                  {"KindRule", channel.kindRule},
                  {"Treatment", treatmentOf(role)}};
    if (!role.passesUnchanged && figures != nullptr) {
      const ChannelQuality& quality = figures->channels[corrected];
      entry["Before"] = lineFiguresOf(quality.before, quality.peaksBefore);
      entry["After"] = lineFiguresOf(quality.after, quality.peaksAfter);
      entry["RemainingArtifact"] = quality.remaining();
      entry["MedianImagingArtifact"] = {{"Before", quality.medianImagingArtifactBefore},
                                        {"After", quality.medianImagingArtifactAfter}};
      entry["BandPowers"] = bandsOf(quality);
    }
    if (!role.passesUnchanged) ++corrected;
    if (role.takesPartInPulses && pulseChannel < result.found.pulseFigures.size()) {
      const PulseChannelFigures& pulses = result.found.pulseFigures[pulseChannel];
      entry["HeartBeatArtifact"] = {{"RmsBelow35HzBefore", pulses.rmsBefore},
                                    {"RmsBelow35HzAfter", pulses.rmsAfter},
                                    {"BeatAverageRmsBefore", pulses.beatRmsBefore},
                                    {"BeatAverageRmsAfter", pulses.beatRmsAfter}};
      if (pulseChannel < result.found.pulseDelays.size())
        entry["HeartBeatArtifact"]["Delay"] = result.found.pulseDelays[pulseChannel];
      ++pulseChannel;
    }
    channels.push_back(std::move(entry));
  }
  for (const RepairedChannel& repaired : result.found.repaired)
    channels[static_cast<size_t>(repaired.channel)]["SaturatedSamples"] = {
        {"Repaired", repaired.nrOfRepaired}, {"Left", repaired.nrOfLeft}};
  return channels;
}

} // namespace

std::string sidecarText(const CorrectionResult& result, const CorrectParameters& parameters,
                        const RunReport& report) {
  Json sidecar;
  sidecar["GeneratedBy"] = {{"Name", "emeg correct"}, {"Version", EMEG_VERSION}};
  sidecar["Input"] = inputOf(result);
  sidecar["Output"] = {{"Path", result.place.recording},
                       {"SamplingFrequency", result.plan.outputRate},
                       {"NumberOfTimePoints", result.plan.nrOfOutputs}};
  sidecar["Parameters"] = parametersOf(result, parameters);
  sidecar["Detected"] = detectedOf(result, parameters);
  sidecar["Warnings"] = report.warnings();
  sidecar["Notes"] = report.notes();
  if (const QualityFigures* const figures = result.qualityOfLongest()) {
    sidecar["Quality"] = {{"Scan", result.found.timing.indexOfLongest()},
                          {"LowestFrequency", figures->range.lowest},
                          {"HighestFrequency", figures->range.highest},
                          {"Drift", figures->drift},
                          {"ArtifactSecondsOutsideScans", figures->artifactSecondsOutside},
                          {"Units",
                           "microvolts RMS; MedianImagingArtifact microvolts peak to peak; BandPowers "
                           "microvolts squared; times in seconds from the first sample"},
                          {"References", references}};
  } else {
    sidecar["Quality"] = Json();
  }
  sidecar["Channels"] = channelsOf(result);
  // Names may hold any bytes.
  return sidecar.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void writeWholeFile(const std::string& path, const std::string& text, bool overwrite) {
  PendingFiles pending(overwrite);
  const std::string temporary = pending.add(path);
  BinaryFile file;
  if (!file.create(temporary) || !file.write(text.data(), text.size()) || !file.close())
    throw RecordingError(writeFailure(path));
  pending.commit();
}

} // namespace emeg
