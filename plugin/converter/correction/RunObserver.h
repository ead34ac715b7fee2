#pragma once

#include "engine/Observer.h"
#include "plugin/converter/Converter.h"

namespace emeg {

/// The user gave up, or a message box has said what is wrong: the run ends.
struct RunEnded {};

/// Says what the engine does in the converter's log lines, adds the markers of what it finds to the trigger
/// protocol, and asks the user what it asks.
class RunObserver : public Observer {
public:
  explicit RunObserver(LMTRPluginEMEGFileConverter& converter) : c_(converter) {}

  void stepBegins(Step step, int channel) override;
  void detail(const std::string& line) override;
  void notFiniteFound(int channel, int64_t count) override;
  void saturationFound(int channel) override;
  void sequenceFound(const MRSequence& sequence) override;
  int windowFor(double slicesPerSecond, int proposed) override;
  void heartPeriodFound(double beatsPerMinute) override;
  void beatsFound(const FoundBeats& beats, float rate) override;
  void beatModelsMade(int channels, int64_t length, int epochs, int epochLength) override;
  void memoryNeeded(uint64_t bytes) override;

private:
  int numberOf(int channel) const { return c_.selection.selectedChannels[static_cast<size_t>(channel)]; }
  /// Markers count from the start of the recording; the protocol writer subtracts the same value again.
  double intervalStartUs() const { return static_cast<double>(c_.values.intervalStartMs * 1000.0f); }

  LMTRPluginEMEGFileConverter& c_;
};

} // namespace emeg
