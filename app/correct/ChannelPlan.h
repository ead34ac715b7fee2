#pragma once

#include "app/correct/CorrectParameters.h"
#include "engine/ChannelRole.h"
#include "files/exchange/Recording.h"

#include <string>
#include <vector>

namespace emeg {

/// What happens to one channel of a recording.
struct PlannedChannel {
  bool passesUntouched = false; ///< trigger and status channels: no filter, no scaling, no rounding
  ChannelRole role;             ///< of a channel that goes through the converter
  int converterChannel = -1;    ///< its number there; -1 when it passes untouched
};

/// One entry per channel of the recording.
struct ChannelPlan {
  std::vector<PlannedChannel> channels;
  std::vector<int> corrected; ///< channels that go through the converter, by their numbers in the recording

  std::vector<ChannelRole> roles() const; ///< of the converter's channels
};

/// EEG takes part in everything; ECG, EOG, EMG and other channels have the gradient artifact removed and are
/// filtered, no more, unless they are to be treated like EEG; the channel of --ecg is one of them; trigger
/// and status channels pass. Throws UnusableInput when no channel is left to find the scanner's timing in, or
/// a name is not there.
ChannelPlan planChannels(const RecordingHeader& header, const CorrectParameters& parameters);

/// For people: "corrected", "gradient artifact removed", "unchanged".
std::string treatmentOf(const PlannedChannel& channel);

} // namespace emeg
