#pragma once

#include "tests/run/DescriptionBytes.h"
#include "tests/run/ExpectedCalls.h"
#include "tests/run/HostRun.h"
#include "tests/run/ScannedRecording.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace emeg::test {

/// A test that runs the plug-in in the stand-in host, with a folder "eeg" for its files. The host starts in
/// the folder above it.
class PluginRun : public testing::Test {
protected:
  PluginRun();

  /// Path of a file in the folder "eeg".
  std::string path(const std::string& name) const { return folder_.path("eeg/" + name); }
  /// Writes a file into "eeg" and returns its path.
  std::string write(const std::string& name, const std::string& bytes) const;
  /// Writes the recording as "run1.ctc".
  std::string write(const Recording& recording) const { return write("run1.ctc", recording.bytes()); }
  /// Names of everything in "eeg", sorted.
  std::vector<std::string> names() const;
  /// The bytes of every file in "eeg" by name.
  std::map<std::string, std::string> contents() const;

  /// Answers that choose these files ("" for none), the gradient correction and a window of 150 slices.
  static nlohmann::json answers(const std::string& ctc, const std::string& ccd = "",
                                const std::string& prt = "", bool volumeWise = true);
  /// The same with the answers to the questions in order.
  static nlohmann::json answersInOrder(const std::string& ctc, const nlohmann::json& inOrder);
  HostRun host() const;
  HostRunResult run(const nlohmann::json& answers) const { return host().withAnswers(answers); }

  /// Checks that a run that chose this CTC fails: one message box with this text after the questions of the
  /// parameters when `asked`, exit status 1, and the folder as it was.
  void expectRefused(const std::string& ctc, const std::string& message, bool asked = false) const;

  TestFolder folder_;
};

extern const std::string pluginPath;

/// Makes sanitizers end a program with a status of their own: theirs is otherwise that of a run that failed.
std::map<std::string, std::string> sanitizerEnvironment();

} // namespace emeg::test
