#pragma once

#include "artifacts/cardiac/model/PulseModel.h"
#include "engine/Method.h"
#include "engine/beats/BeatStrategy.h"

#include <memory>

namespace emeg {

/// Beats are found in the EEG itself, and their artifact is modelled by its principal components. The method
/// says how many beats and candidates count.
class BlindBeats : public BeatStrategy {
public:
  BlindBeats(const Method& method, int nrOfPulseChannels);

  void find(const BcgSeries& series, const std::vector<double>& ecg, Observer& observer) override;
  void replaceByEstimate(int pulseChannel, std::vector<double>& series, int64_t length,
                         Observer& observer) override;

private:
  Method method_;
  int nrOfPulseChannels_;
  std::vector<double> positions_;
  HeartPeriod period_;
  std::unique_ptr<PulseModel> model_; ///< while channels are corrected
};

} // namespace emeg
