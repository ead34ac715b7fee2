#include "tests/run/ExportedHost.h"
#include "tests/run/LoadedPlugin.h"
#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#if defined(__has_feature)
#define EMEG_HAS_FEATURE(feature) __has_feature(feature)
#else
#define EMEG_HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || EMEG_HAS_FEATURE(address_sanitizer)
#define EMEG_ADDRESS_SANITIZER 1
#else
#define EMEG_ADDRESS_SANITIZER 0
#endif

namespace emeg::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::MatchesRegex;

constexpr int couldNotLimit = 125;

/// No file of the host's process grows beyond a size: to the plug-in it looks like a disk that gets full.
class FullDisk : public PluginRun {
protected:
  HostRunResult runWithFilesUpTo(rlim_t nrOfBytes, const nlohmann::json& answers) const {
    HostRun made = host();
    made.beforeStart = [nrOfBytes] {
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit most{nrOfBytes, nrOfBytes};
      if (setrlimit(RLIMIT_FSIZE, &most) != 0) _exit(couldNotLimit);
    };
    return made.withAnswers(answers);
  }

  /// Checks the message, that the inputs are as they were, and what else there is.
  void expectFailure(rlim_t nrOfBytes, const nlohmann::json& answers,
                     std::vector<std::string> completed) const {
    const std::map<std::string, std::string> before = contents();
    const HostRunResult result = runWithFilesUpTo(nrOfBytes, answers);
    EXPECT_THAT(result.messageBoxes(), ElementsAre("Error writing file: <br>File too large."));
    EXPECT_EQ(result.exitStatus, 1) << result.standardError;
    for (const auto& [name, bytes] : before) {
      EXPECT_TRUE(readFile(path(name)) == bytes) << name;
      completed.push_back(name);
    }
    EXPECT_THAT(names(), testing::UnorderedElementsAreArray(completed));
  }

  /// A protocol of many intervals, larger than the recording of shortNoise(1, 2000).
  static std::string largeProtocol(const std::string& condition) {
    std::string intervals;
    for (int i = 0; i < 5000; ++i) intervals += "\r\n" + std::to_string(i) + " " + std::to_string(i + 1);
    return protocolText("usec", {condition + "\r\n5000" + intervals + "\r\nColor: 1 2 3"});
  }
  static constexpr rlim_t smallerThanAProtocol = 60000;
};

TEST_F(FullDisk, WhileChunkFilesAreMadeIsReportedAndNothingIsLeft) {
  // Chunk files of 20 kB.
  const std::string ctc = write(shortNoise(8, 20000));
  for (const rlim_t nrOfBytes : {9999u, 15000u, 19999u}) expectFailure(nrOfBytes, answers(ctc), {});
}

TEST_F(FullDisk, WhileTheRecordingIsWrittenIsReportedAndNothingIsLeft) {
  const std::string ctc = write(shortNoise(8, 20000));
  const rlim_t whole = fs::file_size(ctc);
  for (const rlim_t nrOfBytes : {rlim_t{30000}, whole / 2, whole - 1})
    expectFailure(nrOfBytes, answers(ctc), {});
  EXPECT_EQ(runWithFilesUpTo(whole, answers(ctc)).exitStatus, 0);
}

TEST_F(FullDisk, LeavesTheOutputOfAnEarlierRunAsItWas) {
  const std::string ctc = write(shortNoise(8, 20000));
  ASSERT_EQ(run(answers(ctc)).exitStatus, 0);
  expectFailure(fs::file_size(ctc) - 1, answers(ctc), {});
}

TEST_F(FullDisk, WhileTheProtocolIsWrittenLeavesTheCompleteRecording) {
  const std::string ctc = write(shortNoise(1, 2000));
  const std::string prt = write("run1.prt", largeProtocol("Task"));
  expectFailure(smallerThanAProtocol, answers(ctc, "", prt), {"run1_GRA.ctc"});
}

TEST_F(FullDisk, WhileTheTriggersOfAnEarlierRunAreWrittenBackLeavesWhatIsComplete) {
  const std::string ctc = write(shortNoise(1, 2000));
  const std::string prt = write("run1.prt", protocolText("usec", {"A\r\n1\r\n0 9\r\nColor: 1 2 3"}));
  write("run1_ArtifactsTriggers.prt", largeProtocol("HeartPulseTriggers"));
  expectFailure(smallerThanAProtocol, answers(ctc, "", prt), {"run1_GRA.ctc", "run1_GRA.prt"});
}

TEST_F(FullDisk, WhileTheDescriptionIsWrittenLeavesWhatIsComplete) {
  write(shortNoise(1, 2000));
  const std::string ccd = write("run1.ccd", descriptionBytes("run1.ctc", "", 300));
  expectFailure(smallerThanAProtocol, answers("", ccd), {"run1_GRA.ctc", "run1_GRA_ArtifactsTriggers.prt"});
}

