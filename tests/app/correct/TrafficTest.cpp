#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace emeg {

namespace {

/// Bytes that a program has read and written.
struct Traffic {
  int status = -1;
  double read = 0;
  double written = 0;
};

Traffic trafficOf(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    execv(EMEG_PROGRAM, argv.data());
    _exit(126);
  }
  // The figures can be read until the child has been waited for.
  siginfo_t ended{};
  waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
  Traffic traffic;
  std::ifstream figures("/proc/" + std::to_string(child) + "/io");
  std::string label;
  double bytes = 0;
  while (figures >> label >> bytes) {
    if (label == "rchar:") traffic.read = bytes;
    if (label == "wchar:") traffic.written = bytes;
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status)) traffic.status = WEXITSTATUS(status);
  return traffic;
}

/// 16 channels, one minute at 5 kHz.
class TrafficOfCorrection : public testing::Test {
protected:
  static void SetUpTestSuite() {
    folder_ = std::make_unique<TestFolder>();
    ASSERT_EQ(runEmeg({"simulate", "both", path("r.vhdr"), "--fs", "5000", "--seconds", "60", "--channels",
                       "16", "--seed", "2", "--no-truth"})
                  .status,
              0);
    for (const char* name : {"r.edf", "r.ctc"})
      ASSERT_EQ(runEmeg({"convert", path("r.vhdr"), path(name), "--quiet"}).status, 0);
  }
  static void TearDownTestSuite() { folder_.reset(); }
  static std::string path(const std::string& name) { return *folder_ / name; }

  /// In units of the recording as 32-bit floats.
  static Traffic correct(const std::string& extension, std::vector<std::string> options) {
    options.insert(options.begin(), {"emeg", "correct", path("r" + extension), "-o", path("out" + extension),
                                     "--bcg", "--average-reference", "--force", "--json", "--quiet"});
    Traffic traffic = trafficOf(options);
    constexpr double recording = 16.0 * 60 * 5000 * sizeof(float);
    traffic.read /= recording;
    traffic.written /= recording;
    return traffic;
  }

  static std::unique_ptr<TestFolder> folder_;
};

std::unique_ptr<TestFolder> TrafficOfCorrection::folder_;

} // namespace

TEST_F(TrafficOfCorrection, WithATemporaryFileIsOneReadOneWriteAndWhatTheCorrectionReads) {
  for (const char* extension : {".vhdr", ".ctc"}) {
    const Traffic traffic = correct(extension, {"--memory", "0"});
    ASSERT_EQ(traffic.status & ~3, 0) << extension;
    EXPECT_LE(traffic.written, 2.5) << extension;
    EXPECT_GE(traffic.written, 2) << extension;
    EXPECT_LE(traffic.read, 4) << extension;
    RecordProperty(std::string("read") + extension, std::to_string(traffic.read));
  }
}

// 16-bit integers: the corrected samples are kept until their ranges are known.
TEST_F(TrafficOfCorrection, OfAnEdfFileHasOneCopyMore) {
  const Traffic traffic = correct(".edf", {"--memory", "0"});
  ASSERT_EQ(traffic.status & ~3, 0);
  EXPECT_LE(traffic.written, 2.55);
  EXPECT_LE(traffic.read, 4);
}

TEST_F(TrafficOfCorrection, InMemoryIsOneReadAndOneWrite) {
  for (const char* extension : {".vhdr", ".ctc", ".edf"}) {
    const Traffic traffic = correct(extension, {"--memory", "64"});
    ASSERT_EQ(traffic.status & ~3, 0) << extension;
    EXPECT_LE(traffic.written, 1.1) << extension;
    EXPECT_LE(traffic.read, 1.1) << extension;
  }
}

TEST_F(TrafficOfCorrection, WhereTheSamplesAreChangesNoByte) {
  ASSERT_EQ(correct(".vhdr", {"--memory", "0"}).status & ~3, 0);
  const std::string fromFile = bytesOf(path("out.eeg"));
  ASSERT_EQ(correct(".vhdr", {}).status & ~3, 0);
  EXPECT_TRUE(bytesOf(path("out.eeg")) == fromFile);
}

} // namespace emeg
