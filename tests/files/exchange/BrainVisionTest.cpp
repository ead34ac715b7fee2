#include "tests/files/ScratchFolder.h"
#include "tests/files/exchange/SampleRecordings.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace emeg {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A header of two channels with what a test changes.
struct HeaderText {
  std::string firstLine = "Brain Vision Data Exchange Header File Version 1.0\r\n";
  std::string dataFile = "r.eeg";
  std::string markerLine;
  std::string orientation = "MULTIPLEXED";
  std::string format = "INT_16";
  std::string interval = "200";
  std::string nrOfChannels = "2";
  std::string more;
  std::string channels = "Ch1=Fp1,,0.5,\xC2\xB5V\r\nCh2=ECG,,0.001,mV\r\n";
  std::string end;

  std::string text() const {
    return firstLine + "; a comment\r\n\r\n[Common Infos]\r\nCodepage=UTF-8\r\nDataFile=" + dataFile +
           "\r\n" + markerLine + "DataFormat=BINARY\r\nDataOrientation=" + orientation +
           "\r\nNumberOfChannels=" + nrOfChannels + "\r\nSamplingInterval=" + interval + "\r\n" + more +
           "\r\n[Binary Infos]\r\nBinaryFormat=" + format + "\r\n\r\n[Channel Infos]\r\n" + channels + end;
  }
};

template <typename Sample>
std::string bytesOfSamples(const std::vector<Sample>& samples) {
  std::string bytes(samples.size() * sizeof(Sample), '\0');
  std::memcpy(bytes.data(), samples.data(), bytes.size());
  return bytes;
}

const std::vector<int16_t> sixSamples = {1, 1000, 2, -2000, -32768, 32767};

TEST(BrainVision, ComesBackWithNamesUnitsTextsMarkersAndTimes) {
  const ScratchFolder folder;
  SampleRecording written = makeRecording({"Fp1", "A,B", "\xC3\x84rger"}, 3000, 1000.0 / 3);
  written.header.channels[1].unit = "mV";
  written.header.channels[1].microvoltsPerUnit = 1000;
  written.header.channels[2].unit = "\xC2\xB0"
                                    "C";
  written.header.channels[2].microvoltsPerUnit = 0;
  written.header.channels[0].reference = "FCz";
  written.header.start = StartTime{2023, 12, 31, 23, 59, 58, 123456};
  written.header.texts = {{"Comment", "first [line]\n\n; third = 3"}, {"Coordinates", "Ch1=1,90,0"}};
  written.header.markers = {markerAt(0, "S  1", 5), markerAt(12, "a, b\\"),
                            markerAt(2999, "\xE2\x9C\x93", 1)};
  written.header.markers[1].type = "Com,ment";
  written.header.markers[1].channel = 2;
  EXPECT_THAT(writeRecordingTo(folder.path("r.vhdr"), written), IsEmpty());
  EXPECT_THAT(folder.names(), ElementsAre("r.eeg", "r.vhdr", "r.vmrk"));

  const SampleRecording read = readRecordingFrom(folder.path("r.vhdr"));
  EXPECT_THAT(read.header.warnings, IsEmpty());
  EXPECT_DOUBLE_EQ(read.header.samplingFrequency, 1000.0 / 3);
  ASSERT_EQ(read.header.nrOfChannels(), 3);
  EXPECT_EQ(read.header.channels[1].name, "A,B");
  EXPECT_EQ(read.header.channels[2].name, "\xC3\x84rger");
  EXPECT_EQ(read.header.channels[0].reference, "FCz");
  EXPECT_EQ(read.header.channels[1].unit, "mV");
  EXPECT_FALSE(read.header.channels[2].isVoltage());
  EXPECT_EQ(read.header.channels[2].kind, ChannelKind::Other);
  EXPECT_LT(largestDifference(written, read), 2e-5) << "a float of some hundred microvolts";
  ASSERT_EQ(read.header.texts.size(), 2u);
  EXPECT_EQ(read.header.texts[0].text, "Ch1=1,90,0");
  EXPECT_EQ(read.header.texts[1].text, written.header.texts[0].text);
  ASSERT_TRUE(read.header.start);
  EXPECT_EQ(read.header.start->microsecond, 123456);

  ASSERT_EQ(read.header.markers.size(), 4u);
  EXPECT_EQ(read.header.markers[0].type, "New Segment");
  EXPECT_EQ(read.header.markers[1].type, "Stimulus");
  EXPECT_EQ(read.header.markers[1].description, "S  1");
  EXPECT_EQ(read.header.markers[1].duration, 5);
  EXPECT_EQ(read.header.markers[2].type, "Com,ment");
  EXPECT_EQ(read.header.markers[2].description, "a, b\\");
  EXPECT_EQ(read.header.markers[2].onset, 12);
  EXPECT_EQ(read.header.markers[2].channel, 2);
  EXPECT_EQ(read.header.markers[3].onset, 2999);
  EXPECT_EQ(read.header.markers[3].description, "\xE2\x9C\x93");
}

