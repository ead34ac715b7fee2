#include "app/correct/SaturatedChannels.h"

#include "artifacts/SaturationRepair.h"
#include "converter/steps/MachineResources.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <span>

namespace emeg {

namespace {

// An amplifier's clipping shows at and next to the last integer.
constexpr int64_t limitMargin = 2;
constexpr size_t fewestUsable = 3; // of a spline

SaturationLimits limitsOf(const StoredIntegers& stored) {
  return {static_cast<double>(stored.smallest + limitMargin),
          static_cast<double>(stored.largest - limitMargin)};
}

bool isUsable(double integer, const SaturationLimits& limits) {
  return limits.lower < integer && integer < limits.upper;
}

/// The recording's integers; a sample that is no number counts as saturated.
std::vector<double> integersOf(std::span<const double> values, const StoredIntegers& stored) {
  std::vector<double> integers(values.size());
  for (size_t i = 0; i < values.size(); ++i)
    integers[i] = std::isfinite(values[i]) ? static_cast<double>(stored.integerOf(values[i]))
                                           : static_cast<double>(stored.largest);
  return integers;
}

RepairedChannel repair(std::vector<double>& values, const StoredIntegers& stored) {
  const SaturationLimits limits = limitsOf(stored);
  std::vector<double> integers = integersOf(values, stored);
  const auto usable = [&limits](double integer) { return isUsable(integer, limits); };
  const auto firstUsable = std::find_if(integers.begin(), integers.end(), usable);
  const auto lastUsable = std::find_if(integers.rbegin(), integers.rend(), usable).base();
  RepairedChannel result;
  const auto nrOfUsable = static_cast<size_t>(std::count_if(integers.begin(), integers.end(), usable));
  const auto nrOfSaturated = static_cast<int64_t>(integers.size() - nrOfUsable);
  if (nrOfUsable < fewestUsable) {
    result.nrOfLeft = nrOfSaturated;
    return result;
  }
  const auto first = static_cast<size_t>(firstUsable - integers.begin());
  const auto length = static_cast<size_t>(lastUsable - firstUsable);
  result.nrOfRepaired = static_cast<int64_t>(length - nrOfUsable);
  result.nrOfLeft = nrOfSaturated - result.nrOfRepaired;
  if (result.nrOfRepaired == 0) return result;

  std::vector<double> repaired(firstUsable, lastUsable);
  std::vector<double> scratch(length), b(length), c(length), d(length);
  repairSaturations(repaired.data(), static_cast<int64_t>(length), limits, scratch.data(), b.data(), c.data(),
                    d.data(), {});
  for (size_t i = 0; i < length; ++i)
    if (!isUsable(integers[first + i], limits)) values[first + i] = stored.step * repaired[i] + stored.offset;
  return result;
}

void checkMemory(const std::string& path, int64_t nrOfTimePoints) {
  constexpr uint64_t arrays = 8; // values, integers, repaired, and five of the spline
  MachineResources needed;
  needed.memory = arrays * sizeof(double) * static_cast<uint64_t>(nrOfTimePoints);
  const std::string shortage = describeShortage(needed, availableResources(path), path);
  if (!shortage.empty()) throw FailedRun(shortage);
}

/// Looks block by block, so that clean channels cost no memory.
bool hasSaturatedSamples(ScratchChannel& scratch, int channel, int64_t nrOfTimePoints,
                         const StoredIntegers& stored) {
  constexpr int64_t blockLength = 1 << 16;
  const SaturationLimits limits = limitsOf(stored);
  std::vector<double> block;
  for (int64_t done = 0; done < nrOfTimePoints;) {
    block.resize(static_cast<size_t>(std::min(blockLength, nrOfTimePoints - done)));
    scratch.read(channel, done, block);
    for (const double integer : integersOf(block, stored))
      if (!isUsable(integer, limits)) return true;
    done += static_cast<int64_t>(block.size());
  }
  return false;
}

} // namespace

void checkSaturationCanShow(const RecordingHeader& header, const CorrectionPlan& plan,
                            const std::string& input) {
  for (const int channel : plan.channels.corrected)
    if (header.channels[static_cast<size_t>(channel)].stored) return;
  throw UnusableInput(
      fmt::format("--repair-saturation: \"{}\" stores no integers, so saturated samples cannot be "
                  "told from others; give the file that the amplifier wrote.",
                  input));
}

std::vector<RepairedChannel> repairSaturatedChannels(const std::string& scratchPath,
                                                     const RecordingHeader& header,
                                                     const CorrectionPlan& plan,
                                                     const std::function<void(double)>& progress) {
  std::vector<RepairedChannel> results;
  ScratchChannel scratch(scratchPath, ScratchSamples::Float64, plan.nrOfTimePoints);
  const size_t nrOfChannels = plan.channels.corrected.size();
  for (size_t k = 0; k < nrOfChannels; ++k) {
    const int channel = plan.channels.corrected[k];
    const std::optional<StoredIntegers>& stored = header.channels[static_cast<size_t>(channel)].stored;
    if (stored && hasSaturatedSamples(scratch, static_cast<int>(k), plan.nrOfTimePoints, *stored)) {
      checkMemory(scratchPath, plan.nrOfTimePoints);
      std::vector<double> values(static_cast<size_t>(plan.nrOfTimePoints));
      scratch.read(static_cast<int>(k), 0, values);
      RepairedChannel result = repair(values, *stored);
      result.channel = channel;
      if (result.nrOfRepaired > 0) scratch.write(static_cast<int>(k), 0, values);
      results.push_back(result);
    }
    progress(static_cast<double>(k + 1) / static_cast<double>(nrOfChannels));
  }
  scratch.close();
  return results;
}

} // namespace emeg
