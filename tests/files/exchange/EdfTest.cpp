#include "tests/files/ScratchFolder.h"
#include "tests/files/exchange/SampleRecordings.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace emeg {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class EdfFiles : public testing::TestWithParam<const char*> {
protected:
  bool is24Bit() const { return std::string(GetParam()) == "r.bdf"; }
  std::string path() const { return folder_.path(GetParam()); }
  ScratchFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(Edf, EdfFiles, testing::Values("r.edf", "r.bdf"));

TEST_P(EdfFiles, ComeBackWithNamesUnitsLengthAndValuesWithinAStep) {
  SampleRecording written = makeRecording({"Fp1", "EMG left", "Temp"}, 12345, 5000);
  written.header.channels[1].unit = "mV";
  written.header.channels[1].microvoltsPerUnit = 1000;
  written.header.channels[2].unit = "\xC2\xB0"
                                    "C";
  written.header.channels[2].microvoltsPerUnit = 0;
  written.header.channels[0].transducer = "AgCl";
  written.header.channels[0].prefilter = "HP:0.016Hz";
  written.header.start = StartTime{2023, 12, 31, 23, 59, 58, 123400};
  written.header.texts = {{"Patient code", "P-17"}, {"Patient's sex", "F"}, {"Equipment", "MR amp"}};
  EXPECT_THAT(writeRecordingTo(path(), written, withRanges(written)), IsEmpty());
  EXPECT_THAT(folder_.names(), ElementsAre(GetParam()));

  const SampleRecording read = readRecordingFrom(path());
  EXPECT_EQ(read.header.samplingFrequency, 5000);
  EXPECT_EQ(read.header.nrOfTimePoints, 12345) << "no padding where a record can be found that divides it";
  ASSERT_EQ(read.header.nrOfChannels(), 3);
  EXPECT_EQ(read.header.channels[0].name, "Fp1");
  EXPECT_EQ(read.header.channels[0].unit, "uV");
  EXPECT_EQ(read.header.channels[0].transducer, "AgCl");
  EXPECT_EQ(read.header.channels[0].prefilter, "HP:0.016Hz");
  EXPECT_EQ(read.header.channels[1].unit, "mV");
  EXPECT_EQ(read.header.channels[1].kind, ChannelKind::Emg);
  EXPECT_EQ(read.header.channels[2].unit, "degC");
  EXPECT_FALSE(read.header.channels[2].isVoltage());
  ASSERT_TRUE(read.header.start);
  EXPECT_EQ(read.header.start->year, 2023);
  EXPECT_EQ(read.header.start->microsecond, 123400);
  std::vector<std::string> texts;
  for (const RecordingText& text : read.header.texts) texts.push_back(text.text);
  EXPECT_THAT(texts, ElementsAre("P-17", "F", "MR amp"));
  for (size_t c = 0; c < 3; ++c) {
    const double step = read.header.channels[c].stored->step;
    EXPECT_LT(step, is24Bit() ? 1e-4 : 0.02);
    for (int64_t t = 0; t < 12345; t += 7)
      ASSERT_NEAR(read.at(static_cast<int>(c), t), written.at(static_cast<int>(c), t), 0.501 * step);
  }
}

TEST_P(EdfFiles, IntegersOfASourceStayTheSame) {
  SampleRecording written = makeRecording({"Fp1", "Cz"}, 1000, 250);
  const StoredIntegers amplifier = {0.5, 3.5, -32768, 32767};
  for (size_t i = 0; i < written.values.size(); ++i)
    written.values[i] = amplifier.valueOf(static_cast<int64_t>(i * 7919 % 65536) - 32768);
  for (RecordingChannel& channel : written.header.channels) channel.stored = amplifier;
  EXPECT_FALSE(needsRanges(path(), written.header));
  EXPECT_THAT(writeRecordingTo(path(), written), IsEmpty());
  const SampleRecording read = readRecordingFrom(path());
  EXPECT_EQ(read.values, written.values);
  EXPECT_EQ(read.header.channels[1].stored->smallest, -32768);
  EXPECT_EQ(read.header.channels[1].stored->integerOf(read.at(1, 17)),
            amplifier.integerOf(written.at(1, 17)));
}

TEST_P(EdfFiles, MarkersComeBackWithinATenthOfAMillisecond) {
  SampleRecording written = makeRecording({"Cz"}, 20000, 5000);
  for (int i = 0; i < 700; ++i) // far more than seconds
    written.header.markers.push_back(markerAt(i * 28.37, std::to_string(i) + " m", i % 3 * 17.0));
  written.header.markers[5].description = "\xC3\xA4 \xE2\x9C\x93, S  1";
  EXPECT_THAT(writeRecordingTo(path(), written, withRanges(written)), IsEmpty());
  const SampleRecording read = readRecordingFrom(path());
  ASSERT_EQ(read.header.markers.size(), written.header.markers.size());
  for (size_t i = 0; i < written.header.markers.size(); ++i) {
    EXPECT_EQ(read.header.markers[i].description, written.header.markers[i].description);
    EXPECT_NEAR(read.header.markers[i].onset, written.header.markers[i].onset, 0.5001e-4 * 5000);
    EXPECT_NEAR(read.header.markers[i].duration, written.header.markers[i].duration, 0.5001e-4 * 5000);
  }
}

