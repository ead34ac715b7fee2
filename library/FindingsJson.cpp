#include "library/FindingsJson.h"

#include "library/FindingsWarnings.h"
#include "library/JsonText.h"

namespace emeg {

namespace {

void writeStretches(JsonText& json, const std::vector<Stretch>& stretches) {
  json.openArray();
  for (const Stretch& stretch : stretches) {
    json.openArray();
    json.value(stretch.start);
    json.value(stretch.end);
    json.closeArray();
  }
  json.closeArray();
}

/// Figures of merit of a scan; null where it is too short for them, or not corrected yet.
void writeQuality(JsonText& json, const emeg_correction& correction, const QualityFigures* figures) {
  if (figures == nullptr) return json.null();
  json.openObject();
  json.member("Drift", figures->drift);
  json.member("ArtifactSecondsOutside", figures->artifactSecondsOutside);
  json.key("Channels");
  json.openArray();
  size_t next = 0;
  for (const ChannelQuality& channel : figures->channels) {
    while (next < correction.names.size() && correction.shape.roles[next].passesUnchanged) ++next;
    json.openObject();
    json.member("Channel", correction.names.at(next++));
    json.member("ArtifactBefore", channel.artifactBefore());
    json.member("ArtifactAfter", channel.artifactAfter());
    json.member("RemainingArtifact", channel.remaining());
    json.closeObject();
  }
  json.closeArray();
  json.closeObject();
}

void writeScan(JsonText& json, const emeg_correction& correction, const FoundScan& scan,
               const QualityFigures* figures) {
  const MRSequence& sequence = scan.sequence;
  json.openObject();
  json.member("NumberOfVolumes", int64_t{sequence.nrOfVolumes});
  json.member("SlicesPerVolume", int64_t{sequence.nrOfSlicesPerVolume});
  json.member("CountsIdentifiable", scan.isCountIdentifiable);
  json.member("VolumeDuration", sequence.volumeDuration);
  json.member("SliceDuration", sequence.sliceDuration);
  json.member("Begin", scan.begin);
  json.member("End", scan.end);
  json.member("BeginsWithinVolume", scan.partsBefore > 0);
  json.member("EndsWithinVolume", scan.partsBehind > 0);
  json.member("ChannelsAgreeing", int64_t{scan.nrOfChannelsAgreeing});
  json.member("ChannelsAsked", int64_t{scan.nrOfChannelsAsked});
  json.key("VolumeOnsets");
  json.openArray();
  for (int32_t volume = 0; volume < sequence.nrOfVolumes; ++volume)
    json.value(sequence.onsetOf(volume, 0, 1));
  json.closeArray();
  json.key("Quality");
  writeQuality(json, correction, figures);
  json.closeObject();
}

void writeTiming(JsonText& json, const FoundScans& timing) {
  json.openObject();
  json.member("Source", nameOf(timing.source));
  json.key("DoubtAboutQuietBetweenSlices");
  timing.doubt.empty() ? json.null() : json.value(timing.doubt);
  json.member("UnexplainedShare", timing.evidence.unexplained);
  json.member("UnlikeVolumes", timing.evidence.unlikeVolumes);
  json.member("UnlikeFarVolumes", timing.evidence.unlikeFar);
  json.member("UnlikeSlices", timing.evidence.unlikeSlices);
  json.closeObject();
}

/// Names of the channels with heart beats to remove, in their order.
std::vector<std::string> pulseChannelsOf(const emeg_correction& correction) {
  std::vector<std::string> channels;
  for (size_t c = 0; c < correction.names.size(); ++c)
    if (correction.shape.roles[c].takesPartInPulses) channels.push_back(correction.names[c]);
  return channels;
}

void writePulseFigures(JsonText& json, const emeg_correction& correction, const Findings& found) {
  const std::vector<std::string> channels = pulseChannelsOf(correction);
  json.openArray();
  for (size_t c = 0; c < found.pulseFigures.size(); ++c) {
    const PulseChannelFigures& figures = found.pulseFigures[c];
    json.openObject();
    if (c < channels.size()) json.member("Channel", channels[c]);
    json.member("RmsBefore", figures.rmsBefore);
    json.member("RmsAfter", figures.rmsAfter);
    json.member("BeatRmsBefore", figures.beatRmsBefore);
    json.member("BeatRmsAfter", figures.beatRmsAfter);
    if (c < found.pulseDelays.size()) json.member("Delay", found.pulseDelays[c]);
    json.closeObject();
  }
  json.closeArray();
}

void writePlausibility(JsonText& json, const Findings& found) {
  if (!found.plausibility) return json.null();
  const PulsePlausibility& pulses = *found.plausibility;
  json.openObject();
  json.key("CommonBeatsPerMinute");
  pulses.commonPeriod > 0 ? json.value(60 * found.pulseSampleRate / pulses.commonPeriod) : json.null();
  json.member("IntervalsOffByAThird", pulses.offIntervals);
  json.member("CommonShareOfEnergy", pulses.commonShare);
  json.member("UnlikeBeats", pulses.unlikePulses);
  json.closeObject();
}

void writeHeartBeats(JsonText& json, const emeg_correction& correction, const Findings& found) {
  if (!correction.settings.heartBeats) return json.null();
  json.openObject();
  json.member("BeatsPerMinute", found.beatsPerMinute);
  json.key("Times");
  json.openArray();
  for (const double time : found.pulseTimes) json.value(time);
  json.closeArray();
  json.key("Plausibility");
  writePlausibility(json, found);
  json.key("StretchesWithoutModel");
  writeStretches(json, found.withoutModel);
  json.key("Channels");
  writePulseFigures(json, correction, found);
  json.closeObject();
}

void writeRepaired(JsonText& json, const emeg_correction& correction, const Findings& found) {
  json.openArray();
  for (const RepairedChannel& channel : found.repaired) {
    json.openObject();
    json.member("Channel", correction.names.at(static_cast<size_t>(channel.channel)));
    json.member("Repaired", channel.nrOfRepaired);
    json.member("Left", channel.nrOfLeft);
    json.closeObject();
  }
  json.closeArray();
}

void writeWarnings(JsonText& json, const emeg_correction& correction) {
  json.openArray();
  for (const FindingsWarning& warning : warningsOf(correction)) {
    json.openObject();
    json.member("Code", warning.code);
    json.member("Text", warning.text);
    json.closeObject();
  }
  json.closeArray();
}

} // namespace

std::string findingsJson(const emeg_correction& correction) {
  const Findings& found = correction.findings();
  JsonText json;
  json.openObject();
  json.key("Scans");
  json.openArray();
  for (size_t i = 0; i < found.timing.scans.size(); ++i) {
    const bool isMeasured = i < found.quality.size() && found.quality[i].has_value();
    writeScan(json, correction, found.timing.scans[i], isMeasured ? &*found.quality[i] : nullptr);
  }
  json.closeArray();
  json.key("Timing");
  found.hasSequence() ? writeTiming(json, found.timing) : json.null();
  json.key("HeartBeats");
  writeHeartBeats(json, correction, found);
  json.key("RepairedChannels");
  writeRepaired(json, correction, found);
  json.member("SamplesNotFinite", found.nrOfNotFinite);
  json.key("Warnings");
  writeWarnings(json, correction);
  json.closeObject();
  return json.text();
}

} // namespace emeg
