#include "tests/plugin/converter/Converters.h"

#include "plugin/converter/run/MachineResources.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include <sys/resource.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// No file of this process may grow beyond some bytes while this lives.
class FileSizeLimit {
public:
  explicit FileSizeLimit(rlim_t bytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &old_);
    rlimit limit = old_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, oldHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
  rlimit old_{};
  void (*oldHandler_)(int);
};

const std::string tooLarge = "Error writing file: <br>File too large.";

/// Runs the plug-in's converter on a recording of 12 channels with a limit on the size of every file.
struct FailingDisk : ::testing::Test {
  FailingDisk() : recording(wavyRecording(12, 6400, 250)), chosen(recording) {
    chosen.host.integerAnswers = {1};
    chosen.host.yesNoAnswers = {1};
  }
  void expectFailure(rlim_t bytes, const std::string& message, const Lines& namesAfterwards) {
    {
      const FileSizeLimit limit(bytes);
      PluginConverter converter;
      converter.options.correctArtifacts = true;
      EXPECT_FALSE(converter.start());
    }
    EXPECT_EQ(chosen.host.boxes(), Lines{message});
    EXPECT_EQ(chosen.folder.names(), namesAfterwards);
    EXPECT_EQ(readFile(chosen.ctcPath()), recording.bytes());
    EXPECT_FALSE(chosen.host.logged(line("Operations successfully executed!")));
  }
  Recording recording;
  ChosenRecording chosen;
};

TEST_F(FailingDisk, AChunkThatDoesNotFitEndsTheRun) {
  expectFailure(9000, tooLarge, Lines{"run1.ctc"}); // chunks have 9600 bytes
  EXPECT_FALSE(chosen.host.logged(line("Processing channel #0")));
}

TEST_F(FailingDisk, AnOutputThatDoesNotFitNeverAppearsUnderItsName) {
  expectFailure(20000, tooLarge, Lines{"run1.ctc"});
  EXPECT_EQ(chosen.host.logLines().back(), line("Writing CTC"));
}

TEST_F(FailingDisk, AnOlderOutputSurvivesAFailedOne) {
  writeFile(chosen.folder.path("run1_GRA.ctc"), "older");
  expectFailure(20000, tooLarge, (Lines{"run1.ctc", "run1_GRA.ctc"}));
  EXPECT_EQ(readFile(chosen.folder.path("run1_GRA.ctc")), "older");
}

TEST(FailingDiskAtTheEnd, ADescriptionThatDoesNotFitEndsTheRun) {
  Recording recording; // the output has 92 bytes, the description 1004
  recording.samples.assign(1, std::vector<double>(15, 3.0));
  ChosenRecording chosen(recording);
  chosen.host.floatAnswers = {0, 100};
  chosen.host.integerAnswers = {0};
  {
    const FileSizeLimit limit(600);
    QuietConverter converter;
    converter.options.selectTimeInterval = true;
    EXPECT_FALSE(converter.start());
  }
  EXPECT_EQ(chosen.host.boxes(), Lines{tooLarge});
  EXPECT_EQ(chosen.folder.names(), (Lines{"run1.ctc", "run1_0-100ms.ctc"}));
}

TEST(FailingDiskAtTheEnd, AProtocolThatDoesNotFitEndsTheRun) {
  Recording recording;
  recording.samples.assign(1, std::vector<double>(15, 3.0));
  ChosenRecording chosen(recording);
  writeFile(chosen.folder.path("stim.prt"), protocolText("usec", {"A\r\n1\r\n1 2\r\n1 2 3"}));
  chosen.host.fileAnswers[1] = chosen.folder.path("stim.prt");
  chosen.host.floatAnswers = {0, 100};
  chosen.host.integerAnswers = {0};
  {
    const FileSizeLimit limit(200);
    QuietConverter converter;
    converter.options.selectTimeInterval = true;
    EXPECT_FALSE(converter.start());
  }
  EXPECT_EQ(chosen.host.boxes(), Lines{tooLarge});
  EXPECT_EQ(chosen.host.logLines().back(), line("Writing PRT"));
  EXPECT_EQ(chosen.folder.names(), (Lines{"run1.ctc", "run1_0-100ms.ctc", "stim.prt"}));
}