TEST_P(EdfFiles, WhatTheFormatCannotHoldIsSaid) {
  SampleRecording written =
      makeRecording({"A name of many characters 1", "A name of many characters 2"}, 100003, 100);
  written.header.markers = {markerAt(-5, "early"), markerAt(7, std::string(41, 'x'))};
  written.header.texts = {{"Comment", "free"}};
  written.values[3] = std::numeric_limits<double>::quiet_NaN();
  written.values[4] = std::numeric_limits<double>::infinity();
  WriteOptions options;
  options.ranges.assign(2, {-400, 400});
  EXPECT_THAT(writeRecordingTo(path(), written, options),
              ElementsAre(AllOf(HasSubstr("16 plain characters"), HasSubstr("1 more")),
                          HasSubstr("filled up"), HasSubstr("\"Comment\""), HasSubstr("1 text was cut"),
                          HasSubstr("1 marker was moved"),
                          HasSubstr("2 samples that are no finite numbers")));
  const SampleRecording read = readRecordingFrom(path());
  EXPECT_NE(read.header.channels[0].name, read.header.channels[1].name);
  EXPECT_LT(read.header.nrOfTimePoints - 100003, 100);
  EXPECT_NEAR(read.values[3], 0, 0.02);
  EXPECT_EQ(read.header.markers[1].description, std::string(40, 'x'));
}

TEST_P(EdfFiles, ValuesOutsideTheAnnouncedRangeAreAnErrorAndNeverClipped) {
  SampleRecording written = makeRecording({"Cz"}, 1000, 100);
  WriteOptions options;
  options.ranges = {{-100, 100}};
  EXPECT_THROW(writeRecordingTo(path(), written, options), RecordingError);
  EXPECT_THAT(folder_.names(), IsEmpty());
  EXPECT_TRUE(needsRanges(path(), written.header));
  EXPECT_THROW(writeRecordingTo(path(), written), std::invalid_argument);
}

TEST_P(EdfFiles, AnyRateAndLengthKeepsRateAndTimes) {
  for (const double rate :
       {0.5, 1.0, 99.99, 250.0, 1000.0 / 3, 512.0, 600.0, 2048.0, 5000.0, 19531.25, 25000.0}) {
    for (const int64_t length : {1, 2, 997, 5003}) {
      SampleRecording written = makeRecording({"Cz"}, length, rate);
      const std::vector<std::string> warnings = writeRecordingTo(path(), written, withRanges(written));
      SCOPED_TRACE(std::to_string(rate) + " Hz, " + std::to_string(length));
      const SampleRecording read = readRecordingFrom(path());
      if (std::abs(read.header.samplingFrequency / rate - 1) > 1e-9) {
        EXPECT_THAT(warnings, testing::Contains(HasSubstr("the sampling frequency is")));
      }
      ASSERT_GE(read.header.nrOfTimePoints, length);
      EXPECT_LE(static_cast<double>(read.header.nrOfTimePoints - length) / rate, 2.0)
          << rate << " Hz, " << length;
      std::filesystem::remove(path());
    }
  }
}

TEST_P(EdfFiles, MoreChannelsThanEdflibHoldsAreRefused) {
  std::vector<std::string> names;
  for (int c = 0; c < 640; ++c) names.push_back(std::to_string(c) + "C");
  SampleRecording written = makeRecording(names, 20, 20);
  EXPECT_THROW(writeRecordingTo(path(), written, withRanges(written)), RecordingError);
  EXPECT_THAT(folder_.names(), IsEmpty());
  names.pop_back();
  written = makeRecording(names, 20, 20);
  writeRecordingTo(path(), written, withRanges(written));
  EXPECT_EQ(readRecordingFrom(path()).header.nrOfChannels(), 639);
}

/// Replaces bytes of a good file and tells how the result is refused.
class BrokenEdf : public testing::Test {
protected:
  BrokenEdf() {
    const SampleRecording written = makeRecording({"Fp1", "Cz"}, 1000, 100);
    writeRecordingTo(folder_.path("good.edf"), written, withRanges(written));
    good_ = folder_.read("good.edf");
  }
  std::string refusalWith(size_t place, const std::string& bytes) const {
    std::string changed = good_;
    changed.replace(place, bytes.size(), bytes);
    return refusalOf(folder_.write("bad.edf", changed));
  }
  ScratchFolder folder_;
  std::string good_;
};

