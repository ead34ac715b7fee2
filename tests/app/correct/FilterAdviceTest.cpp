#include "app/correct/FilterAdvice.h"

#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(FilterAdvice, SingleFiltersAndABandPassDoWhatOneExpects) {
  CorrectParameters parameters;
  EXPECT_THAT(adviceOnFilters(parameters, 1, 1000).warnings, IsEmpty());
  parameters.highPass = 1;
  parameters.lowPass = 40;
  EXPECT_THAT(adviceOnFilters(parameters, 1, 1000).warnings, IsEmpty());
  EXPECT_THAT(adviceOnFilters(parameters, 1, 1000).notes, IsEmpty());
  parameters = {};
  parameters.notches = {{50, 10}, {100, 10}};
  EXPECT_THAT(adviceOnFilters(parameters, 1, 1000).warnings, IsEmpty());
}

// The notch's upper edge and the low-pass make a stop band of their own.
TEST(FilterAdvice, ANotchWithALowPassAboveItIsWarnedOf) {
  CorrectParameters parameters;
  parameters.notches = {{50, 4}};
  parameters.lowPass = 200;
  EXPECT_THAT(adviceOnFilters(parameters, 1, 1000).warnings,
              ElementsAre(HasSubstr("--line-noise 50 instead")));
}

TEST(FilterAdvice, ANotchWithDecimationIsWarnedOf) {
  CorrectParameters parameters;
  parameters.notches = {{50, 4}};
  EXPECT_THAT(adviceOnFilters(parameters, 4, 1000).warnings,
              ElementsAre(HasSubstr("--line-noise 50 instead")));
}

TEST(FilterAdvice, ALowPassWithDecimationIsWarnedOf) {
  CorrectParameters parameters;
  parameters.lowPass = 40;
  EXPECT_THAT(adviceOnFilters(parameters, 4, 1000).warnings,
              ElementsAre(HasSubstr("a low-pass of its own at 125 Hz")));
}

TEST(FilterAdvice, ANarrowNotchHardlyAttenuates) {
  CorrectParameters parameters;
  parameters.notches = {{50, 2}};
  EXPECT_THAT(adviceOnFilters(parameters, 1, 1000).notes, ElementsAre(HasSubstr("of the amplitude there")));
}

TEST(FilterAdvice, TheAntiAliasEdgeIsTold) {
  EXPECT_THAT(adviceOnFilters({}, 4, 1000).notes, ElementsAre(HasSubstr("(-6 dB) at 125 Hz")));
}

TEST(FilterAdvice, IsGivenBeforeTheRunAndInTheSidecar) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  const ProgramRun run = runEmeg(
      {"correct", folder / "run.vhdr", "-o", folder / "out.vhdr", "--notch", "50:4", "--low-pass", "200"});
  EXPECT_EQ(run.status, 3);
  EXPECT_LT(run.err.find("instead of --notch"), run.err.find("Reading"));
  const auto sidecar = nlohmann::json::parse(bytesOf(folder / "out.json"));
  EXPECT_THAT(sidecar["Warnings"].dump(), HasSubstr("instead of --notch"));
  EXPECT_THAT(sidecar["Notes"].dump(), HasSubstr("of the amplitude there"));
}

} // namespace emeg
