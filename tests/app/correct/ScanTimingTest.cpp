#include "app/simulation/SimulatedRecording.h"
#include "app/simulation/Simulation.h"
#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr double fs = 1000;

/// A simulated scan as a file "run.vhdr" of three channels, and what is known of it.
class ScannedFile {
public:
  explicit ScannedFile(Preset preset, const std::function<void(SimulationParameters&)>& change = {},
                       double seconds = 50) {
    SimulationParameters parameters = presetParameters(preset, fs);
    parameters.seconds = seconds;
    parameters.nrOfChannels = 3;
    parameters.seed = 31;
    if (change) change(parameters);
    EXPECT_EQ(problemWith(parameters), "");
    Simulation simulation(parameters);
    SimulatedBlock block;
    clean.resize(3);
    std::vector<std::vector<double>> recorded(3);
    while (simulation.next(1 << 16, block))
      for (int c = 0; c < 3; ++c)
        for (int64_t t = 0; t < block.nrOfTimePoints; ++t) {
          recorded[static_cast<size_t>(c)].push_back(block.recorded(c, t));
          clean[static_cast<size_t>(c)].push_back(block.clean[block.indexOf(c, t)]);
        }
    if (simulation.gradient() != nullptr) timings = simulation.gradient()->timings();
    recording.editableHeader().format = "BrainVision";
    recording.editableHeader().samplingFrequency = fs;
    recording.editableHeader().nrOfTimePoints = static_cast<int64_t>(recorded[0].size());
    const char* const names[] = {"Fp1", "Cz", "O2"};
    for (size_t c = 0; c < 3; ++c)
      recording.addChannel(names[c], ChannelKind::Eeg,
                           [&](int64_t t) { return recorded[c][static_cast<size_t>(t)]; });
  }

  std::string path() const { return folder_ / "run.vhdr"; }

  /// The run's exit status, its figures in `sidecar` and the output's samples in `corrected`.
  int correct(const std::vector<std::string>& options = {}) {
    recording.save(path());
    std::vector<std::string> arguments = {"correct", path(), "-o", folder_ / "out.vhdr", "--force", "--json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    run = runEmeg(arguments);
    if (run.status == 0 || run.status == 3) {
      sidecar = json::parse(run.out);
      corrected = std::make_unique<MemoryRecording>(folder_ / "out.vhdr");
    }
    return run.status;
  }

  bool wroteAnything() const { return std::filesystem::exists(folder_ / "out.vhdr"); }

  /// dB of the artifact that is left in [from, to) seconds, all channels.
  double leftDb(double from, double to) const {
    double artifact = 0, left = 0;
    for (size_t c = 0; c < clean.size(); ++c)
      for (auto t = static_cast<size_t>(from * fs); t < static_cast<size_t>(to * fs); ++t) {
        artifact += std::pow(recording.samples[c][t] - clean[c][t], 2);
        left += std::pow(corrected->samples[c][t] - clean[c][t], 2);
      }
    return 10 * std::log10(left / artifact);
  }

  void addVolumeMarkers(const char* name) {
    for (const ScanTiming& timing : timings)
      for (int64_t v = 0; v < timing.nrOfVolumes; ++v)
        recording.addMarker("Response", name, std::floor(timing.volumeOnset(v) * fs));
  }

  MemoryRecording recording;
  std::vector<std::vector<double>> clean;
  std::vector<ScanTiming> timings;
  ProgramRun run;
  json sidecar;
  std::unique_ptr<MemoryRecording> corrected;

private:
  TestFolder folder_;
};

void expectCounts(const json& scan, const ScanTiming& timing) {
  EXPECT_EQ(scan["NumberOfVolumes"], timing.nrOfVolumes);
  EXPECT_EQ(scan["SlicesPerVolume"], timing.nrOfSlicesPerVolume);
  EXPECT_NEAR(scan["VolumeDuration"].get<double>(), timing.volumeDuration, 1e-6);
}

} // namespace

TEST(ScanTiming, TheOutputSaysWhichDetectionFoundIt) {
  ScannedFile quiet(Preset::Continuous);
  ASSERT_EQ(quiet.correct(), 0) << quiet.run.err;
  EXPECT_EQ(quiet.sidecar["Detected"]["Timing"]["Source"], "quiet between slices");
  expectCounts(quiet.sidecar["Detected"]["Scans"][0], quiet.timings[0]);

  ScannedFile filled(Preset::Fill);
  ASSERT_EQ(filled.correct({"--slice-wise"}), 0) << filled.run.err;
  EXPECT_EQ(filled.sidecar["Detected"]["Timing"]["Source"], "similar volumes");
  expectCounts(filled.sidecar["Detected"]["Scans"][0], filled.timings[0]);
  EXPECT_THAT(filled.run.err, HasSubstr("by the similarity of volumes"));
  EXPECT_LT(filled.leftDb(5, 40), -25);
}

