#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

/// What a user of the plug-in answers.
struct Answers {
  std::string ctcPath;
  bool correctsBcg = false;
  bool volumeWise = true;
  int window = 150;
  int decimation = 1;
  float highPass = 0;
  float lowPass = 0;
  bool averageReference = false;
};

Answers answers; // the host's functions have no argument to carry them

bool speaksOf(const char* prompt, const char* words) {
  return std::strstr(prompt, words) != nullptr;
}

HostFunctionTable answeringHost() {
  HostFunctionTable table;
  table.lmGetVersionOfLumetra = [](int* major, int* minor, int* revision) {
    *major = 2;
    *minor = 1;
    *revision = 0;
    return 1;
  };
  table.lmLogText = [](const char*) {};
  table.lmMessageBox = [](const char* text) { ADD_FAILURE() << text; };
  table.lmYesNoMessageBox = [](const char* question) {
    if (speaksOf(question, "average reference")) return answers.averageReference ? 1 : 0;
    return answers.volumeWise ? 1 : 0;
  };
  table.lmGetIntegerInput = [](const char* prompt, int, int, int) {
    if (speaksOf(prompt, "EEG-fMRI artifact correction")) return answers.correctsBcg ? 2 : 1;
    if (speaksOf(prompt, "decimation factor")) return answers.decimation;
    return speaksOf(prompt, "Window half-length") ? answers.window : 0;
  };
  table.lmGetFloatInput = [](const char* prompt, float, float, float) {
    return speaksOf(prompt, "high-pass filter") ? answers.highPass : answers.lowPass;
  };
  table.lmGetOpenFileName = [](const char*, const char* pattern, const char*, char* path) {
    if (std::string(pattern) != "*.ctc") return 0;
    std::memcpy(path, answers.ctcPath.c_str(), answers.ctcPath.size() + 1);
    return 1;
  };
  table.lmGetDlgIntegerParameter = [](int) { return -1; };
  table.lmGetDlgFloatParameter = [](int) { return -1.0F; };
  return table;
}

/// The bytes of the CTC file that the plug-in's converter makes.
std::string bytesOfThePlugIn(const Answers& given) {
  answers = given;
  hostFunctions = answeringHost();
  EMEGArtifactPreprocessor converter("// EMEG artifacts > ", true);
  converter.options.selectChannels = false;
  converter.options.selectTimeInterval = false;
  converter.options.applyFilters = given.decimation > 1 || given.highPass > 0 || given.lowPass > 0;
  converter.options.offerAverageReference = true;
  converter.options.correctArtifacts = true;
  converter.options.forceHeaderUpdate = false;
  EXPECT_TRUE(converter.run(2, 1, 0));
  hostFunctions = HostFunctionTable();
  return bytesOf(converter.outputPathBuffer.path());
}

class AsPlugin : public testing::Test {
protected:
  void expectSameBytes(const Answers& given, const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {"correct", given.ctcPath, "-o",         folder / "corrected.ctc",
                                          "--force", "--quiet",     "--as-plugin"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const ProgramRun run = runEmeg(arguments);
    ASSERT_THAT(run.status, testing::AnyOf(0, 3)) << run.err;
    EXPECT_TRUE(bytesOf(folder / "corrected.ctc") == bytesOfThePlugIn(given));
  }

  const TestFolder folder;
  const std::string recording = folder / "recording.ctc";
};

} // namespace

TEST_F(AsPlugin, BothArtifactsAreRemovedByteForByte) {
  copyOf(heartRecording())->save(recording);
  Answers given;
  given.ctcPath = recording;
  given.correctsBcg = true;
  given.volumeWise = false;
  expectSameBytes(given, {"--bcg", "--slice-wise"});
  expectSameBytes(given, {"--bcg", "--slice-wise", "--memory", "0"});
}

TEST_F(AsPlugin, WhereQuietTellsTheTimingEveryByteIsThePlugIns) {
  for (const char* const preset : {"gap", "continuous"})
    for (const bool volumeWise : {false, true}) {
      SCOPED_TRACE(std::string(preset) + (volumeWise ? " by volumes" : " by slices"));
      ASSERT_EQ(runEmeg({"simulate", preset, recording, "--fs", "2000", "--seconds", "60", "--channels", "2",
                         "--seed", "1", "--no-truth", "--no-prt", "--force"})
                    .status,
                0);
      Answers given;
      given.ctcPath = recording;
      given.volumeWise = volumeWise;
      expectSameBytes(given, {volumeWise ? "--volume-wise" : "--slice-wise"});
    }
}

TEST_F(AsPlugin, FiltersDecimationAndReferenceAreThePlugIns) {
  copyOf(scanRecording())->save(recording);
  Answers given;
  given.ctcPath = recording;
  given.highPass = 0.5F;
  given.lowPass = 40;
  given.decimation = 4;
  given.averageReference = true;
  given.window = 30;
  expectSameBytes(given, {"--high-pass", "0.5", "--low-pass", "40", "--decimate", "4", "--average-reference",
                          "--window", "30"});
  expectSameBytes(given, {"--high-pass", "0.5", "--low-pass", "40", "--rate", "250", "--average-reference",
                          "--window", "30"});
}

TEST_F(AsPlugin, ChannelsOfEveryNameAreCorrectedAlike) {
  const auto mixed = copyOf(scanRecording());
  mixed->editableHeader().channels[1].name = "ECG";
  mixed->editableHeader().channels[4].name = "Status";
  mixed->save(recording);
  Answers given;
  given.ctcPath = recording;
  expectSameBytes(given, {});
}

TEST_F(AsPlugin, WhatThePlugInDoesNotKnowIsRefused) {
  copyOf(scanRecording())->save(recording);
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{"--tr", "2"},
                                             {"--volume-markers", "R128"},
                                             {"--bcg", "--ecg", "ECG"},
                                             {"--rate", "300"},
                                             {"--repair-saturation"}}) {
    std::vector<std::string> arguments = {"correct", recording, "--as-plugin"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(runEmeg(arguments).status, 2) << options[0];
  }
}

} // namespace emeg
