#include "app/correct/BidsDataset.h"
#include "app/correct/TabSeparated.h"
#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace emeg {

namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

/// A dataset with one recording of two sessions' kind of name, its first channel an ECG.
class BidsDataset : public testing::Test {
protected:
  BidsDataset() {
    std::filesystem::create_directories(folder / "sub-01/eeg");
    writeText(folder / "dataset_description.json", R"({"Name": "Test", "BIDSVersion": "1.8.0"})");
    writeText(folder / "task-rest_eeg.json",
              R"({"TaskName": "rest", "PowerLineFrequency": 50, "EEGReference": "FCz"})");
    const auto recording = copyOf(heartRecording());
    recording->editableHeader().markers.clear();
    recording->addMarker("Stimulus", "S  1", 10000);
    recording->save(input);
    std::string channels = "name\ttype\tunits\tstatus\n";
    for (const RecordingChannel& channel : recording->header().channels)
      channels += channel.name + (&channel == &recording->header().channels[0] ? "\tECG" : "\tEEG") +
                  (&channel == &recording->header().channels[2] ? "\tuV\tbad\n" : "\tuV\tgood\n");
    writeText(stem + "_channels.tsv", channels);
  }

  const TestFolder folder;
  const std::string stem = folder / "sub-01/eeg/sub-01_task-rest";
  const std::string input = stem + "_eeg.vhdr";
  const std::string out = folder / "derivatives/emeg/sub-01/eeg/sub-01_task-rest_desc-GRABCG";
};

std::vector<std::string> columnOf(const TabSeparated& table, const std::string& column) {
  std::vector<std::string> values;
  for (const auto& row : table.rows) values.push_back(table.value(row, column));
  return values;
}

} // namespace

TEST_F(BidsDataset, OutputsGoUnderDerivatives) {
  const ProgramRun run = runEmeg({"correct", input, "--bcg", "--bids", "--quiet"});
  ASSERT_NE(run.status, 2) << run.err;
  for (const char* ending :
       {"_eeg.vhdr", "_eeg.eeg", "_eeg.vmrk", "_eeg.json", "_events.tsv", "_events.json", "_channels.tsv"})
    EXPECT_TRUE(std::filesystem::exists(out + ending)) << ending;
  const json description = json::parse(bytesOf(folder / "derivatives/emeg/dataset_description.json"));
  EXPECT_EQ(description["DatasetType"], "derivative");
  EXPECT_EQ(description["GeneratedBy"][0]["Name"], "emeg correct");
  EXPECT_THAT(folder.names(),
              ElementsAre("dataset_description.json", "derivatives", "sub-01", "task-rest_eeg.json"));
}

TEST_F(BidsDataset, EventsAreThoseOfTheRecordingAndWhatWasFound) {
  ASSERT_NE(runEmeg({"correct", input, "--bcg", "--bids", "--quiet"}).status, 2);
  const TabSeparated events = readTabSeparated(out + "_events.tsv");
  EXPECT_EQ(events.columns[0], "onset");
  EXPECT_EQ(events.columns[1], "duration");
  const auto names = columnOf(events, "trial_type");
  for (const char* name : {"S  1", "MRGradientTriggers", "HeartPulseTriggers"})
    EXPECT_THAT(names, Contains(name));
  const auto at = std::find(names.begin(), names.end(), "S  1") - names.begin();
  EXPECT_EQ(events.value(events.rows[static_cast<size_t>(at)], "onset"), "10.000000");
  const json levels = json::parse(bytesOf(out + "_events.json"))["trial_type"]["Levels"];
  EXPECT_TRUE(levels.contains("HeartPulseTriggers"));
}

