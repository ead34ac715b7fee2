#pragma once

#include "engine/Observer.h"

#include <emeg/emeg.h>

namespace emeg {

/// Tells a caller's function how far a correction is, and ends the correction where it says so.
class CallbackObserver : public Observer {
public:
  void set(emeg_progress callback, void* user);

  void stepBegins(Step step, int channel) override;
  void progress(double part) override;

private:
  emeg_progress callback_ = nullptr;
  void* user_ = nullptr;
  Step step_ = Step::TakingIn;
  int channel_ = -1;
};

} // namespace emeg
