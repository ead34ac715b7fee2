#pragma once

#include <string>

namespace emeg {

/// What an output's name says of how it was made.
struct NamedSteps {
  int nrOfChosenChannels = 0; ///< 0: all of them
  bool hasInterval = false;
  double startMs = 0;
  double endMs = 0;
  double highPass = 0; ///< Hz; 0: none
  double lowPass = 0;
  bool hasNotches = false;
  int decimation = 1;
  double rate = 0; ///< Hz, where it is no whole part of the recording's; else 0
  int scalingOrder = 0;
  bool removesBeats = false;
};

/// What is appended to the input's name: "_7ch_12000-312000ms_HP1_LP40_NOTCH_dec4_sc3_GRA_BCG".
std::string outputSuffixOf(const NamedSteps& steps);

} // namespace emeg
