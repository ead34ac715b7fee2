#include "tests/run/ExportedHost.h"
#include "tests/run/LoadedPlugin.h"
#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <new>

namespace emeg::test {
namespace {

using testing::ElementsAre;

class FailedAllocation : public PluginRun {};

// The exception is that of an allocation; it comes out of the middle of the run.
TEST_F(FailedAllocation, EndsTheRunWithOneMessageAndLeavesNothingBehind) {
  for (const char* place :
       {"Defining parameters", "Creating chunk #3/32", "Processing channel #1", "Writing CCD"}) {
    SCOPED_TRACE(place);
    const std::string ctc = write(scannedWithVolumeGaps().recording);
    ExportedHost host;
    host.files["*.ctc"] = ctc;
    host.onLog = [&](const std::string& line) {
      if (line.find(place) != std::string::npos) throw std::bad_alloc();
    };
    LoadedPlugin plugin;
    EXPECT_FALSE(plugin.execute());
    EXPECT_THAT(host.messageBoxes, ElementsAre("Not enough memory"));
    for (const std::string& name : names()) {
      EXPECT_EQ(name.find("Chunk"), std::string::npos) << name;
      EXPECT_EQ(name.find(".part"), std::string::npos) << name;
    }
  }
}

} // namespace
} // namespace emeg::test
