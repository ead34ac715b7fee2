#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace emeg {

/// A stretch of the recording in seconds from its first sample.
struct Seconds {
  double start = 0;
  std::optional<double> end; ///< nothing: the end of the recording
};

/// A stop band of the filter.
struct Notch {
  double frequency = 0; ///< Hz
  double width = 0;     ///< Hz
};

/// Everything that `emeg correct` was asked for.
struct CorrectParameters {
  std::string input;
  std::string output; ///< empty: beside the input, named after it

  bool bcg = false;
  bool volumeWise = true;
  int window = 150; ///< half-length of the averaging window, slices

  std::string volumeMarkers;   ///< name of the recording's markers at volume onsets; empty: not known
  std::string sliceMarkers;    ///< the same at slice onsets
  double tr = 0;               ///< seconds from volume to volume; 0: not known
  int slices = 0;              ///< per volume; 0: not known
  std::optional<double> first; ///< onset of the first volume, seconds from the recording's first sample
  std::string pulseMarkers;    ///< name of the markers that are heart beats; empty: none
  std::string ecg;             ///< channel whose R peaks are the heart beats; empty: none

  std::vector<std::string> channels;   ///< names; empty: all
  std::vector<std::string> treatAsEeg; ///< names of channels of any kind that are corrected like EEG
  std::optional<Seconds> interval;

  double highPass = 0; ///< Hz; 0: none
  double lowPass = 0;  ///< Hz; 0: none
  std::vector<Notch> notches;
  int decimate = 1;
  std::optional<double> rate; ///< Hz, instead of `decimate`
  bool averageReference = false;
  int scale = 0; ///< samples are multiplied by 10^scale

  std::vector<double> lineNoise; ///< Hz
  bool repairSaturation = false;

  bool force = false;
  bool allowUncorrected = false;
  bool bids = false;
  std::string scratch; ///< folder for temporary files; empty: that of the output

  bool quiet = false;
  bool verbose = false;
  bool json = false;
};

/// The arguments or the input cannot be used: exit status 2. The message is a sentence with the remedy.
class UnusableInput : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The run cannot be finished: exit status 1. The message is a sentence with the remedy.
class FailedRun : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace emeg