TEST(FailingDiskAtTheEnd, AnOutputPathThatIsAFolderIsReported) {
  ChosenRecording chosen(countingRecording(1, 50));
  std::filesystem::create_directory(chosen.folder.path("run1_0-100ms.ctc"));
  chosen.host.floatAnswers = {0, 100};
  chosen.host.integerAnswers = {0};
  QuietConverter converter;
  converter.options.selectTimeInterval = true;
  EXPECT_FALSE(converter.start());
  EXPECT_EQ(chosen.host.boxes(), Lines{"Error writing file: <br>Is a directory."});
}

TEST(Shortage, IsEmptyWhenTheRunFits) {
  EXPECT_EQ(describeShortage({100, 100}, {100, 100}, "/data/run1.ctc"), "");
  EXPECT_EQ(describeShortage({100, 100}, {unknownAmount, unknownAmount}, "/data/run1.ctc"), "");
}

TEST(Shortage, NamesNeededAndAvailableAmounts) {
  const std::string memory = describeShortage({5000000000, 1}, {2000000000, 2}, "/data/run1.ctc");
  EXPECT_NE(memory.find("emory"), std::string::npos);
  EXPECT_NE(memory.find("5000 MB"), std::string::npos);
  EXPECT_NE(memory.find("2000 MB"), std::string::npos);
  EXPECT_EQ(memory.find("disk"), std::string::npos);

  const std::string disk = describeShortage({1, 7000000000}, {2, 3000000000}, "/data/run1.ctc");
  EXPECT_NE(disk.find("disk"), std::string::npos);
  EXPECT_NE(disk.find("7000 MB"), std::string::npos);
  EXPECT_NE(disk.find("3000 MB"), std::string::npos);
  EXPECT_NE(disk.find("/data/run1.ctc"), std::string::npos);

  const std::string both = describeShortage({5000000000, 7000000000}, {1, 1}, "/data/run1.ctc");
  EXPECT_NE(both.find("5000 MB"), std::string::npos);
  EXPECT_NE(both.find("7000 MB"), std::string::npos);
  EXPECT_NE(both.find("<br>"), std::string::npos);
}

TEST(Shortage, OfThisMachineIsFoundOut) {
  const MachineResources here =
      availableResources(std::filesystem::temp_directory_path().string() + "/x.ctc");
  EXPECT_GT(here.memory, 1000000u);
  EXPECT_LT(here.memory, unknownAmount);
  EXPECT_GT(here.disk, 0u);
}

TEST(Shortage, OfAHugeRecordingIsOneMessageBoxBeforeAnyChunkFile) {
  // 1000 channels of 2 000 000 000 time points: 8 TB that are nearly all hole.
  TestFolder folder;
  ScriptedHost host;
  const std::string path = folder.path("run1.ctc");
  writeFile(path, ctcBytes(1, 2, 1000, 2000000000, 5000, ""));
  std::error_code fileSystemHasNoSuchFiles;
  std::filesystem::resize_file(path, 8000000000032, fileSystemHasNoSuchFiles);
  host.fileAnswers = {"", "", path};
  host.integerAnswers = {1};
  host.yesNoAnswers = {1};
  PluginConverter converter;
  EXPECT_FALSE(converter.start());
  ASSERT_EQ(host.boxes().size(), 1u);
  EXPECT_NE(host.boxes()[0].find("MB are needed"), std::string::npos) << host.boxes()[0];
  EXPECT_EQ(folder.names(), Lines{"run1.ctc"});
}

TEST(Shortage, ARecordingLongerThanAnyTransformIsRefused) {
  ScriptedHost host;
  PluginConverter converter;
  pretendInput(converter, 1, 2147483647, 5000);
  host.integerAnswers = {1};
  host.yesNoAnswers = {1};
  EXPECT_FALSE(converter.askParameters());
  EXPECT_EQ(host.boxes().size(), 1u);
}

} // namespace
} // namespace emeg