TEST_F(BidsDataset, TheDatasetsOwnEventsComeAlongWithAllTheirColumns) {
  writeText(stem + "_events.tsv",
            "onset\tduration\ttrial_type\tresponse_time\n1.5\t0\tgo\t0.3\n20\t2\tstop\tn/a\n");
  ASSERT_NE(runEmeg({"correct", input, "--bids", "--interval", "2:39", "--rate", "250", "--quiet"}).status,
            2);
  const TabSeparated events = readTabSeparated(
      folder / "derivatives/emeg/sub-01/eeg/sub-01_task-rest_desc-200039000msdec4GRA_events.tsv");
  const auto names = columnOf(events, "trial_type");
  EXPECT_THAT(names, testing::Not(Contains("go")));
  EXPECT_THAT(names, testing::Not(Contains("S  1")));
  const auto stop = static_cast<size_t>(std::find(names.begin(), names.end(), "stop") - names.begin());
  ASSERT_LT(stop, names.size());
  EXPECT_EQ(events.value(events.rows[stop], "onset"), "18.000000");
  EXPECT_EQ(events.value(events.rows[stop], "sample"), "4500");
  EXPECT_THAT(events.columns, Contains("response_time"));
  const auto onsets = columnOf(events, "onset");
  EXPECT_TRUE(std::is_sorted(onsets.begin(), onsets.end(),
                             [](const auto& a, const auto& b) { return std::stod(a) < std::stod(b); }));
}

TEST_F(BidsDataset, TheDescriptionHoldsTheSourcesAndTheRuns) {
  ASSERT_NE(runEmeg({"correct", input, "--bcg", "--bids", "--quiet"}).status, 2);
  const json description = json::parse(bytesOf(out + "_eeg.json"));
  EXPECT_EQ(description["TaskName"], "rest");
  EXPECT_EQ(description["PowerLineFrequency"], 50);
  EXPECT_EQ(description["EEGReference"], "FCz");
  EXPECT_EQ(description["SamplingFrequency"], 1000);
  EXPECT_EQ(description["Sources"][0], "bids::sub-01/eeg/sub-01_task-rest_eeg.vhdr");
  EXPECT_EQ(description["EmegCorrect"]["Parameters"]["RemoveHeartBeatArtifact"], true);
}

TEST_F(BidsDataset, ChannelTypesComeFromTheDataset) {
  ASSERT_NE(runEmeg({"correct", input, "--bcg", "--bids", "--quiet"}).status, 2);
  const TabSeparated channels = readTabSeparated(out + "_channels.tsv");
  EXPECT_EQ(channels.value(channels.rows[0], "type"), "ECG");
  EXPECT_EQ(channels.value(channels.rows[0], "description"), "gradient artifact removed");
  EXPECT_EQ(channels.value(channels.rows[1], "description"), "corrected");
  EXPECT_EQ(channels.value(channels.rows[2], "status"), "bad");
}

TEST_F(BidsDataset, IsNotReplacedUnlessForced) {
  ASSERT_NE(runEmeg({"correct", input, "--bids", "--quiet"}).status, 2);
  EXPECT_EQ(runEmeg({"correct", input, "--bids", "--quiet"}).status, 2);
  EXPECT_NE(runEmeg({"correct", input, "--bids", "--quiet", "--force"}).status, 2);
}

TEST(BidsPlace, RecordingsOutsideADatasetAreRefused) {
  const TestFolder folder;
  copyOf(scanRecording())->save(folder / "sub-01_task-rest_eeg.vhdr");
  const ProgramRun run = runEmeg({"correct", folder / "sub-01_task-rest_eeg.vhdr", "--bids"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("dataset_description.json"));
}

TEST(TabSeparatedTables, ShortRowsAreFilled) {
  const TestFolder folder;
  writeText(folder / "t.tsv", "\xEF\xBB\xBFonset\tname\r\n1\ta\r\n2\r\n");
  TabSeparated table = readTabSeparated(folder / "t.tsv");
  EXPECT_THAT(table.columns, ElementsAre("onset", "name"));
  EXPECT_THAT(columnOf(table, "name"), ElementsAre("a", "n/a"));
  table.addColumn("more");
  EXPECT_EQ(table.text(), "onset\tname\tmore\n1\ta\tn/a\n2\tn/a\tn/a\n");
}

} // namespace emeg
