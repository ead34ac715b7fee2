#include "dsp/FilterStages.h"

#include <algorithm>
#include <cassert>

namespace emeg {

bool FilterStageList::addFilterStage(EdgeKind kind, double cutOff, double order, uint32_t enabled,
                                     int64_t tag) {
  // Written so that a cut-off that is not a number counts as not positive.
  if (!(cutOff > 0)) return true;
  if (count() >= capacity) return false;
  const auto place =
      std::upper_bound(stages_.begin(), stages_.end(), cutOff,
                       [](double value, const FilterStage& stage) { return value < stage.cutOff; });
  stages_.insert(place, FilterStage{kind, cutOff, order, enabled, tag});
  return true;
}

const FilterStage& FilterStageList::operator[](int index) const {
  assert(index >= 0 && index < count());
  return stages_[static_cast<std::size_t>(index)];
}

} // namespace emeg
