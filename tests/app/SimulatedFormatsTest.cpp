#include "files/exchange/RecordingReader.h"
#include "tests/app/SimulatedFiles.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {
namespace {

using testing::ElementsAre;

std::vector<std::string> simulate(const std::string& path) {
  return {"simulate", "both", path, "--fs", "2000", "--volumes", "3", "--channels", "2"};
}

TEST(SimulatedFormats, HoldWhatTheCtcFileHolds) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate(folder / "r.ctc")).status, 0);
  const auto ctc = openRecording(folder / "r.ctc");
  std::vector<double> expected(static_cast<size_t>(2 * ctc->header().nrOfTimePoints));
  ctc->read(0, ctc->header().nrOfTimePoints, expected);
  for (const auto& [name, tolerance] :
       {std::pair{"v.vhdr", 0.001}, std::pair{"b.bdf", 0.017}, std::pair{"e.edf", 0.1}}) {
    const ProgramRun run = runEmeg(simulate(folder / name));
    ASSERT_EQ(run.status, 0) << run.err;
    const auto reader = openRecording(folder / name);
    ASSERT_EQ(reader->header().nrOfTimePoints, ctc->header().nrOfTimePoints) << name;
    EXPECT_EQ(reader->header().channels[1].name, "Fp2");
    EXPECT_EQ(reader->header().markers.size(), 6u);
    std::vector<double> values(expected.size());
    reader->read(0, ctc->header().nrOfTimePoints, values);
    for (size_t i = 0; i < values.size(); i++) ASSERT_NEAR(values[i], expected[i], tolerance) << name;
  }
}

TEST(SimulatedFormats, ComeWithTheTruthBesideThem) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate(folder / "r.vhdr")).status, 0);
  EXPECT_THAT(folder.names(),
              ElementsAre("r.eeg", "r.vhdr", "r.vmrk", "r_clean.ctc", "r_pulse.ctc", "r_truth.json"));
  EXPECT_THAT(readTruth(folder / "r_truth.json").dump(), testing::HasSubstr("r.vhdr"));
}

TEST(SimulatedFormats, ExistingFilesStay) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg(simulate(folder / "r.vhdr")).status, 0);
  const ProgramRun again = runEmeg(simulate(folder / "r.vhdr"));
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.err, testing::HasSubstr("--force"));
  std::vector<std::string> replacing = simulate(folder / "r.vhdr");
  replacing.push_back("--force");
  EXPECT_EQ(runEmeg(replacing).status, 0);
}

} // namespace
} // namespace emeg
