// Stored files of every variant, made by the scripts beside them in samples/: what is expected of each stands
// in a table.

#include "tests/files/ScratchFolder.h"
#include "tests/files/exchange/SampleRecordings.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <ostream>

namespace emeg {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int64_t nrOfTimePoints = 400;
constexpr int all = RecordingMarker::allChannels;
const std::string micro = "\xC2\xB5V";

/// The number that every script stores, but for a factor.
double numberAt(int channel, int64_t timePoint) {
  return 1000.0 * channel + static_cast<double>(timePoint) - 200;
}

/// biosig cuts decimals off where it makes integers: a value whose integer came out a little too low is one
/// less.
constexpr double oneCutOff = 1.000001;

struct ExpectedChannel {
  std::string name;
  std::string unit;
  double microvoltsPerUnit = 1;
  double step = 1; ///< value = step x number + offset, microvolts or the channel's own unit
  ChannelKind kind = ChannelKind::Eeg;
  double offset = 0;
  bool good = true;
  std::string reference = "";
};

struct ExpectedMarker {
  double onset = 0;
  std::string description;
  double duration = 0;
  std::string type = "";
  int channel = all;
};

struct SampleFile {
  std::string name;
  std::string format;
  double samplingFrequency = 0;
  std::vector<ExpectedChannel> channels;
  std::vector<ExpectedMarker> markers;
  std::vector<std::string> warnings = {}; ///< parts of them
  double tolerance = 1e-6;                ///< of values, in steps
};

void PrintTo(const SampleFile& file, std::ostream* stream) {
  *stream << file.name;
}

std::string sample(const std::string& name) {
  return std::string(EMEG_SAMPLES) + "/" + name;
}

std::string bytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string testNameOf(const testing::TestParamInfo<SampleFile>& info) {
  std::string name = info.param.name;
  for (char& c : name)
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  return name;
}

class SampleFiles : public testing::TestWithParam<SampleFile> {};

TEST_P(SampleFiles, AreReadWithRateNamesUnitsSamplesAndMarkers) {
  const SampleFile& expected = GetParam();
  const SampleRecording read = readRecordingFrom(sample(expected.name));
  EXPECT_EQ(read.header.format, expected.format);
  EXPECT_DOUBLE_EQ(read.header.samplingFrequency, expected.samplingFrequency);
  ASSERT_EQ(read.header.nrOfTimePoints, nrOfTimePoints);

  ASSERT_EQ(read.header.channels.size(), expected.channels.size());
  for (int c = 0; c < read.header.nrOfChannels(); ++c) {
    const RecordingChannel& channel = read.header.channels[static_cast<size_t>(c)];
    const ExpectedChannel& wanted = expected.channels[static_cast<size_t>(c)];
    EXPECT_EQ(channel.name, wanted.name);
    EXPECT_EQ(channel.unit, wanted.unit);
    EXPECT_EQ(channel.microvoltsPerUnit, wanted.microvoltsPerUnit);
    EXPECT_EQ(channel.kind, wanted.kind) << channel.name << ": " << channel.kindRule;
    EXPECT_EQ(channel.good, wanted.good);
    EXPECT_EQ(channel.reference, wanted.reference);
    for (int64_t t = 0; t < nrOfTimePoints; ++t)
      ASSERT_NEAR(read.at(c, t), wanted.step * numberAt(c, t) + wanted.offset,
                  expected.tolerance * wanted.step)
          << channel.name << " at " << t;
  }

  ASSERT_EQ(read.header.markers.size(), expected.markers.size());
  for (size_t i = 0; i < expected.markers.size(); ++i) {
    const RecordingMarker& marker = read.header.markers[i];
    EXPECT_EQ(marker.description, expected.markers[i].description);
    EXPECT_EQ(marker.type, expected.markers[i].type);
    EXPECT_EQ(marker.channel, expected.markers[i].channel);
    EXPECT_NEAR(marker.onset, expected.markers[i].onset, 1e-9);
    EXPECT_NEAR(marker.duration, expected.markers[i].duration, 1e-9);
  }

  ASSERT_EQ(read.header.warnings.size(), expected.warnings.size())
      << testing::PrintToString(read.header.warnings);
  for (size_t i = 0; i < expected.warnings.size(); ++i)
    EXPECT_THAT(read.header.warnings[i], HasSubstr(expected.warnings[i]));
}

std::string folderOfScript(const testing::TestParamInfo<const char*>& info) {
  const std::string name = info.param;
  return name.substr(0, name.find('/'));
}

class SampleScripts : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Python, SampleScripts,
                         testing::Values("brainvision/make_brainvision_files.py", "edf/make_edf_files.py",
                                         "ctc/make_ctc_files.py"),
                         folderOfScript);