TEST(ScanTiming, VolumeMarkersAreFollowed) {
  ScannedFile file(Preset::Fill);
  file.addVolumeMarkers("R128");
  ASSERT_EQ(file.correct({"--volume-markers", "R128"}), 0) << file.run.err;
  EXPECT_EQ(file.sidecar["Detected"]["Timing"]["Source"], "volume markers");
  EXPECT_EQ(file.sidecar["Parameters"]["VolumeMarkers"], "R128");
  expectCounts(file.sidecar["Detected"]["Scans"][0], file.timings[0]);
  EXPECT_LT(file.leftDb(5, 40), -25);
}

TEST(ScanTiming, MarkersThatComeInPairsStandForOneVolume) {
  ScannedFile file(Preset::Fill);
  file.addVolumeMarkers("R128");
  for (int64_t v = 0; v < file.timings[0].nrOfVolumes; ++v)
    file.recording.addMarker("Response", "R128", std::floor(file.timings[0].volumeOnset(v) * fs) + 5);
  ASSERT_EQ(file.correct({"--volume-markers", "R128"}), 0) << file.run.err;
  expectCounts(file.sidecar["Detected"]["Scans"][0], file.timings[0]);
}

TEST(ScanTiming, MarkersCountFromTheIntervalThatIsCorrected) {
  ScannedFile file(Preset::Fill);
  file.addVolumeMarkers("R128");
  ASSERT_EQ(file.correct({"--volume-markers", "R128", "--interval", "1.5:47"}), 0) << file.run.err;
  expectCounts(file.sidecar["Detected"]["Scans"][0], file.timings[0]);
  EXPECT_NEAR(file.sidecar["Detected"]["Scans"][0]["FirstVolumeOnset"].get<double>(),
              file.timings[0].firstVolumeOnset - 1.5, 0.02);
}

TEST(ScanTiming, SliceMarkersAreFollowed) {
  ScannedFile file(Preset::Fill);
  const ScanTiming& timing = file.timings[0];
  for (int64_t v = 0; v < timing.nrOfVolumes; ++v)
    for (int s = 0; s < timing.nrOfSlicesPerVolume; ++s)
      file.recording.addMarker("Scanner", "slice", std::floor(timing.sliceOnset(v, s) * fs));
  ASSERT_EQ(file.correct({"--slice-markers", "Scanner/slice"}), 0) << file.run.err;
  EXPECT_EQ(file.sidecar["Detected"]["Timing"]["Source"], "slice markers");
  expectCounts(file.sidecar["Detected"]["Scans"][0], timing);
}

TEST(ScanTiming, AGivenTrIsRefined) {
  ScannedFile file(Preset::Fill);
  const ScanTiming& timing = file.timings[0];
  ASSERT_EQ(file.correct({"--tr", std::to_string(std::round(timing.volumeDuration * 1000) / 1000), "--slices",
                          std::to_string(timing.nrOfSlicesPerVolume), "--first",
                          std::to_string(timing.firstVolumeOnset)}),
            0)
      << file.run.err;
  EXPECT_EQ(file.sidecar["Detected"]["Timing"]["Source"], "given timing");
  expectCounts(file.sidecar["Detected"]["Scans"][0], timing);
}

TEST(ScanTiming, WrongOptionsAreRefusedBeforeAnythingIsWritten) {
  ScannedFile file(Preset::Gap, {}, 20);
  file.addVolumeMarkers("R128");
  EXPECT_EQ(file.correct({"--volume-markers", "R129"}), 2);
  EXPECT_THAT(file.run.err, HasSubstr("R128"));
  EXPECT_EQ(file.correct({"--volume-markers", "R128", "--slice-markers", "R128"}), 2);
  EXPECT_EQ(file.correct({"--volume-markers", "R128", "--tr", "2"}), 2);
  EXPECT_EQ(file.correct({"--first", "2"}), 2);
  EXPECT_EQ(file.correct({"--tr", "0"}), 2);
  for (const char* option : {"--tr", "--first"})
    for (const char* number : {"nan", "inf", "2,5", ""}) {
      std::vector<std::string> options = {option, number};
      if (options[0] == "--first") options.insert(options.end(), {"--tr", "1.8"});
      EXPECT_EQ(file.correct(options), 2) << option << " " << number;
    }
  for (const char* first : {"1e12", "20.5", "-21"})
    EXPECT_EQ(file.correct({"--tr", "1.8", "--first", first}), 2) << first;
  EXPECT_THAT(file.run.err, HasSubstr("give the onset of a volume"));
  for (const char* option : {"--volume-markers", "--slice-markers"})
    EXPECT_EQ(file.correct({option, ""}), 2) << option;
  EXPECT_EQ(file.correct({"--tr", "15"}), 2);
  EXPECT_THAT(file.run.err, HasSubstr("three volumes"));
  EXPECT_EQ(file.correct({"--volume-markers", "R128", "--interval", "0:5"}), 2);
  EXPECT_THAT(file.run.err, HasSubstr("3 are needed"));
  EXPECT_FALSE(file.wroteAnything());
}

