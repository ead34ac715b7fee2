#pragma once

#include "files/exchange/Recording.h"

#include <cmath>
#include <cstdint>
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

/// Markers at equal intervals (seconds), each at the first sample at or behind its time.
inline void addRegularMarkers(RecordingHeader& header, const std::string& type,
                              const std::string& description, int count, double interval,
                              double firstSecond = 5.0123) {
  for (int i = 0; i < count; i++)
    addMarker(header, type, description, std::ceil((firstSecond + i * interval) * header.samplingFrequency));
}

} // namespace emeg
