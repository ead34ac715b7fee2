#pragma once

#include "files/exchange/Recording.h"
#include "files/formats/Protocol.h"

#include <string>
#include <vector>

namespace emeg {

/// Adds the intervals of the protocols that belong to a CTC recording to the header's markers, sorted by
/// onset; a condition's name becomes the description. `prtFileName` is the name in the channel description,
/// if there is one (`hasDescription`); without a description the protocol is looked for under the recording's
/// name.
void addProtocolMarkers(RecordingHeader& header, const std::string& ctcPath, const std::string& prtFileName,
                        bool hasDescription);

/// The markers of a recording as two protocols in microseconds: those that a correction detected
/// ("MRGradientTriggers", "HeartPulseTriggers") in `detected`, all others in `main`.
struct MarkerProtocols {
  Protocol main;
  Protocol detected;
  std::vector<std::string> warnings; ///< what a protocol cannot hold
};
MarkerProtocols protocolsOf(const RecordingHeader& header);

/// The text of a protocol file of that recording.
std::string protocolText(const Protocol& protocol, const std::string& ctcPath);

/// True when there is a condition with an interval.
bool hasIntervals(const Protocol& protocol);

} // namespace emeg
