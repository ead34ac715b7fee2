#include "app/correct/ProgressObserver.h"

#include "app/RunErrors.h"
#include "app/correct/Interrupt.h"
#include "engine/store/FreeMemory.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace emeg {

namespace {

// Where the steps of a run begin or end, as fractions of its time.
constexpr double readingEnds = 0.15;
constexpr double scansAreFound = 0.3;
constexpr double beatsAreKnown = 0.38;
constexpr double beatsAreFound = 0.45; // and modelled
constexpr double firstPassEnds = 0.65; // of corrections that take two passes over the channels
constexpr double secondPassBegins = 0.75;
constexpr double sendingBegins = 0.85;

} // namespace

ProgressObserver::ProgressObserver(RunReport& report, const CorrectionPlan& plan, std::string input,
                                   bool isKeptFirst)
    : report_(report), input_(std::move(input)), removesBeats_(plan.settings.heartBeats),
      isKeptFirst_(isKeptFirst), nrOfChannels_(std::max(static_cast<int>(plan.channels.corrected.size()), 1)),
      nrOfPulseChannels_(std::max(
          static_cast<int>(std::count_if(plan.channels.roles.begin(), plan.channels.roles.end(),
                                         [](const ChannelRole& role) { return role.takesPartInPulses; })),
          1)) {}

void ProgressObserver::takesIn() {
  begin(fmt::format("Reading \"{}\"", input_), {0, readingEnds});
}

void ProgressObserver::sends(const std::string& output) {
  begin(fmt::format("Writing \"{}\"", output), {sendingBegins, 1});
}

void ProgressObserver::stepBegins(Step step, int) {
  const double end = isKeptFirst_ ? sendingBegins : 1;
  const double gradientBegins = removesBeats_ ? beatsAreFound : scansAreFound;
  switch (step) {
  case Step::TakingIn:
    return takesIn();
  case Step::FindingScans:
    return begin("Finding the scans", {readingEnds, scansAreFound});
  case Step::FindingBeats:
    return begin("Finding heart beats", nrOfCorrected_ > 0 ? Part{firstPassEnds, secondPassBegins}
                                                           : Part{scansAreFound, beatsAreKnown});
  case Step::Correcting:
    return begin(removesBeats_ ? "Removing the gradient artifact and the heart beat artifact"
                               : "Removing the gradient artifact",
                 {gradientBegins, end});
  case Step::CorrectingChannel:
  case Step::CorrectingForBeats: {
    const double last = removesBeats_ ? firstPassEnds : end;
    const double each = (last - readingEnds) / nrOfChannels_;
    const double from = readingEnds + each * std::min(nrOfCorrected_++, nrOfChannels_ - 1);
    return begin("Removing the gradient artifact", {from, from + each});
  }
  case Step::RemovingBeats: {
    const bool isBetweenPasses = nrOfCorrected_ > 0;
    const double first = isBetweenPasses ? secondPassBegins : beatsAreKnown;
    const double last = isBetweenPasses ? end : beatsAreFound;
    const double each = (last - first) / nrOfPulseChannels_;
    const double from = first + each * std::min(nrOfBeatsRemoved_++, nrOfPulseChannels_ - 1);
    return begin(isBetweenPasses ? "Removing the heart beat artifact" : "Modelling the heart beat artifact",
                 {from, from + each});
  }
  }
}

void ProgressObserver::begin(const std::string& name, Part part) {
  part_ = part;
  if (name != name_) report_.step(name);
  name_ = name;
  progress(0);
}

void ProgressObserver::progress(double finished) {
  InterruptWatch::check();
  report_.progress(part_.begin + (part_.end - part_.begin) * std::clamp(finished, 0.0, 1.0));
}

void ProgressObserver::detail(const std::string& line) {
  InterruptWatch::check();
  report_.detail(line);
}

void ProgressObserver::memoryNeeded(uint64_t bytes) {
  const uint64_t free = std::min(freeMemory(), freeMemoryInGroups());
  if (bytes <= free) return;
  constexpr double megabyte = 1e6;
  throw FailedRun(fmt::format("\"{}\": the correction needs {:.0f} MB more memory and {:.0f} MB are free; "
                              "nothing was written. Close other programs, or correct a part with --interval "
                              "START:END.",
                              input_, static_cast<double>(bytes) / megabyte + 0.5,
                              static_cast<double>(free) / megabyte));
}

} // namespace emeg