TEST(BrainVision, MarkersBetweenSamplesMoveToTheNearestAndAreCounted) {
  const ScratchFolder folder;
  SampleRecording written = makeRecording({"Cz"}, 100, 250);
  written.header.markers = {markerAt(3, "exact"), markerAt(3.4, "down"), markerAt(3.6, "up")};
  EXPECT_THAT(writeRecordingTo(folder.path("r.vhdr"), written),
              ElementsAre(HasSubstr("2 markers were moved")));
  const SampleRecording read = readRecordingFrom(folder.path("r.vhdr"));
  ASSERT_EQ(read.header.markers.size(), 3u);
  EXPECT_EQ(read.header.markers[1].onset, 3);
  EXPECT_EQ(read.header.markers[2].onset, 4);
}

TEST(BrainVision, IntegersAreScaledByResolutionAndUnitAndCanBeHadBack) {
  const ScratchFolder folder;
  folder.write("r.eeg", bytesOfSamples(sixSamples));
  const SampleRecording read = readRecordingFrom(folder.write("r.vhdr", HeaderText().text()));
  EXPECT_EQ(read.header.nrOfTimePoints, 3);
  EXPECT_EQ(read.header.samplingFrequency, 5000);
  EXPECT_THAT(read.values, ElementsAre(0.5, 1, -16384, 1000, -2000, 32767)) << "0.001 mV is a microvolt";
  ASSERT_TRUE(read.header.channels[0].stored);
  EXPECT_EQ(read.header.channels[0].stored->integerOf(-16384), -32768);
  EXPECT_EQ(read.header.channels[0].stored->smallest, -32768);
  EXPECT_EQ(read.header.channels[1].kind, ChannelKind::Ecg);
}

TEST(BrainVision, VectorizedSamplesAreReadChannelAfterChannel) {
  const ScratchFolder folder;
  folder.write("r.eeg", bytesOfSamples(sixSamples));
  HeaderText header;
  header.orientation = "VECTORIZED";
  const SampleRecording read = readRecordingFrom(folder.write("r.vhdr", header.text()));
  EXPECT_THAT(read.values, ElementsAre(0.5, 500, 1, -2000, -32768, 32767));
}

TEST(BrainVision, FloatsBigEndianNumbersAndUnsignedIntegersAreRead) {
  const ScratchFolder folder;
  HeaderText header;
  header.format = "IEEE_FLOAT_32";
  folder.write("r.eeg", bytesOfSamples(std::vector<float>{1.5F, std::numeric_limits<float>::quiet_NaN()}));
  SampleRecording read = readRecordingFrom(folder.write("r.vhdr", header.text()));
  EXPECT_EQ(read.values[0], 0.75);
  EXPECT_TRUE(std::isnan(read.values[1])) << "what is no number is not hidden";
  EXPECT_FALSE(read.header.channels[0].stored);

  header.format = "INT_16\r\nUseBigEndianOrder=YES";
  folder.write("r.eeg", std::string("\x01\x00\xff\xfe", 4));
  read = readRecordingFrom(folder.write("r.vhdr", header.text()));
  EXPECT_THAT(read.values, ElementsAre(128, -2));

  header.format = "UINT_16";
  folder.write("r.eeg", std::string("\xff\xff\x01\x00", 4));
  read = readRecordingFrom(folder.write("r.vhdr", header.text()));
  EXPECT_THAT(read.values, ElementsAre(32767.5, 1));
}

