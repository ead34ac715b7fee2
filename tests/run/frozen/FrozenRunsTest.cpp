#include "tests/run/frozen/FrozenRun.h"

#include <gtest/gtest.h>

namespace emeg::test {

class FrozenRuns : public testing::TestWithParam<FrozenRun> {};

TEST_P(FrozenRuns, MakeTheStoredCallsAndLeaveTheStoredFiles) {
  expectAsStored(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Of, FrozenRuns, testing::ValuesIn(frozenRuns()),
                         [](const testing::TestParamInfo<FrozenRun>& run) { return run.param.name; });

} // namespace emeg::test
