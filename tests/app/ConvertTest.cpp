#include "tests/app/SimulatedFiles.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A folder with a simulated recording of 14 s, three channels and the markers Rest and Task.
class Recorded : public testing::Test {
protected:
  Recorded() {
    runEmeg({"simulate", "gap", path("r.ctc"), "--fs", "2000", "--volumes", "3", "--channels", "3",
             "--no-truth"});
  }
  std::string path(const std::string& name) const { return folder_ / name; }
  TestFolder folder_;
};
using Convert = Recorded;
using Info = Recorded;

TEST_F(Convert, GoesThroughEveryFormatAndBackWithSamplesAndMarkers) {
  const ReadRecording original = readRecording(path("r.ctc"));
  for (const char* name : {"a.vhdr", "a.bdf", "a.edf"}) {
    const ProgramRun there = runEmeg({"convert", path("r.ctc"), path(name)});
    ASSERT_EQ(there.status, 0) << there.err;
    if (std::string(name) == "a.vhdr") {
      EXPECT_THAT(there.err, HasSubstr("5 markers were moved to the nearest sample"));
    } else {
      EXPECT_EQ(there.err, "") << name;
    }
    EXPECT_THAT(there.out, HasSubstr("3 channels, 14.000 s at 2000 Hz, 6 markers"));
    const ProgramRun back = runEmeg({"convert", path(name), path("back.ctc"), "--force"});
    ASSERT_EQ(back.status, 0) << back.err;
    const ReadRecording read = readRecording(path("back.ctc"));
    ASSERT_EQ(read.samples.size(), original.samples.size()) << name;
    const double step = std::string(name) == "a.edf" ? 0.2 : 0.001;
    for (size_t i = 0; i < read.samples.size(); i += 11)
      ASSERT_NEAR(read.samples[i], original.samples[i], step);
    const auto markers = nlohmann::json::parse(runEmeg({"info", path("back.ctc"), "--json"}).out)["markers"];
    ASSERT_EQ(markers.size(), 2u);
    EXPECT_EQ(markers[0]["description"], "Rest");
    EXPECT_EQ(markers[1]["count"], 3);
    EXPECT_NEAR(markers[1]["firstSeconds"], 2.333333, std::string(name) == "a.vhdr" ? 0.5 / 2000 : 0.51e-4);
  }
}

TEST_F(Convert, ExistingFilesStayWithoutForce) {
  std::ofstream(path("a.eeg")) << "mine";
  const ProgramRun refused = runEmeg({"convert", path("r.ctc"), path("a.vhdr")});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, AllOf(HasSubstr("a.eeg"), HasSubstr("--force")));
  EXPECT_EQ(bytesOf(path("a.eeg")), "mine");
  EXPECT_EQ(runEmeg({"convert", path("r.ctc"), path("a.vhdr"), "--force"}).status, 0);
  EXPECT_NE(bytesOf(path("a.eeg")), "mine");
}

TEST_F(Convert, ChannelsAreChosenByName) {
  EXPECT_EQ(runEmeg({"convert", "--channels", "Fp2", path("r.ctc"), path("a.vhdr")}).status, 0);
  const ProgramRun two = runEmeg({"convert", path("r.ctc"), path("two.vhdr"), "--channels", "F3,Fp1"});
  EXPECT_EQ(two.status, 0) << two.err;
  EXPECT_THAT(two.out, HasSubstr("2 channels"));
  EXPECT_EQ(bytesOf(path("a.eeg")).size(), 28000 * sizeof(float));
  const ProgramRun unknown = runEmeg({"convert", path("r.ctc"), path("b.vhdr"), "--channels", "Nose"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_THAT(unknown.err, HasSubstr("no channel \"Nose\""));
}

TEST_F(Convert, UnreadableInputsAndUnknownFormatsAreTold) {
  const std::vector<std::string> before = folder_.names();
  EXPECT_EQ(runEmeg({"convert", path("missing.vhdr"), path("a.edf")}).status, 2);
  EXPECT_EQ(runEmeg({"convert", path("r.ctc")}).status, 2);
  EXPECT_EQ(runEmeg({"convert", path("r.ctc"), path("a.set")}).status, 2);
  const ProgramRun unknown = runEmeg({"convert", path("r.ctc"), path("a.wav")});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_THAT(unknown.err, HasSubstr("choose one of these extensions"));
  const ProgramRun nowhere = runEmeg({"convert", path("r.ctc"), path("missing/a.vhdr")});
  EXPECT_EQ(nowhere.status, 2);
  EXPECT_THAT(nowhere.err, HasSubstr("Make the folder first"));
  EXPECT_EQ(folder_.names(), before);
}

TEST_F(Convert, QuietSaysNothing) {
  const ProgramRun run = runEmeg({"convert", path("r.ctc"), path("a.bdf"), "--quiet"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
}

TEST_F(Info, ListsFormatLengthChannelsAndMarkers) {
  const ProgramRun run = runEmeg({"info", path("r.ctc")});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, AllOf(HasSubstr("CTC, 32-bit floats, multiplexed"),
                             HasSubstr("0:00:14.000 (28000 time points)"), HasSubstr("2000 Hz"),
                             HasSubstr("3: 3 EEG"), HasSubstr("r.ccd"), HasSubstr("Fp2")));
  EXPECT_THAT(run.out, HasSubstr("Rest    3      0.0000"));
}

TEST_F(Info, SaysTheSameAsJson) {
  const ProgramRun run = runEmeg({"info", path("r.ctc"), "--json"});
  EXPECT_EQ(run.status, 0);
  const nlohmann::json json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["samplingFrequencyHz"], 2000);
  EXPECT_EQ(json["nrOfTimePoints"], 28000);
  EXPECT_EQ(json["channels"][1]["name"], "Fp2");
  EXPECT_EQ(json["channels"][1]["kind"], "EEG");
  EXPECT_EQ(json["markers"][1]["description"], "Task");
  EXPECT_EQ(json["markers"][1]["count"], 3);
  EXPECT_NEAR(json["markers"][0]["lastSeconds"], 9.333, 0.01);
  EXPECT_TRUE(json["start"].is_null());
}

TEST_F(Info, RefusesWhatIsNoRecording) {
  EXPECT_EQ(runEmeg({"info"}).status, 2);
  const ProgramRun part = runEmeg({"info", path("r.prt")});
  EXPECT_EQ(part.status, 2);
  EXPECT_THAT(part.err, HasSubstr("give the .ctc file"));
  EXPECT_EQ(part.out, "");
}

} // namespace
} // namespace emeg
