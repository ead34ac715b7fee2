#include "tests/run/ExportedHost.h"
#include "tests/run/LoadedPlugin.h"
#include "tests/run/PluginRun.h"

#include <random>

#include <unistd.h>

namespace emeg::test {
namespace {

/// Hundreds of small recordings whose bytes were changed at random. The plug-in runs in this process: a crash
/// or a sanitizer's finding ends the test program, and so does a run of a minute.
class MutatedInput : public PluginRun {
protected:
  ~MutatedInput() override { alarm(0); }

  uint32_t below(size_t limit) { return static_cast<uint32_t>(generator_() % limit); }

  /// Changes one to four of the first `range` bytes.
  std::string mutated(std::string bytes, size_t range) {
    // Values that lie at the edges of integers and floats come more often than by chance.
    static const std::string edges("\0\1\2\3\x7f\x80\xff\xc0", 8);
    for (uint32_t change = 1 + below(4); change > 0; --change) {
      char& byte = bytes[below(range)];
      byte = below(2) == 0 ? edges[below(edges.size())] : static_cast<char>(below(256));
    }
    return bytes;
  }

  /// Runs the plug-in on what lies in the folder and checks that it has an end of one of the two kinds.
  void runOnce() {
    const std::map<std::string, std::string> before = contents();
    host_.calls.clear();
    host_.messageBoxes.clear();
    alarm(60);
    const bool done = plugin_.execute();
    const std::map<std::string, std::string> after = contents();
    for (const auto& [name, bytes] : before) ASSERT_TRUE(after.at(name) == bytes) << name;
    if (done) {
      ++nrOfCompleted_;
      ASSERT_TRUE(host_.messageBoxes.empty());
      ASSERT_GE(after.size(), before.size() + 3);
    } else {
      ++nrOfRefused_;
      ASSERT_EQ(host_.messageBoxes.size(), 1u);
      ASSERT_EQ(after.size(), before.size());
    }
    for (const auto& [name, bytes] : after)
      if (before.count(name) == 0) std::filesystem::remove(path(name));
  }

  std::mt19937 generator_{20240117};
  ExportedHost host_;
  LoadedPlugin plugin_;
  int nrOfCompleted_ = 0, nrOfRefused_ = 0;
};

TEST_F(MutatedInput, HeadersOfRecordingsNeverEndInACrash) {
  host_.files["*.ctc"] = path("run1.ctc");
  for (int i = 0; i < 400; ++i) {
    Recording recording = shortNoise(2, 64);
    recording.dataType = 1 + i % 3;
    recording.dataOrganisation = 1 + i % 2;
    const std::string bytes = mutated(recording.bytes(), 32);
    write("run1.ctc", bytes);
    ASSERT_NO_FATAL_FAILURE(runOnce()) << "recording " << i;
  }
  // The changes are neither all harmless nor all fatal.
  EXPECT_GT(nrOfCompleted_, 50);
  EXPECT_GT(nrOfRefused_, 50);
}

TEST_F(MutatedInput, HeadersAndLengthsOfRecordingsNeverEndInACrash) {
  host_.files["*.ctc"] = path("run1.ctc");
  for (int i = 0; i < 200; ++i) {
    Recording recording = shortNoise(1, 100);
    recording.dataOrganisation = 1 + i % 2;
    const std::string bytes = recording.bytes();
    write("run1.ctc", mutated(bytes, 32).substr(0, below(bytes.size() + 1)));
    ASSERT_NO_FATAL_FAILURE(runOnce()) << "recording " << i;
  }
  EXPECT_GT(nrOfRefused_, 50);
}

TEST_F(MutatedInput, SamplesOfAnyValueNeverEndInACrash) {
  host_.files["*.ctc"] = path("run1.ctc");
  for (int i = 0; i < 100; ++i) {
    Recording recording = shortNoise(1, 300);
    recording.dataType = 1 + i % 3;
    std::string bytes = recording.bytes();
    for (size_t k = 32; k < bytes.size(); ++k)
      if (i % 4 == 0 || below(50) == 0) bytes[k] = static_cast<char>(below(256));
    write("run1.ctc", bytes);
    ASSERT_NO_FATAL_FAILURE(runOnce()) << "recording " << i;
  }
  EXPECT_EQ(nrOfCompleted_, 100);
}

TEST_F(MutatedInput, ChannelDescriptionsNeverEndInACrash) {
  write("run1.ctc", shortNoise(2, 64).bytes());
  write("run1.prt", protocolText("usec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  host_.files["*.ccd"] = path("run1.ccd");
  const std::string bytes = descriptionBytes("run1.ctc", "run1.prt", 2);
  for (int i = 0; i < 300; ++i) {
    std::string changed = mutated(bytes, i % 2 == 0 ? bytes.size() : 16);
    // The counts, whose bytes chance would hardly meet.
    if (i % 3 == 0) changed[513 + below(2)] = static_cast<char>(below(256));
    if (i % 5 == 0) changed[575] = static_cast<char>(below(256));
    if (i % 7 == 0) changed.resize(below(bytes.size() + 1));
    write("run1.ccd", changed);
    ASSERT_NO_FATAL_FAILURE(runOnce()) << "description " << i;
  }
  EXPECT_GT(nrOfCompleted_, 30);
  EXPECT_GT(nrOfRefused_, 50);
}

TEST_F(MutatedInput, ProtocolsNeverEndInACrash) {
  host_.files["*.ctc"] = write("run1.ctc", shortNoise(1, 64).bytes());
  host_.files["*.prt"] = path("run1.prt");
  const std::string text = protocolText(
      "msec", {"Rest\r\n2\r\n0 500\r\n600 700\r\nColor: 1 2 3", "Code 7\r\n1\r\n 10 20\r\nColor: 4 5 6"});
  for (int i = 0; i < 200; ++i) {
    write("run1.prt", mutated(text, text.size()).substr(0, i % 4 == 0 ? below(text.size()) : text.size()));
    ASSERT_NO_FATAL_FAILURE(runOnce()) << "protocol " << i;
  }
  EXPECT_EQ(nrOfCompleted_, 200);
}

} // namespace
} // namespace emeg::test
