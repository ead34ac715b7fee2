#include "app/simulation/ScannerTriggers.h"

#include "files/exchange/RecordingReader.h"
#include "tests/app/SimulatedFiles.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace emeg {

namespace {

using Per = ScannerTriggerParameters::Per;
using testing::HasSubstr;

SimulationParameters scanWith(Per per) {
  SimulationParameters parameters = presetParameters(Preset::Gap, 1000);
  parameters.seconds = 40;
  parameters.nrOfChannels = 1;
  parameters.triggers.per = per;
  return parameters;
}

std::vector<RecordingMarker> markersIn(const std::string& path, const std::string& name) {
  std::vector<RecordingMarker> found;
  const auto reader = openRecording(path);
  for (const RecordingMarker& marker : reader->header().markers)
    if (marker.description == name) found.push_back(marker);
  return found;
}

/// Onsets of all volumes or slices within the recording, from the truth alone.
std::vector<double> onsetsInTruth(const nlohmann::json& truth, bool perSlice) {
  const nlohmann::json& gradient = truth.at("gradient");
  const int slices = perSlice ? gradient.at("nrOfSlicesPerVolume").get<int>() : 1;
  std::vector<double> onsets;
  for (const nlohmann::json& scan : gradient.at("scans")) {
    for (int v = 0; v < scan.at("nrOfVolumes").get<int>(); v++) {
      for (int s = 0; s < slices; s++) {
        const double regular =
            scan.at("firstVolumeOnset").get<double>() + v * gradient.at("volumeDuration").get<double>();
        const double onset = scan.contains("volumeOnsets")
                                 ? scan.at("volumeOnsets").at(static_cast<size_t>(v)).get<double>()
                                 : regular;
        onsets.push_back(onset + s * gradient.at("sliceDuration").get<double>());
      }
    }
  }
  const double seconds = truth.at("seconds");
  onsets.erase(std::remove_if(onsets.begin(), onsets.end(),
                              [&](double onset) { return onset < -0.001 || onset >= seconds; }),
               onsets.end());
  return onsets;
}

} // namespace

TEST(ScannerTriggers, ComeWithTheFirstSampleAtOrBehindEveryOnset) {
  for (const Per per : {Per::Volume, Per::Slice}) {
    const SimulationParameters parameters = scanWith(per);
    const GradientArtifact artifact(parameters);
    const std::vector<int64_t> triggers = scannerTriggers(parameters, artifact);
    const ScanTiming& timing = artifact.timing();
    const int perVolume = per == Per::Slice ? timing.nrOfSlicesPerVolume : 1;
    ASSERT_EQ(static_cast<int64_t>(triggers.size()), timing.nrOfVolumes * perVolume);
    for (size_t i = 0; i < triggers.size(); i++) {
      const auto volume = static_cast<int64_t>(i) / perVolume;
      const double onset = timing.sliceOnset(volume, static_cast<int>(i) % perVolume) * 1000;
      EXPECT_GE(static_cast<double>(triggers[i]), onset - 1e-6);
      EXPECT_LT(static_cast<double>(triggers[i]), onset + 1);
    }
  }
  const SimulationParameters none = scanWith(Per::None);
  EXPECT_TRUE(scannerTriggers(none, GradientArtifact(none)).empty());
}

TEST(ScannerTriggers, LieWithinTheRecording) {
  SimulationParameters parameters = scanWith(Per::Slice);
  parameters.gradient->cutBefore = 1;
  parameters.gradient->endsInScan = true;
  const std::vector<int64_t> triggers = scannerTriggers(parameters, GradientArtifact(parameters));
  ASSERT_FALSE(triggers.empty());
  EXPECT_TRUE(std::is_sorted(triggers.begin(), triggers.end()));
  EXPECT_GE(triggers.front(), 0);
  EXPECT_LT(triggers.front(), 76);
  EXPECT_LT(triggers.back(), 40000);
  EXPECT_GT(triggers.back(), 40000 - 377);
}

TEST(ScannerTriggers, AreMarkersInEveryFormatAndTheTruthStaysExact) {
  for (const char* name : {"r.vhdr", "r.edf", "r.bdf", "r.ctc"}) {
    for (const bool perSlice : {false, true}) {
      const TestFolder folder;
      const ProgramRun run = runEmeg({"simulate", "continuous", folder / name, "--fs", "1000", "--channels",
                                      "1", "--volumes", "3", "--scans", "2", "--jitter-us", "300",
                                      "--markers", perSlice ? "slice" : "volume", "--marker-name", "V1"});
      ASSERT_EQ(run.status, 0) << run.err;
      const nlohmann::json truth = readTruth(folder / "r_truth.json");
      const std::vector<double> onsets = onsetsInTruth(truth, perSlice);
      const std::vector<RecordingMarker> markers = markersIn(folder / name, "V1");
      ASSERT_EQ(markers.size(), perSlice ? 150u : 6u);
      ASSERT_EQ(onsets.size(), markers.size());
      EXPECT_EQ(truth.at("scannerMarkers").at("name"), "V1");
      EXPECT_EQ(truth.at("scannerMarkers").at("per"), perSlice ? "slice" : "volume");
      EXPECT_EQ(truth.at("scannerMarkers").at("nrOfMarkers"), markers.size());
      bool isOffRaster = false;
      for (size_t i = 0; i < markers.size(); i++) {
        EXPECT_NEAR(markers[i].onset, std::ceil(onsets[i] * 1000), 1e-3) << name;
        isOffRaster = isOffRaster || std::fabs(onsets[i] * 1000 - std::round(onsets[i] * 1000)) > 0.1;
      }
      EXPECT_TRUE(isOffRaster);
    }
  }
}

TEST(ScannerTriggers, AreGuessedFromTheRecordingThatHasThem) {
  const TestFolder folder;
  for (const auto& [per, option] :
       {std::pair{"volume", "--volume-markers R128"}, {"slice", "--slice-markers R128"}}) {
    ASSERT_EQ(runEmeg({"simulate", "gap", folder / "r.vhdr", "--fs", "1000", "--channels", "1", "--seconds",
                       "40", "--markers", per, "--force"})
                  .status,
              0);
    const ProgramRun text = runEmeg({"info", folder / "r.vhdr"});
    EXPECT_THAT(text.out, HasSubstr("Probably the scanner's, one per " + std::string(per)));
    EXPECT_THAT(text.out, HasSubstr(option));
    const nlohmann::json json = nlohmann::json::parse(runEmeg({"info", folder / "r.vhdr", "--json"}).out);
    ASSERT_EQ(json.at("scannerMarkers").size(), 1u);
    EXPECT_EQ(json.at("scannerMarkers")[0].at("per"), per);
    EXPECT_EQ(json.at("scannerMarkers")[0].at("missing"), 0);
  }
  ASSERT_EQ(
      runEmeg({"simulate", "gap", folder / "n.vhdr", "--fs", "1000", "--channels", "1", "--seconds", "40"})
          .status,
      0);
  EXPECT_THAT(runEmeg({"info", folder / "n.vhdr"}).out, testing::Not(HasSubstr("Probably")));
}

} // namespace emeg