TEST_P(SampleScripts, WriteTheStoredFiles) {
  if (std::system("python3 -c '' >/dev/null 2>&1") != 0) GTEST_SKIP() << "python3 is not installed";
  const ScratchFolder folder;
  ASSERT_EQ(std::system(("python3 '" + sample(GetParam()) + "' '" + folder.path() + "'").c_str()), 0);
  const std::filesystem::path stored = std::filesystem::path(sample(GetParam())).parent_path();
  ASSERT_GT(folder.names().size(), 5u);
  for (const std::string& name : folder.names())
    EXPECT_TRUE(bytesOf(stored / name) == folder.read(name)) << name << " is not what the script writes";
}

// BrainVision: samples/brainvision/make_brainvision_files.py

const std::vector<ExpectedChannel> brainVisionUnits = {
    {"Fp1", micro, 1, 0.5},
    {"EOG", "mV", 1000, 250, ChannelKind::Eog, 0, true, "Cz"},
    {"small", "nV", 0.001, 0.05},
    {"no unit", micro, 1, 0.1},
    {"Temp", "C", 0, 0.01, ChannelKind::Other},
};

const std::vector<ExpectedChannel> brainVisionFloats = {
    {"Fp1", micro, 1, 0.125},
    {"\xCE\xB2"
     "eta \xE2\x9C\x93",
     "mV", 1000, 0.125},
    {"ECG", micro, 1, 0.125, ChannelKind::Ecg},
};

const std::vector<ExpectedMarker> brainVisionMarkers = {
    {0, "", 1, "New Segment"},
    {10, "S  1", 1, "Stimulus"},
    {100, "eyes open, then closed", 50, "Comment", 1},
    {399, "R 12", 1, "Response"},
};

const SampleFile brainVisionFiles[] = {
    {"brainvision/int16_multiplexed.vhdr", "BrainVision, 16-bit integers, multiplexed", 200, brainVisionUnits,
     brainVisionMarkers},
    {"brainvision/int16_vectorized_latin1.vhdr",
     "BrainVision, 16-bit integers, vectorized",
     600,
     {{"Fp1", micro, 1, 0.5},
      {"Stirn, gr\xC3\xB6\xC3\x9F"
       "er",
       micro, 1, 2, ChannelKind::Eeg, 0, true, "Ohr, links"},
      {"EKG", "mV", 1000, 1000, ChannelKind::Ecg}},
     {{30, "Blick auf T\xC3\xBCr", 1, "Comment"}}},
    {"brainvision/float32_multiplexed.vhdr",
     "BrainVision, 32-bit floats, multiplexed",
     250,
     brainVisionFloats,
     {{10, "S  1", 1, "Stimulus"},
      {20, "", 0, ""},
      {30, "the number came already", 1, "Comment", 2},
      {200, "S  2", 1, "Stimulus"},
      {9998, "after the end", 1, "Comment"}},
     {"4 entries are no marker and left out, the first is \"Mk3=Stimulus,no position,,1,0\"",
      "1 marker lies outside"}},
    {"brainvision/float32_vectorized.vhdr",
     "BrainVision, 32-bit floats, vectorized",
     5000,
     brainVisionFloats,
     {{10, "S  1", 1, "Stimulus"}, {399, "R  1", 1, "Response"}}},
    {"brainvision/without_markers.vhdr",
     "BrainVision, 16-bit integers, multiplexed",
     200,
     brainVisionUnits,
     {}},
    {"brainvision/missing_markers.vhdr",
     "BrainVision, 16-bit integers, multiplexed",
     200,
     brainVisionUnits,
     {},
     {"names the marker file \"lost.vmrk\""}},
    {"brainvision/byte_order_mark.vhdr", "BrainVision, 16-bit integers, multiplexed", 200, brainVisionUnits,
     brainVisionMarkers},
    {"brainvision/int32_bigendian.vhdr",
     "BrainVision, 32-bit integers, multiplexed",
     200,
     {{"Fp1", micro, 1, 500}, {"EOG", "mV", 1000, 250e3, ChannelKind::Eog, 0, true, "Cz"}},
     {}},
    {"brainvision/uint16_vectorized.vhdr",
     "BrainVision, unsigned 16-bit integers, vectorized",
     200,
     {{"Fp1", micro, 1, 0.5, ChannelKind::Eeg, 100},
      {"EOG", "mV", 1000, 250, ChannelKind::Eog, 50e3, true, "Cz"}},
     {}},
    {"brainvision/biosig.vhdr",
     "BrainVision, 16-bit integers, multiplexed",
     200,
     {{"Fp1", "uV"},
      {"EOG", "uV", 1, 1, ChannelKind::Eog},
      {"small", "uV"},
      {"no unit", "uV"},
      {"Temp", "uV", 1, 1, ChannelKind::Other}},
     {{0, "", 1, "New Segment"},
      {0, "0x7ffe", 1},
      {10, "0x0001", 1},
      {100, "0x0002", 50, "", 1},
      {399, "0x0003", 1}},
     {"\"biosig.vmrk\" is read instead"},
     oneCutOff},
};
INSTANTIATE_TEST_SUITE_P(BrainVision, SampleFiles, testing::ValuesIn(brainVisionFiles), testNameOf);

