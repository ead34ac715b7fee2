#include "app/evaluation/Residual.h"
#include "tests/app/SimulatedFiles.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::HasSubstr;

constexpr size_t channels = 2;
constexpr double fs = 1000;

/// Two scans of four volumes, eight seconds apart.
class EvaluateScans : public testing::Test {
protected:
  void SetUp() override {
    const ProgramRun run = runEmeg({"simulate", "gap", folder_ / "r.ctc", "--fs", "1000", "--channels", "2",
                                    "--volumes", "4", "--scans", "2"});
    ASSERT_EQ(run.status, 0) << run.err;
  }

  /// What a correction would leave: of every sample the recorded, the clean, or another value.
  template <typename Choice>
  void writeCorrected(Choice valueAt) {
    std::string bytes = bytesOf(folder_ / "r.ctc");
    const ReadRecording recorded = readRecording(folder_ / "r.ctc");
    const ReadRecording clean = readRecording(folder_ / "r_clean.ctc");
    const size_t header =
        bytes.size() - static_cast<size_t>(recorded.header.nrOfTimePoints) * channels * sizeof(float);
    for (int64_t t = 0; t < recorded.header.nrOfTimePoints; t++) {
      for (size_t c = 0; c < channels; c++) {
        const int channel = static_cast<int>(c);
        const auto value = static_cast<float>(
            valueAt(static_cast<double>(t) / fs, recorded.at(channel, t), clean.at(channel, t)));
        const size_t at = header + (static_cast<size_t>(t) * channels + c) * sizeof(float);
        std::memcpy(bytes.data() + at, &value, sizeof(float));
      }
    }
    std::ofstream(folder_ / "c.ctc", std::ios::binary) << bytes;
  }

  std::vector<ChannelResidual> residuals() {
    return measureResiduals(folder_ / "c.ctc", readSimulatedTruth(folder_ / "r_truth.json"));
  }

  double beginOf(size_t scan) {
    return readTruth(folder_ / "r_truth.json").at("gradient").at("scans").at(scan).at("firstVolumeOnset");
  }
  double endOf(size_t scan) {
    return readTruth(folder_ / "r_truth.json").at("gradient").at("scans").at(scan).at("endOfScan");
  }

  TestFolder folder_;
};

TEST_F(EvaluateScans, EachScanHasItsResidual) {
  const double secondBegins = beginOf(1);
  writeCorrected([&](double time, double recorded, double clean) {
    return time < secondBegins - 1 ? clean : clean + 0.1 * (recorded - clean);
  });
  for (const ChannelResidual& channel : residuals()) {
    ASSERT_EQ(channel.scans.size(), 2u);
    EXPECT_EQ(channel.scans[0].residualUv, 0);
    EXPECT_NEAR(channel.scans[1].decibels(), 20, 0.01);
    EXPECT_NEAR(channel.decibels(), 20 + 10 * std::log10(2), 0.1); // half of the artifact is gone
    EXPECT_EQ(channel.outsideUv, 0);
  }
  const ProgramRun run = runEmeg({"evaluate", folder_ / "c.ctc", "--truth", folder_ / "r_truth.json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("scan 2                               4 volumes from"));
  EXPECT_THAT(run.out, HasSubstr("In scan 2 the residual lies 20.0 to 20.0 dB below"));
  const nlohmann::json json = nlohmann::json::parse(
      runEmeg({"evaluate", folder_ / "c.ctc", "--truth", folder_ / "r_truth.json", "--json", "-"}).out);
  EXPECT_NEAR(json.at("gradient").at("channels").at(0).at("scans").at(1).at("decibels").get<double>(), 20,
              0.01);
}

TEST_F(EvaluateScans, ThePauseBelongsToNoScan) {
  const double begin = endOf(0) + 2;
  const double end = beginOf(1) - 2;
  writeCorrected([&](double time, double recorded, double clean) {
    return time >= begin && time < end ? recorded + 10 : clean;
  });
  const double recordedSeconds = readTruth(folder_ / "r_truth.json").at("seconds");
  const double volume = readTruth(folder_ / "r_truth.json").at("gradient").at("volumeDuration");
  const double outside = recordedSeconds - 2 * 6 * volume;
  for (const ChannelResidual& channel : residuals()) {
    EXPECT_EQ(channel.residualUv, 0);
    EXPECT_NEAR(channel.outsideUv, 10 * std::sqrt((end - begin) / outside), 0.01);
  }
}

TEST_F(EvaluateScans, TruthOfOneScanIsReadWithoutAList) {
  nlohmann::json truth = readTruth(folder_ / "r_truth.json");
  truth["gradient"].erase("scans");
  truth["gradient"]["endOfScan"] = endOf(0);
  std::ofstream(folder_ / "old_truth.json") << truth;
  const SimulatedTruth read = readSimulatedTruth(folder_ / "old_truth.json");
  ASSERT_EQ(read.scans.size(), 1u);
  EXPECT_EQ(read.scans[0].nrOfVolumes, 4);
  EXPECT_EQ(read.scans[0].firstVolumeOnset, beginOf(0));
  EXPECT_EQ(read.scans[0].endOfScan, endOf(0));
}

TEST(Evaluate, ScansThatTheRecordingCutsAreMeasuredWhereItIs) {
  const TestFolder folder;
  ASSERT_EQ(runEmeg({"simulate", "continuous", folder / "r.ctc", "--fs", "1000", "--channels", "1",
                     "--seconds", "20", "--cut-start", "0.9", "--ends-in-scan"})
                .status,
            0);
  const nlohmann::json truth = readTruth(folder / "r_truth.json");
  const nlohmann::json& scan = truth.at("gradient").at("scans").at(0);
  const double duration = truth.at("gradient").at("volumeDuration");
  const double lastWhole = scan.at("firstVolumeOnset").get<double>() + duration +
                           scan.at("nrOfWholeVolumes").get<double>() * duration;
  EXPECT_LE(lastWhole, 20.05); // its last slice is over before its dead time is
  EXPECT_GT(lastWhole, 20 - duration);
  const auto residuals = measureResiduals(folder / "r.ctc", readSimulatedTruth(folder / "r_truth.json"));
  const double rms = truth.at("gradient").at("rmsUv").at(0);
  EXPECT_NEAR(residuals[0].artifactUv, rms, 1e-4 * rms);
  const ReadRecording recorded = readRecording(folder / "r.ctc");
  const ReadRecording clean = readRecording(folder / "r_clean.ctc");
  double squares = 0;
  for (int64_t t = 0; t < 20000; t++) squares += std::pow(recorded.at(0, t) - clean.at(0, t), 2);
  EXPECT_NEAR(rms, std::sqrt(squares / 20000), 1e-4 * rms);
}

} // namespace

} // namespace emeg
