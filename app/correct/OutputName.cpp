#include "app/correct/OutputName.h"

#include <fmt/format.h>

namespace emeg {

std::string outputSuffixOf(const NamedSteps& steps) {
  std::string suffix;
  if (steps.nrOfChosenChannels > 0) suffix += fmt::format("_{}ch", steps.nrOfChosenChannels);
  if (steps.hasInterval) suffix += fmt::format("_{:.0f}-{:.0f}ms", steps.startMs, steps.endMs);
  if (steps.highPass > 0) suffix += fmt::format("_HP{:.0f}", steps.highPass);
  if (steps.lowPass > 0) suffix += fmt::format("_LP{:.0f}", steps.lowPass);
  if (steps.hasNotches) suffix += "_NOTCH";
  if (steps.decimation > 1) suffix += fmt::format("_dec{}", steps.decimation);
  if (steps.rate > 0) suffix += fmt::format("_{:g}Hz", steps.rate);
  if (steps.scalingOrder != 0) suffix += fmt::format("_sc{}", steps.scalingOrder);
  suffix += "_GRA";
  if (steps.removesBeats) suffix += "_BCG";
  return suffix;
}

} // namespace emeg
