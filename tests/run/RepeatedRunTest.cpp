#include "tests/run/ExportedHost.h"
#include "tests/run/LoadedPlugin.h"
#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

namespace emeg::test {
namespace {

using testing::ElementsAre;

class RepeatedRun : public PluginRun {
protected:
  std::map<std::string, std::string> outputs() const {
    std::map<std::string, std::string> found = contents();
    for (auto entry = found.begin(); entry != found.end();)
      entry = entry->first.find("_GRA") == std::string::npos ? found.erase(entry) : std::next(entry);
    return found;
  }
};

TEST_F(RepeatedRun, OfTheSamePluginObjectBeginsAfresh) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  ExportedHost host;
  host.files["*.ctc"] = ctc;
  LoadedPlugin plugin;
  EXPECT_TRUE(plugin.execute());
  const std::vector<std::string> firstCalls = host.calls;
  const std::map<std::string, std::string> firstOutputs = outputs();
  EXPECT_EQ(firstOutputs.size(), 3u);
  for (const auto& [name, bytes] : firstOutputs) std::remove(path(name).c_str());

  host.calls.clear();
  EXPECT_TRUE(plugin.execute());
  EXPECT_EQ(host.calls, firstCalls);
  EXPECT_TRUE(outputs() == firstOutputs);
}

TEST_F(RepeatedRun, AfterACancelledOneIsComplete) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  ExportedHost host;
  host.files["*.ctc"] = ctc;
  host.window = -1;
  LoadedPlugin plugin;
  EXPECT_FALSE(plugin.execute());
  EXPECT_THAT(names(), ElementsAre("run1.ctc"));
  host.window = 150;
  EXPECT_TRUE(plugin.execute());
  EXPECT_EQ(outputs().size(), 3u);
}

TEST_F(RepeatedRun, ReplacesTheOutputOfAnEarlierOne) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const std::string prt = write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  ASSERT_EQ(run(answers(ctc, "", prt)).exitStatus, 0);
  const std::map<std::string, std::string> first = outputs();
  EXPECT_EQ(first.size(), 4u);
  // Longer than what comes, so that a rest of them would show.
  for (const auto& [name, bytes] : first) write(name, bytes + std::string(100000, 'x'));
  ASSERT_EQ(run(answers(ctc, "", prt)).exitStatus, 0);
  EXPECT_TRUE(outputs() == first);
}

TEST_F(RepeatedRun, ReplacesTheTriggersOfAnEarlierOneThatLieBesideTheInput) {
  const std::string ctc = write(scannedWithVolumeGaps().recording);
  const std::string prt = write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  ASSERT_EQ(run(answers(ctc, "", prt)).exitStatus, 0);
  const std::map<std::string, std::string> withoutCompanion = outputs();

  const std::string companion =
      protocolText("usec", {"HeartPulseTriggers\r\n1\r\n70 70\r\nColor: 255 64 64"});
  write("run1_ArtifactsTriggers.prt", companion);
  ASSERT_EQ(run(answers(ctc, "", prt)).exitStatus, 0);
  EXPECT_TRUE(outputs() == withoutCompanion);
  EXPECT_EQ(readFile(path("run1_ArtifactsTriggers.prt")), companion);
}

TEST_F(RepeatedRun, ReadsItsOwnOutputAndAddsToItsNames) {
  ScannedRecording made = scannedWithVolumeGaps();
  write(made.recording);
  write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  const std::string ccd = write("run1.ccd", descriptionBytes("run1.ctc", "run1.prt", 2));
  ASSERT_EQ(run(answers("", ccd)).exitStatus, 0);
  const HostRunResult again = run(answers("", path("run1_GRA.ccd")));
  EXPECT_EQ(again.exitStatus, 0) << again.standardOutput;
  EXPECT_THAT(names(),
              ElementsAre("run1.ccd", "run1.ctc", "run1.prt", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA.prt",
                          "run1_GRA_ArtifactsTriggers.prt", "run1_GRA_GRA.ccd", "run1_GRA_GRA.ctc",
                          "run1_GRA_GRA.prt", "run1_GRA_GRA_ArtifactsTriggers.prt"));
  EXPECT_EQ(readOutput(path("run1_GRA_GRA.ctc")).nrOfTimePoints(), made.recording.nrOfTimePoints());
}

TEST_F(RepeatedRun, ReplacesChunkFilesThatAKilledOneLeftBehind) {
  const std::string ctc = write(shortNoise());
  write("run1Chunk00.tmp", std::string(1000000, 'x'));
  write("run1Chunk31.tmp", "x");
  ASSERT_EQ(run(answers(ctc)).exitStatus, 0);
  EXPECT_THAT(names(),
              ElementsAre("run1.ctc", "run1_GRA.ccd", "run1_GRA.ctc", "run1_GRA_ArtifactsTriggers.prt"));
}

} // namespace
} // namespace emeg::test
