#include "tests/run/ExportedHost.h"
#include "tests/run/LoadedPlugin.h"
#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace emeg::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class MissingPlace : public PluginRun {};

TEST_F(MissingPlace, ARecordingThatDoesNotExistCannotBeAccessed) {
  expectRefused(path("missing.ctc"), "Error accessing CTC file.<br>No such file or directory.");
}

TEST_F(MissingPlace, ARecordingInAMissingFolderCannotBeAccessed) {
  expectRefused(path("missing/run1.ctc"), "Error accessing CTC file.<br>No such file or directory.");
}

TEST_F(MissingPlace, ARecordingBelowAFileCannotBeAccessed) {
  write(shortNoise());
  expectRefused(path("run1.ctc/run2.ctc"), "Error accessing CTC file.<br>Not a directory.");
}

TEST_F(MissingPlace, AFolderIsNoRecording) {
  fs::create_directory(path("run1.ctc"));
  expectRefused(path("run1.ctc"), "Error accessing CTC file.<br>Is a directory.");
}

TEST_F(MissingPlace, ADescriptionBelowAFileCannotBeAccessed) {
  write(shortNoise());
  const HostRunResult result = run(answers("", path("run1.ctc/run2.ccd")));
  EXPECT_THAT(result.messageBoxes(), ElementsAre("Error accessing CCD file.<br>Not a directory."));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(MissingPlace, APathShorterThanItsExtensionIsNoRecording) {
  writeFile(folder_.path("run"), shortNoise().bytes());
  writeFile(folder_.path("r"), shortNoise().bytes());
  for (const char* ctc : {"run", "r"}) {
    const HostRunResult result = run(answers(ctc));
    EXPECT_THAT(result.messageBoxes(), ElementsAre(StartsWith("Error accessing CTC file.<br>")));
    EXPECT_EQ(result.exitStatus, 1);
  }
}

TEST_F(MissingPlace, AnEmptyPathIsNoRecording) {
  ExportedHost host;
  host.files["*.ctc"] = "";
  EXPECT_FALSE(LoadedPlugin().execute());
  EXPECT_THAT(host.messageBoxes, ElementsAre(StartsWith("Error accessing CTC file.<br>")));
}

TEST_F(MissingPlace, ADeviceOrAPipeIsNoRecordingAndIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(path("pipe.ctc").c_str(), 0600), 0);
  for (const std::string& ctc : {path("pipe.ctc"), std::string("/dev/zero"), std::string("/dev/null")}) {
    const HostRunResult result = run(answers(ctc));
    EXPECT_THAT(result.messageBoxes(), ElementsAre(StartsWith("Error accessing CTC file.<br>"))) << ctc;
    EXPECT_EQ(result.exitStatus, 1);
  }
}

TEST_F(MissingPlace, ChunkFilesStayWhereTheyAreWhenOneCannotBeCreated) {
  const std::string ctc = write(shortNoise());
  fs::create_directory(path("run1Chunk05.tmp"));
  const HostRunResult result = run(answers(ctc));
  EXPECT_EQ(differenceOf(result.transcript, ExpectedCalls::ofARun()
                                                .choosesOnly(ctc)
                                                .definesParameters()
                                                .createsChunks(6)
                                                .shows("Error #21 while creating chunk 5.")
                                                .returns(false)),
            "");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(names(), ElementsAre("run1.ctc", "run1Chunk00.tmp", "run1Chunk01.tmp", "run1Chunk02.tmp",
                                   "run1Chunk03.tmp", "run1Chunk04.tmp", "run1Chunk05.tmp"));
}

class OccupiedOutput : public PluginRun {
protected:
  /// A run whose output `name` is a folder ends with this message; everything else of the folder that is
  /// there afterwards is in `left`.
  void expectFailure(const std::string& name, const std::string& message,
                     std::vector<std::string> left) const {
    fs::create_directory(path(name));
    const std::string ctc = write(shortNoise());
    const std::string prt = write("task.prt", protocolText("usec", {"A\r\n1\r\n0 9\r\nColor: 1 2 3"}));
    const HostRunResult result = run(answers(ctc, "", prt));
    EXPECT_THAT(result.messageBoxes(), ElementsAre(message));
    EXPECT_EQ(result.exitStatus, 1);
    left.insert(left.end(), {name, "run1.ctc", "task.prt"});
    EXPECT_THAT(names(), testing::UnorderedElementsAreArray(left));
    EXPECT_TRUE(fs::is_empty(path(name)));
  }
};

TEST_F(OccupiedOutput, AFolderInThePlaceOfTheRecording) {
  expectFailure("run1_GRA.ctc", "Error writing file: <br>Is a directory.", {});
}

TEST_F(OccupiedOutput, AFolderInThePlaceOfTheProtocol) {
  expectFailure("run1_GRA.prt", "Error accessing PRT file.<br>Is a directory.", {"run1_GRA.ctc"});
}

TEST_F(OccupiedOutput, AFolderInThePlaceOfTheTriggers) {
  expectFailure("run1_GRA_ArtifactsTriggers.prt", "Error accessing PRT file.<br>Is a directory.",
                {"run1_GRA.ctc", "run1_GRA.prt"});
}

TEST_F(OccupiedOutput, AFolderInThePlaceOfTheDescription) {
  expectFailure("run1_GRA.ccd", "Error accessing CCD file.<br>Is a directory.",
                {"run1_GRA.ctc", "run1_GRA.prt", "run1_GRA_ArtifactsTriggers.prt"});
}

