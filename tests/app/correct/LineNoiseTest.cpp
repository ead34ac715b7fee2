#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>

namespace emeg {

TEST(LineNoise, ASinusoidOfConstantAmplitudeIsRemoved) {
  const TestFolder folder;
  const auto recording = copyOf(heartRecording());
  // Between the lines of the scan, so that the gradient correction leaves it.
  for (auto& channel : recording->samples)
    for (size_t t = 0; t < channel.size(); ++t)
      channel[t] += 40 * std::sin(2 * std::numbers::pi * 50 * static_cast<double>(t) / 1000);
  recording->save(folder / "run.vhdr");
  for (const char* correction : {"--bcg", "--quiet"}) {
    ASSERT_NE(
        runEmeg({"correct", folder / "run.vhdr", "-o", folder / "plain.vhdr", "--force", correction}).status,
        2);
    ASSERT_NE(runEmeg({"correct", folder / "run.vhdr", "-o", folder / "clean.vhdr", "--force", correction,
                       "--line-noise", "50"})
                  .status,
              2);
    const MemoryRecording plain(folder / "plain.vhdr");
    const MemoryRecording clean(folder / "clean.vhdr");
    for (size_t c = 0; c < clean.samples.size(); ++c) {
      EXPECT_GT(amplitudeAt(plain.samples[c], 50, 1000), 10) << correction;
      // What the heart beat correction changes at 50 Hz comes after.
      EXPECT_LT(amplitudeAt(clean.samples[c], 50, 1000), 0.4) << correction;
    }
  }
}

TEST(LineNoise, SeveralFrequenciesAreRemoved) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "run.vhdr");
  ASSERT_EQ(runEmeg({"correct", folder / "run.vhdr", "--line-noise", "50,60", "--quiet"}).status, 0);
  const MemoryRecording after(folder / "run_GRA.vhdr");
  for (const double hz : {50.0, 60.0}) EXPECT_LT(amplitudeAt(after.samples[0], hz, 1000), 0.05);
}

} // namespace emeg
