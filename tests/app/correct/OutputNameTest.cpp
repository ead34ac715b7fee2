#include "app/correct/OutputName.h"

#include <gtest/gtest.h>

namespace emeg {

TEST(OutputName, NamesWhatIsDoneInTheConvertersOrder) {
  NamedSteps steps;
  EXPECT_EQ(outputSuffixOf(steps), "_GRA");
  steps.removesBeats = true;
  EXPECT_EQ(outputSuffixOf(steps), "_GRA_BCG");
  steps.highPass = 1;
  steps.lowPass = 40;
  steps.hasNotches = true;
  steps.decimation = 4;
  steps.scalingOrder = 3;
  steps.nrOfChosenChannels = 7;
  steps.hasInterval = true;
  steps.startMs = 12000;
  steps.endMs = 312000;
  EXPECT_EQ(outputSuffixOf(steps), "_7ch_12000-312000ms_HP1_LP40_NOTCH_dec4_sc3_GRA_BCG");
}

TEST(OutputName, NamesRatesThatAreNoWholePart) {
  NamedSteps steps;
  steps.rate = 256;
  EXPECT_EQ(outputSuffixOf(steps), "_256Hz_GRA");
}

} // namespace emeg
