#pragma once

#include "engine/Findings.h"
#include "engine/Observer.h"

namespace emeg {

/// Keeps what a whole-channel correction finds, and passes everything on.
class FindingsObserver : public Observer {
public:
  FindingsObserver(Observer& next, Findings& findings, double seconds)
      : next_(next), findings_(findings), seconds_(seconds) {}

  void stepBegins(Step step, int channel) override { next_.stepBegins(step, channel); }
  void progress(double finished) override { next_.progress(finished); }
  void detail(const std::string& line) override { next_.detail(line); }
  void notFiniteFound(int channel, int64_t count) override { next_.notFiniteFound(channel, count); }
  void saturationFound(int channel) override { next_.saturationFound(channel); }
  void sequenceFound(const MRSequence& sequence) override;
  int windowFor(double slicesPerSecond, int proposed) override;
  void heartPeriodFound(double beatsPerMinute) override;
  void beatsFound(const FoundBeats& beats, float rate) override;
  void beatModelsMade(int channels, int64_t length, int epochs, int epochLength) override;
  void memoryNeeded(uint64_t bytes) override { next_.memoryNeeded(bytes); }

private:
  Observer& next_;
  Findings& findings_;
  double seconds_; ///< of the recording
};

} // namespace emeg
