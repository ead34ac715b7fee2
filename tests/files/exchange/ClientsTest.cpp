// Programs of others read what is written here, and the other way round. Where such a program is not
// installed its tests are skipped.

#include "tests/files/ScratchFolder.h"
#include "tests/files/exchange/SampleRecordings.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {
namespace {

/// Runs a command of the shell; its standard output goes to a file.
bool run(const std::string& command, const std::string& output) {
  return std::system((command + " >" + output + " 2>/dev/null").c_str()) == 0;
}

const std::string python = "/usr/bin/python3";

SampleRecording recordingWithMarkers() {
  SampleRecording recording = makeRecording({"Fp1", "Cz", "ECG"}, 10007, 2000);
  recording.header.channels[2].unit = "mV";
  recording.header.channels[2].microvoltsPerUnit = 1000;
  recording.header.start = StartTime{2023, 12, 31, 23, 59, 58, 500000};
  for (int i = 0; i < 50; ++i)
    recording.header.markers.push_back(markerAt(i * 200 + i % 7, std::to_string(i % 3) + " S"));
  recording.header.markers[1].description = "\xC3\xA4, \xE2\x9C\x93 slice";
  recording.header.markers[2].duration = 400;
  return recording;
}

class ReadByMne : public testing::TestWithParam<const char*> {
protected:
  void SetUp() override {
    if (!run(python + " -c 'import mne'", "/dev/null")) GTEST_SKIP() << "python3-mne is not installed";
  }
};
INSTANTIATE_TEST_SUITE_P(Clients, ReadByMne, testing::Values("r.vhdr", "r.edf", "r.bdf"));

TEST_P(ReadByMne, EveryFormatHasItsRateNamesUnitsSamplesAndAnnotations) {
  const ScratchFolder folder;
  const std::string name = GetParam();
  const SampleRecording written = recordingWithMarkers();
  writeRecordingTo(folder.path(name), written, withRanges(written));
  ASSERT_TRUE(run(python + " " + EMEG_CLIENTS + "/read_with_mne.py " + folder.path(name) + " " +
                      folder.path("samples"),
                  folder.path("found.json")));

  const nlohmann::json found = nlohmann::json::parse(folder.read("found.json"));
  EXPECT_EQ(found["samplingFrequency"], 2000);
  EXPECT_EQ(found["nrOfTimePoints"], 10007);
  EXPECT_EQ(found["channels"], (std::vector<std::string>{"Fp1", "Cz", "ECG"}));
  EXPECT_EQ(found["units"][0], "\xC2\xB5V");
  EXPECT_EQ(found["units"][2], "mV");
  EXPECT_THAT(found["start"].get<std::string>(), testing::StartsWith("2023-12-31 23:59:58"));

  const std::string bytes = folder.read("samples");
  std::vector<double> samples(bytes.size() / sizeof(double));
  ASSERT_EQ(samples.size(), written.values.size());
  std::memcpy(samples.data(), bytes.data(), bytes.size());
  const double step = name == "r.edf" ? 0.011 : 1e-4;
  for (size_t i = 0; i < samples.size(); ++i) ASSERT_NEAR(samples[i], written.values[i], step) << i;

  const bool isBrainVision = name == "r.vhdr";
  std::vector<nlohmann::json> markers;
  for (const nlohmann::json& marker : found["markers"])
    if (marker["description"] != "New Segment/") markers.push_back(marker);
  ASSERT_EQ(markers.size(), written.header.markers.size());
  for (size_t i = 0; i < markers.size(); ++i) {
    const RecordingMarker& expected = written.header.markers[i];
    EXPECT_THAT(markers[i]["description"].get<std::string>(), testing::EndsWith(expected.description));
    EXPECT_NEAR(markers[i]["onset"].get<double>(), expected.onset / 2000, isBrainVision ? 1e-9 : 1e-4);
  }
  EXPECT_NEAR(markers[2]["duration"].get<double>(), 0.2, 1e-4);
}

class Biosig : public testing::TestWithParam<const char*> {
protected:
  void SetUp() override {
    if (!run("command -v save2gdf", "/dev/null")) GTEST_SKIP() << "biosig-tools is not installed";
  }
};
INSTANTIATE_TEST_SUITE_P(Clients, Biosig, testing::Values("edf", "bdf"));

TEST_P(Biosig, ReadsWhatIsWrittenHere) {
  const ScratchFolder folder;
  const std::string path = folder.path(std::string("r.") + GetParam());
  const SampleRecording written = recordingWithMarkers();
  writeRecordingTo(path, written, withRanges(written));
  ASSERT_TRUE(run("save2gdf -JSON " + path, folder.path("found.json")));
  const std::string found = folder.read("found.json");
  const nlohmann::json header = nlohmann::json::parse(found.substr(found.find('{')), nullptr, false);
  ASSERT_FALSE(header.is_discarded());
  EXPECT_EQ(header["Samplingrate"], 2000);
  EXPECT_EQ(header["NumberOfSamples"], 10007);
  EXPECT_EQ(header["CHANNEL"][0]["Label"], "Fp1");
  EXPECT_EQ(header["CHANNEL"][0]["PhysicalUnit"], "uV");
  EXPECT_EQ(header["CHANNEL"][2]["PhysicalUnit"], "mV");
}

TEST_P(Biosig, WritesWhatIsReadHere) {
  const ScratchFolder folder;
  const std::string format = GetParam();
  const SampleRecording written = recordingWithMarkers();
  writeRecordingTo(folder.path("r." + format), written, withRanges(written));
  ASSERT_TRUE(run("save2gdf -f=" + std::string(format == "edf" ? "EDF " : "BDF ") +
                      folder.path("r." + format) + " " + folder.path("biosig." + format),
                  "/dev/null"));
  const SampleRecording read = readRecordingFrom(folder.path("biosig." + format));
  EXPECT_EQ(read.header.samplingFrequency, 2000);
  ASSERT_EQ(read.header.nrOfTimePoints, 10007);
  EXPECT_EQ(read.header.channels[1].name, "Cz");
  // biosig writes the ends of the range with as many digits as fit, cut off.
  for (int c = 0; c < 2; ++c)
    for (int64_t t = 0; t < 10007; t += 3) ASSERT_NEAR(read.at(c, t), written.at(c, t), 0.02);
}

} // namespace
} // namespace emeg