TEST_F(BrokenEdf, IsRefusedWithThePlaceAndTheRemedy) {
  EXPECT_THAT(refusalWith(0, "1       "), HasSubstr("neither EDF's nor BDF's"));
  EXPECT_THAT(refusalWith(192, "EDF+D"), AllOf(HasSubstr("discontinuous"), HasSubstr("Export")));
  EXPECT_THAT(refusalWith(236, "-1      "), HasSubstr("not ended properly"));
  EXPECT_THAT(refusalWith(236, "99999999"), HasSubstr("cut off"));
  EXPECT_THAT(refusalWith(236, "1       "), HasSubstr("does not announce"));
  EXPECT_THAT(refusalWith(236, "many    "), HasSubstr("number of data records in its header is \"many\""));
  EXPECT_THAT(refusalWith(244, "0       "), HasSubstr("duration of a data record"));
  EXPECT_THAT(refusalWith(244, "nan     "), HasSubstr("duration of a data record"));
  EXPECT_THAT(refusalWith(252, "0   "), HasSubstr("number of signals"));
  EXPECT_THAT(refusalWith(252, "9999"), HasSubstr("ends within its header"));
  EXPECT_THAT(refusalWith(252, "-3  "), HasSubstr("number of signals"));
  constexpr size_t samplesAt = 256 + 3 * (16 + 80 + 8 + 8 + 8 + 8 + 8 + 80);
  EXPECT_THAT(refusalWith(samplesAt, "0       "), HasSubstr("number of samples of signal \"Fp1\""));
  constexpr size_t physicalMaximumAt = 256 + 3 * (16 + 80 + 8 + 8);
  EXPECT_THAT(refusalWith(physicalMaximumAt, "loud    "), HasSubstr("physical maximum of signal \"Fp1\""));
  constexpr size_t digitalMaximumAt = 256 + 3 * (16 + 80 + 8 + 8 + 8 + 8);
  EXPECT_THAT(refusalWith(digitalMaximumAt, "-32768  "), HasSubstr("range of signal \"Fp1\" is empty"));
  EXPECT_THAT(refusalOf(folder_.write("bad.edf", good_.substr(0, 100))), HasSubstr("ends within its header"));
  EXPECT_THAT(refusalOf(folder_.write("bad.edf", good_.substr(0, good_.size() - 1))), HasSubstr("cut off"));
  EXPECT_THAT(refusalOf(folder_.write("bad.edf", good_ + "x")), HasSubstr("1 bytes"));
  EXPECT_THAT(refusalOf(folder_.write("bad.edf", "")), HasSubstr("ends within its header"));
}

TEST_F(BrokenEdf, ChannelsOfOtherRatesAreNamedAndCanBeLeftOut) {
  // Two signals of 100 and 50 samples a record: the header's count is halved and the data cut to fit.
  const SampleRecording written = makeRecording({"Fp1", "Cz", "Slow"}, 1000, 100);
  writeRecordingTo(folder_.path("rates.edf"), written, withRanges(written));
  std::string bytes = folder_.read("rates.edf");
  constexpr size_t headerSize = 256 * 5;
  constexpr size_t samplesAt = 256 + 4 * (16 + 80 + 8 + 8 + 8 + 8 + 8 + 80);
  const size_t perRecord = std::stoul(bytes.substr(samplesAt, 8));
  const size_t annotations = std::stoul(bytes.substr(samplesAt + 24, 8));
  const size_t recordSize = 2 * (3 * perRecord + annotations);
  std::string changed = bytes.substr(0, headerSize);
  std::string half = std::to_string(perRecord / 2);
  half.resize(8, ' ');
  changed.replace(samplesAt + 16, 8, half);
  for (size_t at = headerSize; at < bytes.size(); at += recordSize)
    changed += bytes.substr(at, 5 * perRecord) + bytes.substr(at + 6 * perRecord, 2 * annotations);
  const std::string path = folder_.write("rates.edf", changed);

  EXPECT_THAT(refusalOf(path),
              AllOf(HasSubstr("\"Slow\" has another one than the 2 others"), HasSubstr("--channels")));
  const SampleRecording fast = readRecordingFrom(path, {{"Cz", "Fp1"}});
  EXPECT_EQ(fast.header.samplingFrequency, 100);
  EXPECT_EQ(fast.header.nrOfTimePoints, 1000);
  EXPECT_NEAR(fast.at(0, 500), written.at(1, 500), 0.01);
  const SampleRecording slow = readRecordingFrom(path, {{"Slow"}});
  EXPECT_EQ(slow.header.samplingFrequency, 50);
  EXPECT_EQ(slow.header.nrOfTimePoints, 500);
}

} // namespace
} // namespace emeg
