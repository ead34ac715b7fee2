#include "tests/run/PluginRun.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace emeg::test {

namespace fs = std::filesystem;
using nlohmann::json;

const std::string pluginPath = EMEG_PLUGIN_PATH;

std::map<std::string, std::string> sanitizerEnvironment() {
  std::map<std::string, std::string> environment;
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS"}) {
    const char* const options = std::getenv(name);
    environment[name] = (options != nullptr ? options + std::string(":") : "") + "exitcode=99";
  }
  return environment;
}

PluginRun::PluginRun() {
  fs::create_directory(folder_.path("eeg"));
}

std::string PluginRun::write(const std::string& name, const std::string& bytes) const {
  writeFile(path(name), bytes);
  return path(name);
}

std::vector<std::string> PluginRun::names() const {
  std::vector<std::string> found;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_.path("eeg")))
    found.push_back(entry.path().filename().string());
  std::sort(found.begin(), found.end());
  return found;
}

std::map<std::string, std::string> PluginRun::contents() const {
  std::map<std::string, std::string> found;
  for (const std::string& name : names())
    found[name] = fs::is_directory(path(name)) ? "(a folder)" : readFile(path(name));
  return found;
}

json PluginRun::answers(const std::string& ctc, const std::string& ccd, const std::string& prt,
                        bool volumeWise) {
  json given = answersInOrder(ctc, {1, volumeWise ? "yes" : "no", 150});
  if (!ccd.empty()) given["files"]["*.ccd"] = ccd;
  if (!prt.empty()) given["files"]["*.prt"] = prt;
  return given;
}

json PluginRun::answersInOrder(const std::string& ctc, const json& inOrder) {
  json given = {{"files", json::object()}, {"inOrder", inOrder}};
  if (!ctc.empty()) given["files"]["*.ctc"] = ctc;
  return given;
}

HostRun PluginRun::host() const {
  HostRun made;
  made.plugin = pluginPath;
  made.workFolder = folder_.path();
  made.environment = sanitizerEnvironment();
  return made;
}

void PluginRun::expectRefused(const std::string& ctc, const std::string& message, bool asked) const {
  const std::map<std::string, std::string> before = contents();
  const HostRunResult result = run(answers(ctc));
  ExpectedCalls expected = ExpectedCalls::ofARun().choosesOnly(ctc);
  if (asked) expected.definesParameters();
  expected.shows(message).returns(false);
  EXPECT_EQ(differenceOf(result.transcript, expected), "");
  EXPECT_EQ(result.exitStatus, 1) << result.standardError;
  EXPECT_EQ(contents(), before);
}

} // namespace emeg::test
