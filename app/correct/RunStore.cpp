#include "app/correct/RunStore.h"

#include "engine/Correction.h"
#include "engine/store/FileStore.h"
#include "engine/store/FreeMemory.h"
#include "engine/store/MemoryStore.h"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

namespace emeg {

namespace {

constexpr uint64_t megabyte = 1000000;

uint64_t inMegabytes(uint64_t bytes) {
  return bytes / megabyte + 1;
}

void checkMemory(const CorrectParameters& parameters, uint64_t needed, uint64_t free) {
  if (needed <= free) return;
  throw FailedRun(fmt::format(
      "correcting \"{}\" needs {} MB of memory and {} MB are free; nothing was written. Close other "
      "programs, choose fewer channels with --channels NAME,... or a part with --interval START:END.",
      parameters.input, inMegabytes(needed), inMegabytes(free)));
}

} // namespace

RunStore::RunStore(const CorrectParameters& parameters, const CorrectionResult& planned,
                   const RecordingShape& shape, RunReport& report) {
  const CorrectionPlan& plan = planned.plan;
  const uint64_t free = std::min(freeMemory(), freeMemoryInGroups());
  const uint64_t working = Correction::memoryFor(plan.settings, shape);
  checkMemory(parameters, working, free);

  const std::string outputFolder = folderOf(planned.place.recording);
  const std::string scratchParent = parameters.scratch.empty() ? outputFolder : parameters.scratch;
  for (const std::string& stale : staleScratchFolders(scratchParent))
    report.note(fmt::format("\"{}\" was left by a run that was killed; it may be removed.", stale));

  const int64_t length = Correction::storeLength(plan.settings, shape);
  const auto perSample = sizeof(float) * shape.roles.size();
  const uint64_t stored = static_cast<uint64_t>(length) * perSample;
  const uint64_t allowed = std::min(static_cast<uint64_t>(parameters.memory) * megabyte, free - working);
  const bool isInMemory = stored <= allowed;
  std::vector<NeededRoom> room = {{outputFolder, static_cast<uint64_t>(plan.nrOfOutputs) * perSample}};
  if (!isInMemory) room.push_back({scratchParent, stored});
  checkRoom(room);

  if (isInMemory) {
    channels_ = std::make_unique<MemoryStore>(shape.nrOfChannels(), length);
    return;
  }
  folder_ = std::make_unique<ScratchFolder>(scratchParent);
  channels_ = std::make_unique<FileStore>(folder_->file("channels"), length);
}

} // namespace emeg
