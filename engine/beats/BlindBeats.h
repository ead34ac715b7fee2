#pragma once

#include "artifacts/cardiac/PulseModel.h"
#include "engine/Method.h"
#include "engine/beats/BeatStrategy.h"

#include <memory>

namespace emeg {

/// Beats are found in the EEG itself, and their artifact is modelled by its principal components.
class BlindBeats : public BeatStrategy {
public:
  BlindBeats(const Method& method, int nrOfPulseChannels);

  FoundBeats find(const BcgSeries& series, const std::vector<double>& ecg, Observer& observer) override;
  void replaceByEstimate(int pulseChannel, std::vector<double>& series, int64_t length,
                         Observer& observer) override;

private:
  Method method_;
  int nrOfPulseChannels_;
  FoundBeats found_;
  std::unique_ptr<PulseModel> model_; ///< while channels are corrected
};

} // namespace emeg