TEST(BrainVision, OddMarkerFilesGiveTheMarkersThatCanBeUnderstood) {
  const ScratchFolder folder;
  folder.write("r.eeg", bytesOfSamples(sixSamples));
  HeaderText header;
  header.markerLine = "MarkerFile=r.vmrk\r\n";
  folder.write("r.vmrk", "[Marker Infos]\n" // no first line, Unix line ends
                         "; Mk9=Comment,not this,1,1,0\n"
                         "Mk7=Stimulus,S  2,3,1,0\n"
                         "Mk1=New Segment,,1,1,0,20200102030405000006\n"
                         "Mk2=Comment,no size,2\n"
                         "Mk3=Comment,no position,x,1,0\n"
                         "Mk4=\n"
                         "nonsense\n"
                         "Mk5=Comment,far away,1000000,1,99\n"
                         "Mk6=Comment,latin \xE4,2,1,2\n");
  const SampleRecording read = readRecordingFrom(folder.write("r.vhdr", header.text()));
  std::vector<std::string> descriptions;
  for (const RecordingMarker& marker : read.header.markers) descriptions.push_back(marker.description);
  EXPECT_THAT(descriptions, ElementsAre("", "no size", "latin \xC3\xA4", "S  2", "far away"));
  EXPECT_EQ(read.header.markers[2].channel, 1);
  EXPECT_EQ(read.header.markers[4].channel, RecordingMarker::allChannels);
  ASSERT_TRUE(read.header.start);
  EXPECT_EQ(read.header.start->day, 2);
  EXPECT_THAT(read.header.warnings, ElementsAre(AllOf(HasSubstr("3 entries"), HasSubstr("no position")),
                                                HasSubstr("1 marker lies")));
}

TEST(BrainVision, RenamedSetsAreFoundUnderTheHeadersName) {
  const ScratchFolder folder;
  folder.write("renamed.eeg", bytesOfSamples(sixSamples));
  HeaderText header;
  header.markerLine = "MarkerFile=r.vmrk\r\n";
  const SampleRecording read = readRecordingFrom(folder.write("renamed.vhdr", header.text()));
  EXPECT_EQ(read.header.nrOfTimePoints, 3);
  EXPECT_THAT(read.header.warnings, ElementsAre(HasSubstr("renamed.eeg"), HasSubstr("no markers")));
}

TEST(BrainVision, ContradictionsAreRefusedWithTheFileThePlaceAndTheRemedy) {
  const ScratchFolder folder;
  folder.write("r.eeg", bytesOfSamples(sixSamples));
  const auto refusalWith = [&folder](const auto& change) {
    HeaderText header;
    change(header);
    return refusalOf(folder.write("r.vhdr", header.text()));
  };
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.dataFile = "missing.eeg"; }), IsEmpty()) << "r.eeg is there";
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.orientation = "SIDEWAYS"; }), HasSubstr("DataOrientation"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.format = "INT_8"; }), HasSubstr("IEEE_FLOAT_32"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.interval = "0"; }), HasSubstr("SamplingInterval"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.interval = "nan"; }), HasSubstr("SamplingInterval"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.interval = "-200"; }), HasSubstr("SamplingInterval"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.nrOfChannels = "0"; }), HasSubstr("NumberOfChannels"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.nrOfChannels = "99999999999"; }),
              HasSubstr("NumberOfChannels"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.nrOfChannels = "3"; }), HasSubstr("Ch3"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.more = "DataPoints=4\r\n"; }), HasSubstr("cut off"));
  EXPECT_THAT(refusalWith([](HeaderText& h) { h.dataFile = ""; }), HasSubstr("DataFile"));
  EXPECT_THAT(refusalWith([](HeaderText& h) {
                h.orientation = "VECTORIZED";
                h.more = "DataPoints=2\r\n";
              }),
              HasSubstr("DataPoints"));
  folder.write("r.eeg", "abc");
  EXPECT_THAT(refusalOf(folder.write("r.vhdr", HeaderText().text())), HasSubstr("empty or cut off"));
  std::filesystem::remove(folder.path("r.eeg"));
  EXPECT_THAT(refusalOf(folder.write("r.vhdr", HeaderText().text())), HasSubstr("not beside it"));
  EXPECT_THAT(refusalOf(folder.write("x.vhdr", "anything")), HasSubstr("no BrainVision header"));
  EXPECT_THAT(refusalOf(folder.path("r.eeg")), HasSubstr("give its header"));
}

TEST(BrainVision, AHeaderOfGigabytesIsRefusedUnread) {
  const ScratchFolder folder;
  const std::string path = folder.write("huge.vhdr", "[Common Infos]\n");
  std::filesystem::resize_file(path, uintmax_t{3} << 30);
  EXPECT_THAT(refusalOf(path), HasSubstr("too long for a BrainVision header"));
}

TEST(BrainVision, ACutOffLastTimePointIsLeftOutAndSaid) {
  const ScratchFolder folder;
  folder.write("r.eeg", bytesOfSamples(sixSamples) + "x");
  const SampleRecording read = readRecordingFrom(folder.write("r.vhdr", HeaderText().text()));
  EXPECT_EQ(read.header.nrOfTimePoints, 3);
  EXPECT_THAT(read.header.warnings, ElementsAre(HasSubstr("left out")));
}

} // namespace
} // namespace emeg