TEST_F(OccupiedOutput, ALinkToTheInputIsReplacedAndTheInputStaysAsItIs) {
  const std::string ctc = write(shortNoise());
  const std::string input = readFile(ctc);
  for (const bool symbolic : {true, false}) {
    fs::remove(path("run1_GRA.ctc"));
    if (symbolic)
      fs::create_symlink("run1.ctc", path("run1_GRA.ctc"));
    else
      fs::create_hard_link(ctc, path("run1_GRA.ctc"));
    EXPECT_EQ(run(answers(ctc)).exitStatus, 0);
    EXPECT_TRUE(readFile(ctc) == input);
    EXPECT_FALSE(readFile(path("run1_GRA.ctc")) == input);
  }
}

/// Runs of a user without any privilege. Root may read and write everything, so a test that runs as root
/// gives its privileges up in the host's process, which needs copies of programs in a place open to all.
class ForbiddenPlace : public PluginRun {
protected:
  static constexpr unsigned nobody = 65534;

  void SetUp() override {
    fs::create_directory(folder_.path("bin"));
    fs::copy_file(EMEG_LUMETRA_PROGRAM, folder_.path("bin/lumetra"));
    fs::copy_file(pluginPath, folder_.path("bin/plugin.so"));
    fs::create_directory(folder_.path("host-run"));
    for (const char* name : {"bin", "bin/lumetra", "bin/plugin.so"}) allow(folder_.path(name), 0755);
    allow(folder_.path(), 0755);
    allow(folder_.path("host-run"), 0777);
    allow(folder_.path("eeg"), 0777);
    write(shortNoise());
    allow(path("run1.ctc"), 0644);
  }
  void TearDown() override {
    // A folder that is closed to its owner could not be removed.
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder_.path()))
      if (entry.is_directory()) allow(entry.path(), 0777);
  }

  static void allow(const std::string& file, unsigned mode) {
    ASSERT_EQ(chmod(file.c_str(), mode), 0) << file;
  }

  HostRunResult runUnprivileged(const nlohmann::json& answers) const {
    HostRun made = host();
    made.plugin = folder_.path("bin/plugin.so");
    made.program = folder_.path("bin/lumetra");
    if (geteuid() == 0) {
      made.beforeStart = [] {
        if (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0) _exit(125);
      };
    }
    return made.withAnswers(answers);
  }

  void expectForbidden(const nlohmann::json& answers, const std::string& message) const {
    const std::vector<std::string> before = names();
    const HostRunResult result = runUnprivileged(answers);
    EXPECT_THAT(result.messageBoxes(), ElementsAre(message));
    EXPECT_EQ(result.exitStatus, 1) << result.standardError;
    EXPECT_EQ(names(), before);
  }
};

TEST_F(ForbiddenPlace, AnUnprivilegedUserCanRunThePluginWherePermitted) {
  const HostRunResult result = runUnprivileged(answers(path("run1.ctc")));
  EXPECT_EQ(result.exitStatus, 0) << result.standardError;
  EXPECT_THAT(names(),
              ElementsAre("run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA_ArtifactsTriggers.prt"));
}

TEST_F(ForbiddenPlace, AnUnreadableRecordingIsReported) {
  allow(path("run1.ctc"), 0000);
  expectForbidden(answers(path("run1.ctc")), "Error accessing CTC file.<br>Permission denied.");
}

TEST_F(ForbiddenPlace, AnUnreadableDescriptionIsReported) {
  allow(write("run1.ccd", descriptionBytes("run1.ctc", "", 2)), 0000);
  expectForbidden(answers("", path("run1.ccd")), "Error accessing CCD file.<br>Permission denied.");
}

TEST_F(ForbiddenPlace, AnUnreadableProtocolIsSkipped) {
  allow(write("run1.prt", protocolText("usec", {"A\r\n1\r\n0 9\r\nColor: 1 2 3"})), 0000);
  const HostRunResult result = runUnprivileged(answers(path("run1.ctc"), "", path("run1.prt")));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.messageBoxes(), IsEmpty());
  EXPECT_FALSE(exists(path("run1_GRA.prt")));
}

TEST_F(ForbiddenPlace, ARecordingInAClosedFolderIsReported) {
  fs::create_directory(path("closed"));
  write("closed/run2.ctc", shortNoise().bytes());
  allow(path("closed"), 0000);
  expectForbidden(answers(path("closed/run2.ctc")), "Error accessing CTC file.<br>Permission denied.");
}

TEST_F(ForbiddenPlace, AReadOnlyFolderTakesNoChunkFile) {
  allow(path(""), 0555);
  expectForbidden(answers(path("run1.ctc")), "Error #13 while creating chunk 0.");
}

TEST_F(ForbiddenPlace, AnOutputThatCannotBeReplacedIsReportedAndStaysAsItIs) {
  // The temporary name of the output belongs to someone else.
  allow(write("run1_GRA.ctc.part", "not ours"), 0444);
  allow(write("run1_GRA.ctc", "an earlier result"), 0444);
  expectForbidden(answers(path("run1.ctc")), "Error writing file: <br>Permission denied.");
  EXPECT_EQ(readFile(path("run1_GRA.ctc")), "an earlier result");
}

} // namespace
} // namespace emeg::test
