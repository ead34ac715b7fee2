#include "app/correct/KnownBeats.h"

#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// A scan of a minute in which every tenth beat comes early, and its electrocardiogram.
class KnownBeatsRun : public testing::Test {
protected:
  static void SetUpTestSuite() {
    folder_ = std::make_unique<TestFolder>();
    const ProgramRun run =
        runEmeg({"simulate", "both", *folder_ / "r.vhdr", "--fs", "1000", "--seconds", "60", "--channels",
                 "4", "--ecg", "--ectopic", "10", "--alpha-uv", "0", "--seed", "3"});
    ASSERT_EQ(run.status, 0) << run.err;
    recording_ = std::make_unique<MemoryRecording>(*folder_ / "r.vhdr");
    recording_->editableHeader().files.clear();
  }
  static void TearDownTestSuite() {
    recording_.reset();
    folder_.reset();
  }

  static std::string path(const std::string& name) { return *folder_ / name; }

  static ProgramRun correct(const std::string& input, std::vector<std::string> options) {
    options.insert(options.begin(), {"correct", path(input), "--slice-wise", "--bcg", "--quiet", "--force",
                                     "-o", path("out.vhdr")});
    return runEmeg(options);
  }

  static json evaluation() {
    return json::parse(
        runEmeg({"evaluate", path("out.vhdr"), "--truth", path("r_truth.json"), "--json", "-"}).out);
  }

  static json sidecar() { return json::parse(bytesOf(path("out.json"))); }

  /// The recording with its markers R but for those that `isLeftOut`.
  template <typename Condition>
  static void saveWithout(const std::string& name, const Condition& isLeftOut) {
    const auto copy = copyOf(*recording_);
    std::erase_if(copy->editableHeader().markers, [&](const RecordingMarker& marker) {
      return marker.description == "R" && isLeftOut(marker.onset / 1000);
    });
    copy->save(path(name));
  }

  static std::unique_ptr<TestFolder> folder_;
  static std::unique_ptr<MemoryRecording> recording_;
};

std::unique_ptr<TestFolder> KnownBeatsRun::folder_;
std::unique_ptr<MemoryRecording> KnownBeatsRun::recording_;

} // namespace

TEST_F(KnownBeatsRun, TheRPeaksOfTheEcgAreTheBeats) {
  ASSERT_EQ(correct("r.vhdr", {}).status & ~3, 0);
  const double blind = evaluation()["heart"]["explained"];
  const ProgramRun run = correct("r.vhdr", {"--ecg", "ECG"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("R peaks of ECG"));
  const json heart = evaluation()["heart"];
  EXPECT_EQ(heart["beats"]["sensitivity"], 1);
  EXPECT_EQ(heart["beats"]["positivePredictivity"], 1);
  EXPECT_NEAR(heart["beats"]["delay"].get<double>(), 0, 0.005);
  EXPECT_GT(heart["explained"].get<double>(), blind);
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["Source"], "ecg");
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["Channel"], "ECG");
  for (int c = 0; c < 4; ++c)
    EXPECT_NEAR(sidecar()["Channels"][c]["HeartBeatArtifact"]["Delay"].get<double>(), 0.37, 0.1);
  EXPECT_EQ(sidecar()["Channels"][4]["Treatment"], "gradient artifact removed");
}

TEST_F(KnownBeatsRun, TheRecordingsMarkersAreTheBeats) {
  const ProgramRun run = correct("r.vhdr", {"--pulse-markers", "R"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("from the markers R"));
  const json heart = evaluation()["heart"];
  EXPECT_EQ(heart["beats"]["sensitivity"], 1);
  EXPECT_EQ(heart["beats"]["positivePredictivity"], 1);
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["Source"], "markers");
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["Markers"], "R");
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["Guessed"], 0);
}

TEST_F(KnownBeatsRun, BlindStaysWhatHappensAnyway) {
  ASSERT_EQ(correct("r.vhdr", {}).status & ~3, 0);
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["Source"], "blind");
  EXPECT_FALSE(sidecar()["Channels"][0]["HeartBeatArtifact"].contains("Delay"));
}

