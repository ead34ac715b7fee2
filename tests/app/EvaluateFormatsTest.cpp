#include "tests/app/SimulatedFiles.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace emeg {
namespace {

using testing::HasSubstr;

/// A simulated recording of another format than CTC, with the clean recording as its perfect correction.
class EvaluateFormats : public testing::TestWithParam<std::string> {
protected:
  void SetUp() override {
    ASSERT_EQ(runEmeg({"simulate", "both", recorded(), "--fs", "1000", "--seconds", "40", "--channels", "2"})
                  .status,
              0);
    ASSERT_EQ(runEmeg({"convert", folder_ / "r_clean.ctc", corrected()}).status, 0);
  }
  std::string recorded() const { return folder_ / ("r" + GetParam()); }
  std::string corrected() const { return folder_ / ("c" + GetParam()); }
  ProgramRun evaluate(const std::string& path) const {
    return runEmeg({"evaluate", path, "--truth", folder_ / "r_truth.json", "--json", "-"});
  }

  TestFolder folder_;
};

TEST_P(EvaluateFormats, APerfectCorrectionLeavesNothing) {
  const ProgramRun run = evaluate(corrected());
  ASSERT_EQ(run.status, 0) << run.err;
  const nlohmann::json figures = nlohmann::json::parse(run.out);
  for (const auto& channel : figures.at("gradient").at("channels")) {
    EXPECT_GT(channel.at("artifactUv").get<double>(), 100) << channel;
    // The heart beat artifact counts as clean where no pulses are marked, and is missing here.
    EXPECT_LT(channel.at("residualUv").get<double>(), 60) << channel;
  }
}

TEST_P(EvaluateFormats, TheRecordingItselfIsNoCorrection) {
  const ProgramRun run = evaluate(recorded());
  ASSERT_EQ(run.status, 0) << run.err;
  const nlohmann::json figures = nlohmann::json::parse(run.out);
  ASSERT_EQ(figures.at("gradient").at("channels").size(), 2U);
  for (const auto& channel : figures.at("gradient").at("channels"))
    EXPECT_NEAR(channel.at("residualUv").get<double>() / channel.at("artifactUv").get<double>(), 1, 1e-3)
        << channel;
}

TEST_P(EvaluateFormats, AFileThatIsNoRecordingIsNamed) {
  std::ofstream(corrected()) << "nothing of the kind";
  const ProgramRun run = evaluate(corrected());
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("c" + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(All, EvaluateFormats, testing::Values(".vhdr", ".bdf"),
                         [](const auto& format) { return format.param.substr(1); });

} // namespace
} // namespace emeg
