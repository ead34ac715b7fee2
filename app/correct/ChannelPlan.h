#pragma once

#include "app/correct/CorrectParameters.h"
#include "engine/ChannelRole.h"
#include "files/exchange/Recording.h"

#include <string>
#include <vector>

namespace emeg {

/// What happens to the channels of a recording.
struct ChannelPlan {
  std::vector<ChannelRole> roles; ///< one per channel
  std::vector<int> corrected;     ///< those that do not pass unchanged, in their order

  /// The place of a channel among the corrected ones; -1 where it passes unchanged.
  int placeAmongCorrected(int channel) const;
  bool changesAll() const { return corrected.size() == roles.size(); }
};

/// EEG takes part in everything; ECG, EOG, EMG and other channels have the gradient artifact removed and are
/// filtered, no more, unless they are to be treated like EEG; the channel of --ecg is one of them; trigger
/// and status channels pass. With --as-plugin all channels are alike. Throws UnusableInput when no channel is
/// left to find the scanner's timing in, or a name is not there.
ChannelPlan planChannels(const RecordingHeader& header, const CorrectParameters& parameters);

/// For people: "corrected", "gradient artifact removed", "unchanged".
std::string treatmentOf(const ChannelRole& role);

} // namespace emeg
