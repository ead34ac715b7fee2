#pragma once

#include "app/correct/CorrectionPlan.h"
#include "app/correct/RunReport.h"
#include "engine/Observer.h"

#include <string>

namespace emeg {

/// Turns what a correction does into the words, and its steps into the parts of the whole run, that its user
/// sees. Ends the run when the user wants that.
class ProgressObserver : public Observer {
public:
  /// `isKeptFirst`: the corrected samples are sent to the output in a step of its own.
  ProgressObserver(RunReport& report, const CorrectionPlan& plan, std::string input, bool isKeptFirst);

  void stepBegins(Step step, int channel) override;
  void progress(double finished) override;
  void detail(const std::string& line) override;
  void memoryNeeded(uint64_t bytes) override;

  /// Steps of the run that are not the correction's.
  void takesIn();
  void sends(const std::string& output);

private:
  /// Part of the whole run.
  struct Part {
    double begin = 0;
    double end = 1;
  };
  void begin(const std::string& name, Part part);

  RunReport& report_;
  std::string input_;
  bool removesBeats_;
  bool isKeptFirst_;
  int nrOfChannels_; ///< that are corrected one by one
  int nrOfPulseChannels_;
  int nrOfCorrected_ = 0;
  int nrOfBeatsRemoved_ = 0;
  std::string name_;
  Part part_;
};

} // namespace emeg
