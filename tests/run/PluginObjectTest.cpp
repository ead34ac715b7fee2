#include "tests/run/ExportedHost.h"
#include "tests/run/LoadedPlugin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg::test {
namespace {

using testing::IsEmpty;

TEST(PluginObject, TellsTheHostWhatThePluginIs) {
  const LoadedPlugin plugin;
  EXPECT_EQ(plugin.text("getPluginName"), "EEG-fMRI Artifact removal (MR gradients, heart pulses) ...");
  EXPECT_EQ(plugin.text("getPluginDescription"), "EMEG Artifact Plugin.");
  EXPECT_EQ(plugin.text("getAuthor"), "<i>The EMEG Artifact Plugin developers</i>");
  EXPECT_EQ(plugin.text("getPluginVersion"), "1.0");
  EXPECT_EQ(plugin.text("getHelpFile"), "");
  EXPECT_EQ(plugin.text("getGUIScript"), "");
}

TEST(PluginObject, GivesTheSameConstantTextsAtEveryCall) {
  const LoadedPlugin plugin;
  using Text = const char* (*)();
  for (const char* name :
       {"getPluginName", "getPluginDescription", "getAuthor", "getPluginVersion", "getHelpFile"}) {
    const auto function = reinterpret_cast<Text>(plugin.symbol(name));
    EXPECT_EQ(static_cast<const void*>(function()), static_cast<const void*>(function())) << name;
  }
}

TEST(PluginObject, HasOneFunctionForHelpFileAndGuiScript) {
  const LoadedPlugin plugin;
  ASSERT_NE(plugin.symbol("getHelpFile"), nullptr);
  EXPECT_EQ(plugin.symbol("getHelpFile"), plugin.symbol("getGUIScript"));
}

TEST(PluginObject, IsInitialisedBeforeAnyExecutionWithoutTouchingTheHost) {
  const ExportedHost host;
  LoadedPlugin plugin;
  EXPECT_TRUE(plugin.initPlugin());
  EXPECT_THAT(host.calls, IsEmpty());
}

TEST(PluginObject, HasItsDestructorsBeforeExecuteAndInitPlugin) {
  // The deleting destructor is what a host calls through the interface.
  const LoadedPlugin plugin;
  ASSERT_NE(plugin.symbol("_ZN18EMEGArtifactPluginD0Ev"), nullptr);
  EXPECT_EQ(plugin.virtualFunction(0), plugin.symbol("_ZN18EMEGArtifactPluginD1Ev"));
  EXPECT_EQ(plugin.virtualFunction(1), plugin.symbol("_ZN18EMEGArtifactPluginD0Ev"));
  EXPECT_EQ(plugin.virtualFunction(2), plugin.symbol("_ZN18EMEGArtifactPlugin7executeEv"));
  EXPECT_EQ(plugin.virtualFunction(3), plugin.symbol("_ZN18EMEGArtifactPlugin10initPluginEv"));
}

TEST(PluginObject, IsIndependentOfOthersThatTheHostDeletes) {
  const ExportedHost host;
  LoadedPlugin kept;
  { const LoadedPlugin deleted; }
  EXPECT_TRUE(kept.initPlugin());
  EXPECT_FALSE(kept.execute());
  EXPECT_THAT(host.messageBoxes, testing::ElementsAre("This plugin requires a CTC file."));
}

} // namespace
} // namespace emeg::test
