#include "files/formats/CtcFile.h"
#include "tests/files/ScratchFolder.h"
#include "tests/files/exchange/SampleRecordings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(CtcRecording, ComesBackWithNamesValuesAndRate) {
  const ScratchFolder folder;
  SampleRecording written = makeRecording({"Fp1", "Cz", "ECG"}, 5000, 1000.0 / 3);
  written.header.channels[1].good = false;
  EXPECT_THAT(writeRecordingTo(folder.path("r.ctc"), written), IsEmpty());
  EXPECT_THAT(folder.names(), ElementsAre("r.ccd", "r.ctc"));

  const SampleRecording read = readRecordingFrom(folder.path("r.ctc"));
  EXPECT_EQ(read.header.samplingFrequency, 1000.0 / 3);
  ASSERT_EQ(read.header.nrOfChannels(), 3);
  EXPECT_EQ(read.header.channels[2].name, "ECG");
  EXPECT_EQ(read.header.channels[2].kind, ChannelKind::Ecg);
  EXPECT_TRUE(read.header.channels[0].good);
  EXPECT_FALSE(read.header.channels[1].good);
  EXPECT_LT(largestDifference(written, read), 2e-5) << "a float of some hundred microvolts";
}

template <typename Sample>
std::string ctcBytes(int dataType, int organisation, const std::vector<Sample>& samples) {
  CtcHeader header;
  header.dataType = dataType;
  header.dataOrganisation = organisation;
  header.nrOfChannels = 2;
  header.nrOfTimePoints = static_cast<int32_t>(samples.size() / 2);
  header.samplingFrequency = 250;
  const auto bytes = encodeCtcHeader(header);
  std::string text(bytes.begin(), bytes.end());
  const auto* data = reinterpret_cast<const char*>(samples.data());
  return text + std::string(data, samples.size() * sizeof(Sample));
}

TEST(CtcRecording, EverySampleTypeAndOrganisationIsRead) {
  const ScratchFolder folder;
  const auto valuesOf = [&folder](const std::string& bytes) {
    return readRecordingFrom(folder.write("r.ctc", bytes)).values;
  };
  EXPECT_THAT(valuesOf(ctcBytes<double>(2, 2, {0.1, 10, 0.2, 20, 0.3, 30})),
              ElementsAre(0.1, 0.2, 0.3, 10, 20, 30));
  EXPECT_THAT(valuesOf(ctcBytes<double>(2, 1, {0.1, 0.2, 0.3, 10, 20, 30})),
              ElementsAre(0.1, 0.2, 0.3, 10, 20, 30));
  EXPECT_THAT(valuesOf(ctcBytes<float>(1, 1, {0.5F, 1, 2, 3})), ElementsAre(0.5, 1, 2, 3));
  EXPECT_THAT(valuesOf(ctcBytes<int16_t>(3, 2, {-32768, 1, 32767, 2})), ElementsAre(-32768, 32767, 1, 2));
  const SampleRecording integers = readRecordingFrom(folder.path("r.ctc"));
  ASSERT_TRUE(integers.header.channels[0].stored);
  EXPECT_EQ(integers.header.channels[0].stored->integerOf(-32768), -32768);
  EXPECT_EQ(integers.header.channels[1].name, "Channel_001") << "there is no description";
}

TEST(CtcRecording, ProtocolsInOtherUnitsAreConverted) {
  const ScratchFolder folder;
  folder.write("r.ctc", ctcBytes<float>(1, 2, std::vector<float>(1000)));
  const auto protocolIn = [](const std::string& unit) {
    return "\r\nResolutionOfTime: " + unit + "\r\nNrOfConditions: 1\r\nTask\r\n1\r\n100 300\r\nColor: 0 0 0";
  };
  const auto markerOf = [&folder] { return readRecordingFrom(folder.path("r.ctc")).header.markers.at(0); };
  folder.write("r.prt", protocolIn("msec"));
  EXPECT_DOUBLE_EQ(markerOf().onset, 25);
  EXPECT_DOUBLE_EQ(markerOf().duration, 50);
  folder.write("r.prt", protocolIn("Volumes"));
  EXPECT_DOUBLE_EQ(markerOf().onset, 100) << "a volume is a sample";
  folder.write("r.prt", "no protocol");
  EXPECT_THAT(readRecordingFrom(folder.path("r.ctc")).header.warnings, ElementsAre(HasSubstr("r.prt")));
}

TEST(CtcRecording, ADescriptionOfOtherChannelsGivesNoNames) {
  const ScratchFolder folder;
  writeRecordingTo(folder.path("r.ctc"), makeRecording({"Fp1", "Cz", "ECG"}, 100, 250));
  folder.write("r.ctc", ctcBytes<float>(1, 2, std::vector<float>(1000)));
  const SampleRecording read = readRecordingFrom(folder.path("r.ctc"));
  EXPECT_EQ(read.header.channels[0].name, "Channel_000");
  EXPECT_THAT(read.header.warnings, ElementsAre(HasSubstr("describes 3 channels")));
  folder.write("r.ccd", "cut off");
  EXPECT_THAT(readRecordingFrom(folder.path("r.ctc")).header.warnings,
              ElementsAre(HasSubstr("cannot be read")));
}

