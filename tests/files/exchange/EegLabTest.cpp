#include "files/exchange/Rehearsal.h"
#include "tests/files/ScratchFolder.h"
#include "tests/files/exchange/SampleRecordings.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace emeg {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

std::string sample(const std::string& name) {
  return std::string(EMEG_SAMPLES) + "/" + name;
}

/// Data sets that samples/make_set_files.py wrote with SciPy and h5py, all with the same content.
class EegLabFiles : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(EegLab, EegLabFiles,
                         testing::Values("plain.set", "compressed.set", "doubles.set", "flat.set",
                                         "beside.set", "v73.set", "v73compressed.set"));

TEST_P(EegLabFiles, AreReadWithChannelsSamplesAndEvents) {
  const SampleRecording read = readRecordingFrom(sample(GetParam()));
  EXPECT_THAT(read.header.warnings, IsEmpty());
  EXPECT_EQ(read.header.samplingFrequency, 250);
  ASSERT_EQ(read.header.nrOfTimePoints, 500);
  ASSERT_EQ(read.header.nrOfChannels(), 3);
  EXPECT_EQ(read.header.channels[1].name, "Cz");
  EXPECT_EQ(read.header.channels[1].type, "EEG");
  EXPECT_EQ(read.header.channels[2].kind, ChannelKind::Ecg);
  for (int c = 0; c < 3; ++c)
    for (int64_t t = 0; t < 500; ++t) ASSERT_EQ(read.at(c, t), 100.0 * c + static_cast<double>(t) / 8);

  ASSERT_EQ(read.header.markers.size(), 4u);
  EXPECT_EQ(read.header.markers[0].description, "S  1");
  EXPECT_EQ(read.header.markers[0].onset, 0);
  EXPECT_EQ(read.header.markers[1].description, "7");
  EXPECT_EQ(read.header.markers[1].onset, 9.5);
  EXPECT_EQ(read.header.markers[1].duration, 2);
  EXPECT_EQ(read.header.markers[2].description, "boundary");
  EXPECT_EQ(read.header.markers[3].description, "\xC3\x84\xC3\x96, \xE2\x9C\x93");
  ASSERT_EQ(read.header.texts.size(), 1u);
  EXPECT_EQ(read.header.texts[0].text, "made by a script");
}

TEST(EegLab, RenamedSetsAreFoundUnderTheSetsName) {
  const ScratchFolder folder;
  std::filesystem::copy(sample("beside.set"), folder.path("renamed.set"));
  EXPECT_THAT(refusalOf(folder.path("renamed.set")),
              AllOf(HasSubstr("beside.fdt"), HasSubstr("put it there")));
  std::filesystem::copy(sample("beside.fdt"), folder.path("renamed.fdt"));
  const SampleRecording read = readRecordingFrom(folder.path("renamed.set"));
  EXPECT_EQ(read.at(1, 8), 101);
  EXPECT_THAT(read.header.warnings, testing::ElementsAre(HasSubstr("renamed.fdt")));
  std::filesystem::resize_file(folder.path("renamed.fdt"), 5999);
  EXPECT_THAT(refusalOf(folder.path("renamed.set")), AllOf(HasSubstr("cut off"), HasSubstr("499 samples")));
}

TEST(EegLab, WhatIsNoContinuousDataSetIsRefused) {
  EXPECT_THAT(refusalOf(sample("epochs.set")), HasSubstr("5 epochs"));
  EXPECT_THAT(refusalOf(sample("contradiction.set")), HasSubstr("contradict each other"));
  EXPECT_THAT(refusalOf(sample("other.set")), HasSubstr("no EEGLAB data set"));
  EXPECT_THAT(refusalOf(sample("missing.set")), HasSubstr("No such file"));
  EXPECT_THAT(refusalOf(sample("beside.fdt")), HasSubstr("give the .set file"));
  const ScratchFolder folder;
  EXPECT_THAT(refusalOf(folder.write("text.set", "no MAT file")), HasSubstr("is no MAT file"));
  EXPECT_THAT(refusalOf(folder.write("empty.set", "")), HasSubstr("is no MAT file"));
}

TEST(EegLab, CutOffFilesAreRefused) {
  const ScratchFolder folder;
  for (const char* name : {"plain.set", "compressed.set", "v73.set"}) {
    std::filesystem::copy(sample(name), folder.path(name));
    const auto size = std::filesystem::file_size(folder.path(name));
    for (const double part : {0.9, 0.5, 0.3, 0.1, 0.01}) {
      std::filesystem::resize_file(folder.path(name),
                                   static_cast<uintmax_t>(part * static_cast<double>(size)));
      EXPECT_NE(refusalOf(folder.path(name)), "") << name << " cut to " << part;
    }
  }
}

TEST(EegLab, WhatCrashesALibraryIsTriedInACopyOfTheProcess) {
  EXPECT_TRUE(rehearse([] {}).survived);
  EXPECT_EQ(rehearse([] {}).error, "");
  EXPECT_EQ(rehearse([] { throw std::runtime_error("no crash"); }).error, "no crash");
  EXPECT_FALSE(rehearse([] { std::abort(); }).survived);
  EXPECT_FALSE(rehearse([] { std::raise(SIGSEGV); }).survived);
}

TEST(EegLab, DamagedFilesAreRefusedOrReadAndNeverCrash) {
  const ScratchFolder folder;
  std::mt19937 random(1);
  for (const char* name : {"plain.set", "compressed.set", "v73.set"}) {
    std::ifstream file(sample(name), std::ios::binary);
    const std::string good{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    for (int attempt = 0; attempt < 30; ++attempt) {
      std::string bad = good;
      for (int change = 0; change < 20; ++change)
        bad[random() % std::min<size_t>(bad.size(), 4000)] = static_cast<char>(random());
      refusalOf(folder.write("bad.set", bad));
    }
  }
}

TEST(EegLab, UnpackingLeavesNothingBehind) {
  const ScratchFolder folder;
  const char* const before = std::getenv("TMPDIR");
  const std::string old = before == nullptr ? "" : before;
  setenv("TMPDIR", folder.path().c_str(), 1);
  {
    const auto reader = openRecording(sample("compressed.set"));
    EXPECT_THAT(folder.names(), IsEmpty()) << "the scratch file has no name even while it is used";
  }
  setenv("TMPDIR", folder.path("missing").c_str(), 1);
  EXPECT_THAT(refusalOf(sample("compressed.set")), AllOf(HasSubstr("Unpacking"), HasSubstr("TMPDIR")));
  if (before == nullptr)
    unsetenv("TMPDIR");
  else
    setenv("TMPDIR", old.c_str(), 1);
}

} // namespace
} // namespace emeg
