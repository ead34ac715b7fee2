#pragma once

namespace emeg {

/// What the correction makes of a channel beside removing its gradient artifact and filtering it. By default
/// all channels are alike; a program that knows which of them record the heart, eyes or muscles says so.
struct ChannelRole {
  bool showsSequence = true;        ///< the scanner's timing may be looked for in it
  bool takesPartInPulses = true;    ///< heart beats are looked for in it and removed from it
  bool showsHeartBeats = false;     ///< an electrocardiogram: kept for the search for heart beats
  bool takesPartInReference = true; ///< belongs to the average reference, which is subtracted from it
  bool passesUnchanged = false;     ///< triggers: nothing is removed, filtered or scaled; samples are picked
};

} // namespace emeg
