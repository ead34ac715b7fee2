#pragma once

#include "files/exchange/Recording.h"

#include <string>

namespace emeg {

/// A recording of this length without channels and markers.
inline RecordingHeader headerOf(double seconds, double samplingFrequency) {
  RecordingHeader header;
  header.samplingFrequency = samplingFrequency;
  header.nrOfTimePoints = static_cast<int64_t>(seconds * samplingFrequency);
  header.files = {"run1.vhdr", "run1.vmrk"};
  return header;
}

inline void addMarker(RecordingHeader& header, const std::string& type, const std::string& description,
                      double onset) {
  RecordingMarker marker;
  marker.type = type;
  marker.description = description;
  marker.onset = onset;
  header.markers.push_back(marker);
}

} // namespace emeg
