#include "dsp/FrequencyFilter.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int32_t maxLog2N = 31;

/// Gain of a stage as a low-pass with Butterworth-squared edge: 1 / ((x / (n cutOff))^(2 order) + 1).
class LowPassShape {
public:
  LowPassShape(const FilterStage& stage, double nrOfBins)
      : exponent_(stage.order * 2), logCutOff_(std::log(stage.cutOff)),
        edge_(std::log(nrOfBins * stage.cutOff) * exponent_) {}

  double atBin(double logBin) const { return 1.0 / (std::exp(logBin * exponent_ - edge_) + 1.0); }
  double atNyquist() const { return 1.0 / (std::exp(-logCutOff_ * exponent_) + 1.0); }

private:
  double exponent_;
  double logCutOff_;
  double edge_;
};

/// One gain factor: `kept` is what a low-pass edge lets through, and the complement of `removed` is added
/// again. Either may be missing.
struct GainFactor {
  const FilterStage* kept = nullptr;
  const FilterStage* removed = nullptr;
};

void scaleGain(float& gain, double factor) {
  gain = static_cast<float>(static_cast<double>(gain) * factor);
}

void multiplyGains(std::vector<float>& gains, int64_t nrOfBins, const GainFactor& factor) {
  const FilterStage none;
  const bool hasKept = factor.kept != nullptr;
  const bool hasRemoved = factor.removed != nullptr;
  const LowPassShape kept(hasKept ? *factor.kept : none, static_cast<double>(nrOfBins));
  const LowPassShape removed(hasRemoved ? *factor.removed : none, static_cast<double>(nrOfBins));

  for (int64_t x = 1; x < nrOfBins; ++x) {
    const double logBin = std::log(static_cast<double>(x));
    const double a = hasKept ? kept.atBin(logBin) : 0.0;
    const double b = hasRemoved ? removed.atBin(logBin) : 1.0;
    const double gain = 1.0 - (1.0 - a) * b;
    scaleGain(gains[static_cast<std::size_t>(2 * x)], gain);
    scaleGain(gains[static_cast<std::size_t>(2 * x + 1)], gain);
  }
  scaleGain(gains[0], hasKept ? 1.0 : 0.0);
  const double a = hasKept ? kept.atNyquist() : 0.0;
  const double b = hasRemoved ? removed.atNyquist() : 1.0;
  scaleGain(gains[1], 1.0 - (1.0 - a) * b);
}

/// Fills the slots behind the valid samples with a cross-fade from the signal mirrored about its last sample
/// to its opening samples, so that the periodic continuation has no jump. A single slot holds the mirrored
/// sample alone.
void padPeriodically(double* signal, int64_t nrOfValid, int64_t length) {
  const int64_t last = nrOfValid - 1;
  const int64_t nrOfSlots = length - nrOfValid;
  for (int64_t i = 0; i < nrOfSlots; ++i) {
    const double t = nrOfSlots > 1 ? static_cast<double>(i) / static_cast<double>(nrOfSlots - 1) : 0.0;
    const double mirrored = signal[std::clamp<int64_t>(nrOfValid - 2 - i, 0, last)];
    const double opening = signal[std::clamp<int64_t>(1 + i, 0, last)];
    signal[nrOfValid + i] = (1.0 - t) * mirrored + t * opening;
  }
}

} // namespace

FilterResponse makeFilterResponse(const FilterStageList& stages, int32_t log2N) {
  FilterResponse response;
  if (log2N < 1 || log2N > maxLog2N) return response;
  response.nrOfStages_ = stages.count();
  const int64_t nrOfBins = int64_t{1} << (log2N - 1);
  response.gains_.assign(static_cast<std::size_t>(2 * nrOfBins + 1), 0.0F);
  std::fill(response.gains_.begin(), response.gains_.end() - 1,
            static_cast<float>(1.0 / static_cast<double>(nrOfBins)));

  const int count = stages.count();
  for (int i = 0; i < count; ++i) {
    GainFactor factor;
    if (i == 0 && stages[0].kind == EdgeKind::HighPass) {
      factor.removed = &stages[0];
    } else {
      while (i < count - 2 &&
             !(stages[i].kind != EdgeKind::HighPass && stages[i + 1].kind == EdgeKind::HighPass))
        ++i;
      if (i == count - 1 && stages[i].kind == EdgeKind::HighPass) break;
      factor.kept = &stages[i];
      if (i < count - 1) factor.removed = &stages[i + 1];
    }
    multiplyGains(response.gains_, nrOfBins, factor);
  }
  if (count > 0) response.binGains_ = BinGains(response.gains_.data(), log2N);
  return response;
}

void filterSignalFFT(double* signal, int64_t nrOfValidSamples, const FilterResponse& response,
                     FFTWorkspace& workspace) {
  // Lengths that have no transform have no gains either.
  if (response.nrOfStages() == 0 || response.binGains().log2n() == 0) return;
  const int64_t length = int64_t{1} << response.binGains().log2n();
  if (nrOfValidSamples <= 0 || nrOfValidSamples > length) return;

  padPeriodically(signal, nrOfValidSamples, length);
  filterFFT(signal, response.binGains(), workspace);
}

} // namespace emeg
