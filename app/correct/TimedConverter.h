#pragma once

#include "app/correct/FoundScan.h"
#include "artifacts/gradient/timing/SegmentRemoval.h"
#include "converter/Converter.h"

#include <memory>

namespace emeg {

/// The plug-in's converter with more ways to the scanner's timing: what the quiet between slices shows stands
/// where it is plausible; else scans found by the similarity of their volumes, from markers or from given
/// durations are removed, each with its own timing.
class TimedConverter : public EMEGArtifactPreprocessor {
public:
  TimedConverter(const char* logPrefix, TimingRequest request);

  const FoundScans& foundScans() const { return found_; }

protected:
  bool detectSequence(const SplinedSignal& channel) override;
  void estimateGradient(const SplinedSignal& channel) override;

private:
  MRSequence sequenceFromQuiet(const SplinedSignal& channel);
  std::vector<int32_t> channelsWithSequence() const;
  void readInterval(int32_t channel, std::vector<double>& samples);
  bool hasMemory(int64_t nrOfSamples);
  bool useSequence(const MRSequence& sequenceOfQuiet);
  bool useSegments(const std::vector<ScanSegment>& segments);

  TimingRequest request_;
  FoundScans found_;
  bool isChosen_ = false;
  std::vector<float> block_;
  std::unique_ptr<SegmentRemoval> removal_; ///< where the timing is not that of `sequence` alone
};

} // namespace emeg
