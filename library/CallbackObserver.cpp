#include "library/CallbackObserver.h"

namespace emeg {

namespace {

const char* textOf(Step step) {
  switch (step) {
  case Step::TakingIn:
    return "taking samples in";
  case Step::FindingScans:
    return "finding scans";
  case Step::CorrectingChannel:
    return "correcting a channel";
  case Step::CorrectingForBeats:
    return "preparing the search for heart beats";
  case Step::FindingBeats:
    return "finding heart beats";
  case Step::RemovingBeats:
    return "removing heart beats";
  case Step::Correcting:
    return "correcting";
  }
  return "";
}

} // namespace

void CallbackObserver::set(emeg_progress callback, void* user) {
  callback_ = callback;
  user_ = user;
}

void CallbackObserver::stepBegins(Step step, int channel) {
  step_ = step;
  channel_ = channel;
  progress(0);
}

void CallbackObserver::progress(double part) {
  if (callback_ != nullptr && callback_(user_, textOf(step_), channel_, part) != 0) throw Cancelled();
}

} // namespace emeg
