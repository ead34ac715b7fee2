#pragma once

#include "files/exchange/Recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// The markers of one type and description.
struct MarkerGroup {
  std::string type, description;
  int64_t count = 0;
  double first = 0, last = 0; ///< onsets in seconds
};

/// In the order of their first onsets.
std::vector<MarkerGroup> groupMarkers(const RecordingHeader& header);

/// "2023-12-31 23:59:58.123456"
std::string dateAndTime(const StartTime& start);

/// What a recording holds, for people: several lines.
std::string summaryText(const RecordingHeader& header);

/// The same as JSON.
std::string summaryJson(const RecordingHeader& header);

} // namespace emeg
