#pragma once

#include "converter/Converter.h"
#include "dsp/FrequencyFilter.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Takes every selected channel out of the chunk files, through the stages that are switched on, and back.
/// One pass over the channels, or two with the heart-pulse detection between them when the cardiac correction
/// is on.
class CorrectionDriver {
public:
  explicit CorrectionDriver(LMTRPluginEMEGFileConverter& converter);

  /// False when a stage failed; the failure has been reported.
  bool run();

private:
  // What the stages need before the first channel.
  void orderChannels();
  void buildFilters();
  void allocateBuffers();

  // The two ways over the channels.
  bool correctInOnePass(int32_t channel);
  bool correctInTwoPasses();
  bool preprocess(int32_t channel, int32_t pulseChannel);
  bool removePulses(int32_t channel, int32_t pulseChannel);

  // Stages of one channel, in the order of the run.
  bool readChannel(int32_t channel);
  void zeroSamplesThatAreNotNumbers(int32_t channel);
  void repairChannelSaturations();
  void keepLowFrequencyRest(int32_t channel);
  void subtractHighPassedSignal();
  bool removeGradientArtifact(int32_t channel);
  void removeLineSinusoids();
  void fillBcgSeries(int32_t pulseChannel);
  void keepElectrocardiogram();
  void reduceForPulses(std::vector<double>& series);
  bool removeOcularArtifact() { return true; } // a place for a stage that this system does not have
  void addFullRateRest();
  bool finishChannel(int32_t channel);
  bool subtractReference();

  void combineWithSpline(const std::vector<double>& knots, int64_t nrOfKnots, int64_t samplesPerKnot,
                         double sign);
  bool writeChannel(int32_t channel, int64_t nrOfSamples);
  int32_t numberOf(int32_t channel) const {
    return c_.selection.selectedChannels[static_cast<size_t>(channel)];
  }

  LMTRPluginEMEGFileConverter& c_;
  CorrectionBuffers& buffers_;
  const int64_t samples_;              ///< of the interval, at the input rate
  const int64_t processed_;            ///< of the interval and its margins
  double* signal_ = nullptr;           ///< channelSignal
  std::vector<int32_t> order_;         ///< output channels as they are corrected
  std::vector<int32_t> pulseChannels_; ///< those of them with heart beats to remove, in the same order
  FilterResponse outputFilter_;
  FilterResponse artifactHighPassFilter_;
  FilterResponse bcgLowPassFilter_;
};

} // namespace emeg