TEST(CtcRecording, MarkersComeBackWithinAMicrosecond) {
  const ScratchFolder folder;
  SampleRecording written = makeRecording({"Cz"}, 5000, 5000);
  written.header.markers = {markerAt(0, "Rest", 1000), markerAt(17.25, "HeartPulseTriggers"),
                            markerAt(4999, "Task")};
  EXPECT_THAT(writeRecordingTo(folder.path("r.ctc"), written), IsEmpty());
  EXPECT_THAT(folder.names(), ElementsAre("r.ccd", "r.ctc", "r.prt", "r_ArtifactsTriggers.prt"));

  const SampleRecording read = readRecordingFrom(folder.path("r.ctc"));
  ASSERT_EQ(read.header.markers.size(), 3u);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(read.header.markers[i].description, written.header.markers[i].description);
    EXPECT_NEAR(read.header.markers[i].onset, written.header.markers[i].onset, 0.5e-6 * 5000);
    EXPECT_NEAR(read.header.markers[i].duration, written.header.markers[i].duration, 1e-6 * 5000);
  }
}

TEST(CtcRecording, ChangedMarkerNamesAreSaid) {
  const ScratchFolder folder;
  SampleRecording written = makeRecording({"Cz"}, 100, 100);
  written.header.markers = {markerAt(5, "S  1"), markerAt(6, std::string(200, 'x')), markerAt(7, "a\nb")};
  EXPECT_THAT(writeRecordingTo(folder.path("r.ctc"), written),
              ElementsAre(HasSubstr("3 names were changed")));
  const SampleRecording read = readRecordingFrom(folder.path("r.ctc"));
  ASSERT_EQ(read.header.markers.size(), 3u);
  EXPECT_EQ(read.header.markers[0].description, "S__1");
  EXPECT_EQ(read.header.markers[1].description, std::string(127, 'x'));
  EXPECT_EQ(read.header.markers[2].description, "a_b");
}

TEST(CtcRecording, NoProtocolOfAnOlderRecordingIsTakenForItsOwn) {
  const ScratchFolder folder;
  SampleRecording written = makeRecording({"Cz"}, 100, 100);
  written.header.markers = {markerAt(5, "Rest"), markerAt(6, "HeartPulseTriggers")};
  writeRecordingTo(folder.path("r.ctc"), written);
  written.header.markers.clear();
  EXPECT_THROW(writeRecordingTo(folder.path("r.ctc"), written), RecordingError);
  WriteOptions replacing;
  replacing.overwrite = true;
  writeRecordingTo(folder.path("r.ctc"), written, replacing);
  EXPECT_THAT(folder.names(), ElementsAre("r.ccd", "r.ctc"));
  EXPECT_THAT(readRecordingFrom(folder.path("r.ctc")).header.markers, IsEmpty());
}

TEST(CtcRecording, ChosenChannelsComeInTheChosenOrder) {
  const ScratchFolder folder;
  const SampleRecording written = makeRecording({"Fp1", "Cz", "ECG"}, 3000, 250);
  writeRecordingTo(folder.path("r.ctc"), written);
  const SampleRecording read = readRecordingFrom(folder.path("r.ctc"), {{"ECG", "Fp1"}});
  ASSERT_EQ(read.header.nrOfChannels(), 2);
  EXPECT_EQ(read.header.channels[0].name, "ECG");
  EXPECT_NEAR(read.at(0, 2000), written.at(2, 2000), 1e-4);
  EXPECT_NEAR(read.at(1, 2000), written.at(0, 2000), 1e-4);
  EXPECT_THAT(refusalOf(folder.path("r.ctc"), {{"Oz"}}), HasSubstr("no channel \"Oz\""));
}

TEST(CtcRecording, ContradictingHeadersAreRefusedWithThePlaceAndTheValue) {
  const ScratchFolder folder;
  writeRecordingTo(folder.path("r.ctc"), makeRecording({"Cz", "Pz"}, 100, 100));
  const std::string good = folder.read("r.ctc");
  const auto refusalWith = [&](size_t place, const std::string& bytes) {
    std::string changed = good;
    changed.replace(place, bytes.size(), bytes);
    return refusalOf(folder.write("bad.ctc", changed));
  };
  EXPECT_THAT(refusalWith(8, std::string("\4\0\0\0", 4)),
              HasSubstr("sample type in its header (bytes 8 to 11) is 4"));
  EXPECT_THAT(refusalWith(16, std::string("\0\0", 2)), HasSubstr("number of channels"));
  EXPECT_THAT(refusalWith(16, std::string("\xff\xff", 2)), HasSubstr("is -1"));
  EXPECT_THAT(refusalWith(20, std::string("\0\0\0\0", 4)), HasSubstr("number of time points"));
  EXPECT_THAT(refusalWith(20, std::string("\xff\xff\xff\x7f", 4)), HasSubstr("room for 100"));
  EXPECT_THAT(refusalWith(24, std::string("\0\0\xc0\x7f", 4)), HasSubstr("sampling frequency"));
  EXPECT_THAT(refusalOf(folder.write("short.ctc", good.substr(0, 20))), HasSubstr("no CTC file"));
  EXPECT_THAT(refusalOf(folder.path("missing.ctc")), HasSubstr("missing.ctc"));
}

} // namespace
} // namespace emeg