TEST(BrainVisionSamples, KeepStartAndComment) {
  const auto reader = openRecording(sample("brainvision/int16_multiplexed.vhdr"));
  ASSERT_TRUE(reader->header().start);
  EXPECT_EQ(reader->header().start->year, 2023);
  EXPECT_EQ(reader->header().start->second, 58);
  EXPECT_EQ(reader->header().start->microsecond, 123456);
  ASSERT_EQ(reader->header().texts.size(), 1u);
  EXPECT_EQ(reader->header().texts[0].text,
            "A m p l i f i e r   S e t u p\n; kept\n\nCh1=no channel\nGr\xC3\xB6\xC3\x9F"
            "e: 58 cm");
}

// EDF and BDF: samples/edf/make_edf_files.py, samples/make_biosig_files.sh

const std::vector<ExpectedChannel> edfChannels = {
    {"EEG Fp1", "uV", 1, 0.1},
    {"ECG", "mV", 1000, 500, ChannelKind::Ecg, 24e3},
    {"Temp rectal", "degC", 0, 0.01, ChannelKind::Other},
};

// The physical range, -262144 to 262143, is not quite that of the integers, divided by 32.
constexpr double bdfStep = 524287.0 / 16777215.0;
constexpr double bdfOffset = -262144 + 8388608 * bdfStep;
const std::vector<ExpectedChannel> bdfChannels = {
    {"Fp1", "uV", 1, 1000 * bdfStep, ChannelKind::Eeg, bdfOffset},
    {"Cz", "uV", 1, 1000 * bdfStep, ChannelKind::Eeg, bdfOffset},
    {"Status", "Boolean", 0, 1, ChannelKind::Status},
};

const std::vector<ExpectedMarker> edfMarkers = {
    {-10, "before the first sample"},
    {0, "begin"},
    {10, "two at"},
    {10, "one time"},
    {150,
     "Bl\xC3\xBC"
     "te, \xE2\x9C\x93",
     100},
    {399, "the last sample"},
};

const SampleFile edfFiles[] = {
    {"edf/plain.edf", "EDF, 16-bit integers", 200, edfChannels, {}},
    {"edf/plain.bdf", "BDF, 24-bit integers", 200, bdfChannels, {}},
    {"edf/plus.edf", "EDF+, 16-bit integers", 200, edfChannels, edfMarkers},
    {"edf/plus.bdf", "BDF+, 24-bit integers", 200, bdfChannels, edfMarkers},
    {"edf/plus_without_annotations.edf", "EDF+, 16-bit integers", 200, edfChannels, {}},
    {"edf/biosig.edf",
     "EDF+, 16-bit integers",
     200,
     {edfChannels[0], edfChannels[1], {"Temp rectal", "?", 0, 0.01, ChannelKind::Other}},
     {},
     {},
     0.01},
    {"edf/biosig.bdf",
     "BDF+, 24-bit integers",
     200,
     {bdfChannels[0], bdfChannels[1]},
     {},
     {},
     oneCutOff / 1000},
};
INSTANTIATE_TEST_SUITE_P(Edf, SampleFiles, testing::ValuesIn(edfFiles), testNameOf);