TEST(ScanTiming, ATimingThatTheEegContradictsEndsTheRun) {
  ScannedFile file(Preset::Gap, {}, 30);
  file.addVolumeMarkers("R128");
  file.recording.samples = file.clean;
  EXPECT_EQ(file.correct({"--volume-markers", "R128"}), 1);
  EXPECT_THAT(file.run.err, HasSubstr("repeats with the timing that was given"));
  EXPECT_EQ(file.correct(), 1);
  EXPECT_THAT(file.run.err, HasSubstr("no scanner sequence was found"));
  EXPECT_FALSE(file.wroteAnything());
}

TEST(ScanTiming, SeveralScansAreCorrectedAndWhatLiesBetweenStaysAsItIs) {
  ScannedFile file(Preset::Continuous, [](auto& p) {
    p.seconds = 75;
    p.gradient->nrOfScans = 3;
    p.gradient->nrOfVolumes = 9;
    p.gradient->pauseDuration = 6;
  });
  ASSERT_EQ(file.correct({"--slice-wise"}), 0) << file.run.err;
  const json& scans = file.sidecar["Detected"]["Scans"];
  ASSERT_EQ(scans.size(), 3u);
  int markers = 0;
  for (size_t i = 0; i < 3; ++i) {
    expectCounts(scans[i], file.timings[i]);
    EXPECT_LT(file.leftDb(file.timings[i].firstVolumeOnset, file.timings[i].end()), -25);
    markers += static_cast<int>(file.timings[i].nrOfVolumes);
  }
  EXPECT_EQ(static_cast<int>(file.corrected->header().markers.size()), markers);
  const auto from = static_cast<size_t>((file.timings[0].end() + 0.02) * fs);
  const auto to = static_cast<size_t>((file.timings[1].firstVolumeOnset - 0.02) * fs);
  for (size_t t = from; t < to; ++t)
    ASSERT_NEAR(file.corrected->samples[1][t], file.recording.samples[1][t], 1e-3) << t;
}

TEST(ScanTiming, AScanThatTheRecordingCutsIsCorrectedToTheEdges) {
  ScannedFile file(Preset::Continuous, [](auto& p) {
    p.gradient->cutBefore = 0.9;
    p.gradient->endsInScan = true;
  });
  ASSERT_EQ(file.correct(), 0) << file.run.err;
  EXPECT_EQ(file.sidecar["Detected"]["Scans"][0]["BeginsWithinVolume"], true);
  EXPECT_EQ(file.sidecar["Detected"]["Scans"][0]["EndsWithinVolume"], true);
  EXPECT_LT(file.leftDb(0, 0.5), -20);
  EXPECT_LT(file.leftDb(49.5, 50), -20);
}

TEST(ScanTiming, AlikeSlicesAreSaidToLeaveTheCountsOpen) {
  ScannedFile file(Preset::Equidistant, [](auto& p) { p.gradient->firstSliceDifference = 0; });
  ASSERT_EQ(file.correct({"--slice-wise"}), 0) << file.run.err;
  EXPECT_EQ(file.sidecar["Detected"]["Scans"][0]["CountsIdentifiable"], false);
  EXPECT_THAT(file.run.err, HasSubstr("all slices are alike"));
  EXPECT_LT(file.leftDb(5, 40), -25);
}

TEST(ScanTiming, SlicesThatDifferAreAveragedAsVolumesAndTheRunSaysSo) {
  ScannedFile file(Preset::Continuous);
  const ScanTiming& timing = file.timings[0];
  for (size_t t = 0; t < file.recording.samples[0].size(); ++t) {
    const double volume = (static_cast<double>(t) / fs - timing.firstVolumeOnset) / timing.volumeDuration;
    if (volume < 0 || volume >= static_cast<double>(timing.nrOfVolumes)) continue;
    const double slice =
        std::floor((volume - std::floor(volume)) * timing.volumeDuration / timing.sliceDuration);
    const double gain = 1 + 0.5 * std::sin(3.7 * slice);
    for (size_t c = 0; c < 3; ++c)
      file.recording.samples[c][t] =
          file.clean[c][t] + gain * (file.recording.samples[c][t] - file.clean[c][t]);
  }
  EXPECT_EQ(file.correct({"--slice-wise"}), 3) << file.run.err;
  EXPECT_THAT(file.run.err, HasSubstr("Volumes were averaged"));
  EXPECT_EQ(file.sidecar["Detected"]["Timing"]["Averaging"], "volume-wise");
  EXPECT_LT(file.leftDb(5, 40), -25);
}

TEST(ScanTiming, HeartBeatsAloneAreNoScan) {
  ScannedFile file(Preset::Bcg);
  EXPECT_EQ(file.correct({"--bcg"}), 1);
  EXPECT_EQ(file.correct({"--bcg", "--allow-uncorrected"}), 3) << file.run.err;
  EXPECT_TRUE(file.sidecar["Detected"]["Scans"].empty());
  EXPECT_THAT(file.run.err, Not(HasSubstr("larger than before")));
}

} // namespace emeg