TEST_F(KnownBeatsRun, OutputFilterAndDecimationComeBehindTheSearchForRPeaks) {
  ASSERT_EQ(correct("r.vhdr", {"--ecg", "ECG"}).status, 0);
  const auto beats = sidecar()["Detected"]["HeartBeats"]["NumberOfBeats"].get<int>();
  const ProgramRun run = correct("r.vhdr", {"--ecg", "ECG", "--decimate", "10"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["NumberOfBeats"], beats);
  EXPECT_EQ(MemoryRecording(path("out.vhdr")).header().samplingFrequency, 100);
  ASSERT_EQ(correct("r.vhdr", {"--ecg", "ECG", "--low-pass", "20"}).status, 0);
  EXPECT_EQ(sidecar()["Detected"]["HeartBeats"]["NumberOfBeats"], beats);
}

TEST_F(KnownBeatsRun, TheEcgItselfIsTheSameWhateverTheBeatsAreTakenFrom) {
  ASSERT_EQ(correct("r.vhdr", {"--ecg", "ECG"}).status, 0);
  const std::vector<double> asBeats = MemoryRecording(path("out.vhdr")).samples[4];
  ASSERT_EQ(correct("r.vhdr", {"--pulse-markers", "R"}).status, 0);
  EXPECT_EQ(MemoryRecording(path("out.vhdr")).samples[4], asBeats);
}

TEST_F(KnownBeatsRun, AnEegChannelCanBeTheEcg) {
  const auto copy = copyOf(*recording_);
  copy->editableHeader().channels[4].name = "Ch32";
  copy->editableHeader().channels[4].kind = ChannelKind::Eeg;
  copy->save(path("named.vhdr"));
  const ProgramRun run = correct("named.vhdr", {"--ecg", "Ch32", "--treat-as-eeg", "all"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(sidecar()["Channels"][4]["Treatment"], "gradient artifact removed");
  EXPECT_EQ(evaluation()["heart"]["beats"]["sensitivity"], 1);
}

TEST_F(KnownBeatsRun, MarkersCountFromTheIntervalsStart) {
  const ProgramRun run = correct("r.vhdr", {"--pulse-markers", "R", "--interval", "2:58"});
  ASSERT_EQ(run.status & ~3, 0) << run.err;
  const MemoryRecording out(path("out.vhdr"));
  std::vector<double> known;
  std::vector<double> used;
  for (const RecordingMarker& marker : out.header().markers) {
    if (marker.description == "R") known.push_back(marker.onset);
    if (marker.description == "HeartPulseTriggers") used.push_back(marker.onset);
  }
  ASSERT_EQ(used.size(), known.size());
  for (size_t i = 0; i < used.size(); ++i) EXPECT_NEAR(used[i], known[i], 3);
}

TEST_F(KnownBeatsRun, ALongGapIsFilledAnnotatedAndWarnedOf) {
  saveWithout("gap.vhdr", [](double seconds) { return seconds > 20 && seconds < 29; });
  const ProgramRun run = correct("gap.vhdr", {"--pulse-markers", "R"});
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("no heart beats in the markers \"R\" from "));
  EXPECT_THAT(run.err, HasSubstr("BAD_guessed_pulses"));
  const json stretch = sidecar()["Detected"]["HeartBeats"]["StretchesWithGuessedBeats"][0];
  EXPECT_NEAR(stretch[0].get<double>(), 20, 1.5);
  EXPECT_NEAR(stretch[1].get<double>(), 29, 1.5);
  EXPECT_NEAR(sidecar()["Detected"]["HeartBeats"]["Guessed"].get<int>(), 9, 2);
  EXPECT_THAT(bytesOf(path("out.vmrk")), HasSubstr("Bad,BAD_guessed_pulses"));
}

TEST_F(KnownBeatsRun, OptionsThatContradictEachOtherOrTheRecording) {
  EXPECT_EQ(runEmeg({"correct", path("r.vhdr"), "--ecg", "ECG"}).status, 2) << "without --bcg";
  EXPECT_EQ(correct("r.vhdr", {"--ecg", "ECG", "--pulse-markers", "R"}).status, 2);
  const auto problemOf = [](const std::vector<std::string>& options) {
    const ProgramRun run = correct("r.vhdr", options);
    EXPECT_EQ(run.status, 2);
    return run.err;
  };
  EXPECT_THAT(problemOf({"--ecg", "EKG"}), HasSubstr("there is no channel \"EKG\""));
  EXPECT_THAT(problemOf({"--ecg", "ECG", "--channels", "Fp1,Fp2"}), HasSubstr("among those of --channels"));
  EXPECT_THAT(problemOf({"--ecg", "ECG", "--treat-as-eeg", "ECG"}),
              HasSubstr("name the same channel \"ECG\""));
  EXPECT_THAT(problemOf({"--pulse-markers", "Q"}), HasSubstr("\"R\"")) << "lists the names that are there";
  EXPECT_THAT(problemOf({"--pulse-markers", "Task"}), HasSubstr("these are no heart beats"));
  EXPECT_THAT(problemOf({"--pulse-markers", "R", "--interval", "3:4.5"}), HasSubstr("it takes 3 heart"));
}

TEST_F(KnownBeatsRun, EmptyNamesAreRefused) {
  for (const char* option : {"--pulse-markers", "--ecg"})
    EXPECT_EQ(correct("r.vhdr", {option, ""}).status, 2) << option;
}

TEST_F(KnownBeatsRun, MarkersThatAllStandAtOnePlaceAreRefused) {
  const auto copy = copyOf(*recording_);
  for (int i = 0; i < 20; ++i) copy->addMarker("Comment", "beat", 5000);
  copy->save(path("one_place.vhdr"));
  const ProgramRun run = correct("one_place.vhdr", {"--pulse-markers", "beat"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("\"beat\" stand at 1 places"));
}

TEST_F(KnownBeatsRun, AnEcgWithoutAHeartEndsTheRun) {
  const auto copy = copyOf(*recording_);
  std::fill(copy->samples[4].begin(), copy->samples[4].end(), 0.0);
  copy->save(path("flat.vhdr"));
  const ProgramRun run = runEmeg(
      {"correct", path("flat.vhdr"), "--bcg", "--ecg", "ECG", "--slice-wise", "-o", path("flat_out.vhdr")});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("0 heart beats were found in channel \"ECG\""));
  EXPECT_THAT(folder_->names(), Not(testing::Contains("flat_out.vhdr")));
}

} // namespace emeg