TEST(EdfSamples, KeepStartPatientAndFilters) {
  for (const char* name : {"edf/plus.edf", "edf/plus.bdf"}) {
    const auto reader = openRecording(sample(name));
    ASSERT_TRUE(reader->header().start) << name;
    EXPECT_EQ(reader->header().start->second, 58);
    EXPECT_EQ(reader->header().start->microsecond, 250000) << "the first data record begins later";
    std::vector<std::string> texts;
    for (const RecordingText& text : reader->header().texts) texts.push_back(text.text);
    EXPECT_THAT(texts,
                testing::ElementsAre("X-17", "F", "02-MAY-1951", "some one", "PSG-1", "NN", "scanner 3T"));
  }
  const auto reader = openRecording(sample("edf/plain.edf"));
  EXPECT_EQ(reader->header().channels[0].transducer, "AgAgCl electrode");
  EXPECT_EQ(reader->header().channels[0].prefilter, "HP:0.1Hz LP:75Hz");
  EXPECT_EQ(reader->header().texts.at(0).text, "someone");
}

TEST(EdfSamples, DiscontinuousFilesAreRefused) {
  for (const char* name : {"edf/discontinuous.edf", "edf/discontinuous.bdf"})
    EXPECT_THAT(refusalOf(sample(name)),
                AllOf(HasSubstr(name), HasSubstr("discontinuous"), HasSubstr("Export")));
}

TEST(EdfSamples, ChannelsOfOtherRatesAreNamedAndTheRestCanBeChosen) {
  const std::string path = sample("edf/rates.edf");
  EXPECT_THAT(refusalOf(path),
              AllOf(HasSubstr("\"Pulse\", \"SaO2\""), Not(HasSubstr("Temp")), HasSubstr("--channels")));
  OpenOptions slow;
  slow.channels = {"Pulse"};
  const SampleRecording pulse = readRecordingFrom(path, slow);
  EXPECT_EQ(pulse.header.samplingFrequency, 50);
  ASSERT_EQ(pulse.header.nrOfTimePoints, 100);
  for (int64_t t = 0; t < 100; ++t) ASSERT_NEAR(pulse.at(0, t), 0.1 * numberAt(3, t), 1e-9);
}

// CTC: samples/ctc/make_ctc_files.py

std::vector<ExpectedChannel> ctcChannels(double step) {
  return {{"Fp1", "uV", 1, step},
          {"Cz", "uV", 1, step, ChannelKind::Eeg, 0, false},
          {"ECG", "uV", 1, step, ChannelKind::Ecg}};
}

const std::vector<ExpectedMarker> ctcMarkers = {{0, "Rest", 100}, {100, "Task", 100}, {200, "Rest", 100}};
const std::vector<ExpectedMarker> ctcMarkersAndOnsets = {
    {0, "Rest", 100},   {10, "MRGradientTriggers"}, {60.05, "HeartPulseTriggers"},
    {100, "Task", 100}, {200, "Rest", 100},         {210, "MRGradientTriggers"},
};

const SampleFile ctcFiles[] = {
    {"ctc/float32_multiplexed.ctc", "CTC, 32-bit floats, multiplexed", 200, ctcChannels(0.125),
     ctcMarkersAndOnsets},
    {"ctc/float32_vectorized.ctc", "CTC, 32-bit floats, channel after channel", 200, ctcChannels(0.125),
     ctcMarkersAndOnsets},
    {"ctc/float64_multiplexed.ctc", "CTC, 64-bit floats, multiplexed", 200, ctcChannels(0.1), ctcMarkers},
    {"ctc/float64_vectorized.ctc", "CTC, 64-bit floats, channel after channel", 200, ctcChannels(0.1),
     ctcMarkers},
    {"ctc/int16_multiplexed.ctc", "CTC, 16-bit integers, multiplexed", 200, ctcChannels(1), ctcMarkers},
    {"ctc/int16_vectorized.ctc", "CTC, 16-bit integers, channel after channel", 200, ctcChannels(1),
     ctcMarkers},
    {"ctc/alone.ctc",
     "CTC, 32-bit floats, multiplexed",
     200,
     {{"Channel_000", "uV", 1, 0.125}, {"Channel_001", "uV", 1, 0.125}, {"Channel_002", "uV", 1, 0.125}},
     {{20, "Task", 20}}},
};
INSTANTIATE_TEST_SUITE_P(Ctc, SampleFiles, testing::ValuesIn(ctcFiles), testNameOf);

} // namespace
} // namespace emeg