/// A small file system of its own, where the machine lets a test mount one.
class SmallDisk : public PluginRun {
protected:
  ~SmallDisk() override {
    if (mounted_) umount2(folder_.path("eeg").c_str(), MNT_DETACH);
  }
  bool mounted(const char* options) {
    mounted_ = mount("tmpfs", folder_.path("eeg").c_str(), "tmpfs", 0, options) == 0;
    return mounted_;
  }
  bool mounted_ = false;
};

#define EMEG_NEEDS_A_SMALL_DISK(options)                                                                     \
  if (!mounted(options)) GTEST_SKIP() << "no file system can be mounted here: " << std::strerror(errno)

TEST_F(SmallDisk, TooSmallForTheRunIsRefusedWithBothFigures) {
  EMEG_NEEDS_A_SMALL_DISK("size=4m");
  const std::string ctc = write(shortNoise(8, 100000)); // 3.2 MB: chunk files and output need twice that
  const HostRunResult result = run(answers(ctc));
  EXPECT_THAT(result.messageBoxes(),
              ElementsAre(MatchesRegex("Not enough disk space beside " + ctc +
                                       ": [67] MB are needed, [01] MB are available.*")));
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(names(), ElementsAre("run1.ctc"));
}

TEST_F(SmallDisk, WithoutRoomForAnotherFileLeavesTheChunkFilesThatItTook) {
  EMEG_NEEDS_A_SMALL_DISK("size=4m,nr_inodes=10");
  const std::string ctc = write(shortNoise());
  const HostRunResult result = run(answers(ctc));
  ASSERT_EQ(result.messageBoxes().size(), 1u);
  EXPECT_THAT(result.messageBoxes()[0], MatchesRegex("Error #28 while creating chunk [0-9]+\\."));
  EXPECT_EQ(result.exitStatus, 1);
  const size_t nrOfFiles = names().size();
  EXPECT_EQ(result.messageBoxes()[0],
            "Error #28 while creating chunk " + std::to_string(nrOfFiles - 1) + ".");
}

TEST_F(SmallDisk, FilledByOthersDuringTheRunIsReportedAndLeavesNothing) {
  EMEG_NEEDS_A_SMALL_DISK("size=4m");
  ExportedHost host;
  host.files["*.ctc"] = write(shortNoise(2, 20000));
  const std::string input = readFile(path("run1.ctc"));
  host.onLog = [this](const std::string& line) {
    if (line != "// EMEG artifacts > Writing CTC") return;
    std::ofstream filler(path("filler"), std::ios::binary);
    const std::string block(4096, 'x');
    while (filler.write(block.data(), static_cast<std::streamsize>(block.size())).flush()) {
    }
  };
  EXPECT_FALSE(LoadedPlugin().execute());
  EXPECT_THAT(host.messageBoxes, ElementsAre("Error writing file: <br>No space left on device."));
  EXPECT_THAT(names(), ElementsAre("filler", "run1.ctc"));
  EXPECT_TRUE(readFile(path("run1.ctc")) == input);
}

class LittleMemory : public PluginRun {
protected:
  HostRunResult runWithMemory(rlim_t megabytes, const std::string& ctc) const {
    HostRun made = host();
    made.beforeStart = [megabytes] {
      const rlimit most{megabytes * 1000000, megabytes * 1000000};
      if (setrlimit(RLIMIT_AS, &most) != 0) _exit(couldNotLimit);
    };
    return made.withAnswers(answers(ctc));
  }
};

TEST_F(LittleMemory, IsReportedBeforeAnyChunkFileIsMadeAndOtherwiseEnough) {
  if (EMEG_ADDRESS_SANITIZER) GTEST_SKIP() << "the address sanitizer needs more memory than these limits";
  Recording recording = shortNoise(1, 1000000);
  recording.dataType = 3;
  const std::string ctc = write(recording);
  int nrOfRefused = 0;
  int nrOfCompleted = 0;
  for (const rlim_t megabytes : {50, 75, 100, 110, 120, 130, 140, 150, 175, 200, 400}) {
    const HostRunResult result = runWithMemory(megabytes, ctc);
    if (result.exitStatus == 0) {
      ++nrOfCompleted;
      continue;
    }
    ++nrOfRefused;
    EXPECT_EQ(result.exitStatus, 1) << megabytes << " MB: " << result.standardError;
    EXPECT_THAT(
        result.messageBoxes(),
        ElementsAre(MatchesRegex("Not enough memory: [0-9]+ MB are needed, [0-9]+ MB are available\\..*")))
        << megabytes << " MB";
    if (nrOfCompleted == 0) {
      EXPECT_THAT(names(), ElementsAre("run1.ctc"));
    }
  }
  EXPECT_GE(nrOfRefused, 2);
  EXPECT_GE(nrOfCompleted, 2);
}

} // namespace
} // namespace emeg::test
