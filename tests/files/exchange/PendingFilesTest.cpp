#include "files/exchange/PendingFiles.h"

#include "files/exchange/Recording.h"
#include "files/exchange/TemporaryNames.h"
#include "tests/files/FileSizeLimit.h"
#include "tests/files/ScratchFolder.h"
#include "tests/files/exchange/SampleRecordings.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace emeg {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void fill(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

TEST(PendingFiles, GetTheirNamesOnlyTogether) {
  const ScratchFolder folder;
  PendingFiles pending(false);
  fill(pending.add(folder.path("r.eeg")), "data");
  fill(pending.add(folder.path("r.vhdr")), "header");
  EXPECT_FALSE(folder.has("r.eeg"));
  pending.commit();
  EXPECT_THAT(folder.names(), ElementsAre("r.eeg", "r.vhdr"));
  EXPECT_EQ(folder.read("r.vhdr"), "header");
}

TEST(PendingFiles, NothingRemainsWithoutACommit) {
  const ScratchFolder folder;
  {
    PendingFiles pending(false);
    fill(pending.add(folder.path("r.eeg")), "data");
    EXPECT_EQ(folder.nrOfEntries(), 1);
  }
  EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(PendingFiles, TwoWritersOfOneNameNeverMeet) {
  const ScratchFolder folder;
  PendingFiles one(false);
  PendingFiles other(false);
  fill(one.add(folder.path("r.vhdr")), "one");
  fill(other.add(folder.path("r.vhdr")), "other");
  one.commit();
  EXPECT_THROW(other.commit(), RecordingError) << "the name was taken meanwhile";
  EXPECT_EQ(folder.read("r.vhdr"), "one");
}

TEST(PendingFiles, ALaterFailureTakesTheSetBack) {
  const ScratchFolder folder;
  PendingFiles pending(false);
  fill(pending.add(folder.path("r.eeg")), "data");
  fill(pending.add(folder.path("r.vhdr")), "header");
  folder.write("r.vhdr", "came meanwhile");
  EXPECT_THROW(pending.commit(), RecordingError);
  EXPECT_FALSE(folder.has("r.eeg"));
  EXPECT_EQ(folder.read("r.vhdr"), "came meanwhile");
}

TEST(PendingFiles, ExistingFilesStayUnlessTheyMayBeReplaced) {
  const ScratchFolder folder;
  folder.write("r.vhdr", "old");
  PendingFiles careful(false);
  EXPECT_THROW(careful.add(folder.path("r.vhdr")), RecordingError);
  {
    PendingFiles replacing(true);
    fill(replacing.add(folder.path("r.vhdr")), "new");
    EXPECT_EQ(folder.read("r.vhdr"), "old");
    replacing.commit();
  }
  EXPECT_EQ(folder.read("r.vhdr"), "new");
}

TEST(PendingFiles, AnInterruptedProgramLeavesNoTemporaryFiles) {
  const ScratchFolder folder;
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    const pid_t program = fork();
    if (program == 0) {
      removeTemporariesWhenInterrupted();
      PendingFiles pending(false);
      const std::string first = pending.add(folder.path("r.eeg"));
      pending.add(folder.path("r.vhdr"));
      if (!std::filesystem::exists(first)) _exit(0);
      raise(number);
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(program, &status, 0), program);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number)
        << "the caller sees what ended the program";
    EXPECT_THAT(folder.names(), IsEmpty());
  }
}

TEST(PendingFiles, FoldersDevicesAndMissingFoldersAreRefused) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.path("taken.vhdr"));
  PendingFiles pending(true);
  EXPECT_THROW(pending.add(folder.path("taken.vhdr")), RecordingError);
  EXPECT_THROW(pending.add(folder.path("missing/r.vhdr")), RecordingError);
  EXPECT_THROW(pending.add("/dev/null"), RecordingError);
  EXPECT_EQ(folder.nrOfEntries(), 1);
}

TEST(RecordingWriter, AFullDiskLeavesNothing) {
  for (const char* name : {"r.ctc", "r.vhdr", "r.edf", "r.bdf"}) {
    const ScratchFolder folder;
    const SampleRecording recording = makeRecording({"Cz", "Pz"}, 20000, 100);
    {
      const FileSizeLimit limit(10000);
      EXPECT_THROW(writeRecordingTo(folder.path(name), recording, withRanges(recording)), RecordingError)
          << name;
    }
    EXPECT_THAT(folder.names(), IsEmpty()) << name;
  }
}

TEST(RecordingWriter, ARecordingThatIsNotFinishedLeavesNothing) {
  for (const char* name : {"r.ctc", "r.vhdr", "r.edf", "r.bdf"}) {
    const ScratchFolder folder;
    const SampleRecording recording = makeRecording({"Cz"}, 100, 100);
    {
      const auto writer = createRecording(folder.path(name), recording.header, withRanges(recording));
      writer->write(50, std::span(recording.values).first(50));
      EXPECT_THROW(writer->finish(), std::out_of_range) << "half of it is missing";
    }
    EXPECT_THAT(folder.names(), IsEmpty()) << name;
  }
}

TEST(RecordingWriter, RecordingsWithoutChannelsTimeOrRateAreRefused) {
  const ScratchFolder folder;
  SampleRecording recording = makeRecording({"Cz"}, 100, 100);
  recording.header.samplingFrequency = 0;
  EXPECT_THROW(createRecording(folder.path("r.vhdr"), recording.header), RecordingError);
  recording.header.samplingFrequency = 100;
  recording.header.nrOfTimePoints = 0;
  EXPECT_THROW(createRecording(folder.path("r.vhdr"), recording.header), RecordingError);
  recording.header.nrOfTimePoints = 100;
  recording.header.channels.clear();
  EXPECT_THROW(createRecording(folder.path("r.vhdr"), recording.header), RecordingError);
  EXPECT_THROW(createRecording(folder.path("r.wav"), makeRecording({"Cz"}, 1, 1).header), RecordingError);
  EXPECT_THROW(createRecording(folder.path("r.set"), makeRecording({"Cz"}, 1, 1).header), RecordingError);
  EXPECT_THAT(folder.names(), IsEmpty());
}

} // namespace
} // namespace emeg
