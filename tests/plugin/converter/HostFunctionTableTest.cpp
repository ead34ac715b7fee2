#include "plugin/bridge/HostFunctions.h"

#include <gtest/gtest.h>

#include <string>

// The only host function that this test program exports; dlsym finds it.
extern "C" __attribute__((visibility("default"), used)) int lmGetVersionOfLumetra(int* major, int* minor,
                                                                                  int* revision) {
  *major = 2;
  *minor = 3;
  *revision = 4;
  return 0;
}

namespace emeg {
namespace {

class HostFunctions : public ::testing::Test {
protected:
  ~HostFunctions() override { hostFunctions = HostFunctionTable(); }
};

TEST_F(HostFunctions, ResolutionSucceedsWithTheVersionFunctionAlone) {
  ASSERT_TRUE(resolveHostFunctions());
  EXPECT_EQ(hostFunctions.lmLogText, nullptr);
  EXPECT_EQ(hostFunctions.lmMessageBox, nullptr);
  const HostVersion version = host::version();
  EXPECT_EQ(version.major, 2);
  EXPECT_EQ(version.minor, 3);
  EXPECT_EQ(version.revision, 4);
}

TEST_F(HostFunctions, ALaterResolutionOverwritesTheStoredAddresses) {
  hostFunctions.lmLogText = [](const char*) {};
  ASSERT_TRUE(resolveHostFunctions());
  EXPECT_EQ(hostFunctions.lmLogText, nullptr);
}

TEST_F(HostFunctions, AMissingEntryActsAsACancelledDialogueOrDoesNothing) {
  hostFunctions = HostFunctionTable();
  host::logText("nobody hears this");
  host::messageBox("nor this");
  EXPECT_EQ(host::yesNoMessageBox("?"), -1);
  EXPECT_EQ(host::integerInput("?", 1, 1, 2), -1);
  EXPECT_EQ(host::floatInput("?", 1, 1, 2), -1.0f);
  EXPECT_EQ(host::textInput("?", "default"), "");
  std::string path = "kept";
  EXPECT_FALSE(host::openFileName("title", "*.ctc", "CTC files (*.ctc)", path));
  EXPECT_EQ(path, "kept");
  EXPECT_EQ(host::dialogIntegerParameter(0), -1);
  EXPECT_EQ(host::dialogFloatParameter(0), -1.0f);
  const HostVersion version = host::version();
  EXPECT_EQ(version.major, 0);
}

TEST_F(HostFunctions, AMissingWindowUpdateDoesNotHideTheChosenFile) {
  hostFunctions = HostFunctionTable();
  hostFunctions.lmGetOpenFileName = [](const char*, const char*, const char*, char* buffer) {
    buffer[0] = 'a';
    buffer[1] = 0;
    return 1;
  };
  std::string path;
  EXPECT_TRUE(host::openFileName("title", "*.ctc", "CTC files (*.ctc)", path));
  EXPECT_EQ(path, "a");
}

TEST_F(HostFunctions, TheTextDialogueGetsOneBufferAsDefaultAndResult) {
  static std::string received;
  hostFunctions.lmGetTextInput = [](const char*, const char* text, char* buffer) {
    received = text;
    if (buffer == text) buffer[0] = 'X';
  };
  EXPECT_EQ(host::textInput("?", "label"), "Xabel");
  EXPECT_EQ(received, "label");
}

TEST_F(HostFunctions, AnAnswerThatFillsTheHostsWholeBufferIsTaken) {
  hostFunctions.lmGetOpenFileName = [](const char*, const char*, const char*, char* buffer) {
    for (int i = 0; i < 255; ++i) buffer[i] = 'p';
    buffer[255] = 0;
    return 1;
  };
  std::string path;
  EXPECT_TRUE(host::openFileName("title", "*.ctc", "CTC files (*.ctc)", path));
  EXPECT_EQ(path, std::string(255, 'p'));
}

TEST(HostVersions, AreComparedByMajorThenMinorThenRevision) {
  EXPECT_TRUE(isHostVersionAtLeast(2, 1, 0, 2, 1, 0));
  EXPECT_FALSE(isHostVersionAtLeast(2, 0, 9, 2, 1, 0));
  EXPECT_TRUE(isHostVersionAtLeast(3, 0, 0, 2, 9, 9));
  EXPECT_TRUE(isHostVersionAtLeast(1, 9, 9, 1, 9, 9));
  EXPECT_FALSE(isHostVersionAtLeast(1, 9, 8, 1, 9, 9));
  EXPECT_FALSE(isHostVersionAtLeast(1, 99, 99, 2, 0, 0));
  EXPECT_TRUE(isHostVersionAtLeast(2, 2, 0, 2, 1, 9));
}

} // namespace
} // namespace emeg
