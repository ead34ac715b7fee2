#pragma once

#include "engine/Correction.h"
#include "library/CallbackObserver.h"
#include "library/Handles.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// One correction with everything that it needs. Declared so that what refers to something goes before it.
struct emeg_correction {
  emeg_correction(const emeg_settings& settings, const emeg_recording& recording);

  /// How far it is. Behind a failure that may have left the store half written it has ended.
  enum class State { Taking, Found, Ended, Corrected };

  emeg::CorrectionSettings settings;
  emeg::RecordingShape shape;
  std::vector<std::string> names;
  std::vector<bool> isRaw; ///< per channel: units do not count
  emeg::CallbackObserver observer;
  std::unique_ptr<emeg::ChannelStore> store;
  std::unique_ptr<emeg::Correction> run; ///< null where it could not be made
  State state = State::Taking;
  int64_t nrOfTaken = 0;
  std::string json;
  mutable std::string error;

  /// Makes `store` and `run`. Throws what they throw.
  void prepare(const std::string& scratchFile);

  /// Takes the next time points as `fill(first, count, microvolts)` gives them, in blocks.
  using Fill = std::function<void(int64_t first, int64_t count, std::vector<double>& microvolts)>;
  void take(int64_t count, const Fill& fill);
  void find();
  void correct(emeg::CorrectedSink& sink);

  /// Throws Refusal before something was found.
  const emeg::Findings& findings() const;
  /// Throws Refusal where there is no correction.
  emeg::Correction& running() const;

private:
  void demandAllSamples() const;
};
