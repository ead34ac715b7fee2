#include "tests/run/frozen/FrozenRun.h"

#include "app/simulation/SimulatedRecording.h"
#include "tests/TestFolder.h"
#include "tests/run/ChildProcess.h"
#include "tests/run/HostRun.h"
#include "tests/run/frozen/StoredFiles.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <sys/resource.h>
#include <unistd.h>

namespace emeg::test {

namespace fs = std::filesystem;

namespace {

/// Bytes by name; the name of a folder ends in '/'.
using Files = std::map<std::string, std::string>;

Files filesIn(const std::string& folder) {
  Files files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    if (entry.is_directory())
      files[name + "/"] = "";
    else
      files[name] = contentsOf(entry.path());
  }
  return files;
}

void writeFiles(const std::string& folder, const Files& files) {
  for (const auto& [name, bytes] : files) {
    if (name.back() == '/') {
      fs::create_directory(folder + "/" + name);
      continue;
    }
    std::ofstream stream(folder + "/" + name, std::ios::binary);
    stream << bytes;
    if (!stream.flush()) throw std::runtime_error("cannot write " + name);
  }
}

void makeInput(const FrozenRun& run, const TestFolder& folder) {
  fs::create_directory(folder.path("eeg"));
  if (run.simulated) {
    RecordingTarget target;
    target.path = folder.path("eeg/run.ctc");
    target.storage = run.storage;
    target.withTruth = false;
    const std::string problem = writeRecording(*run.simulated, target, [](double) {});
    if (!problem.empty()) throw std::runtime_error(problem);
  }
  if (!run.change) return;
  Files files = filesIn(folder.path("eeg"));
  run.change(files);
  fs::remove_all(folder.path("eeg"));
  fs::create_directory(folder.path("eeg"));
  writeFiles(folder.path("eeg"), files);
}

std::vector<std::string> hashesOf(const std::string& when, const Files& files) {
  std::vector<std::string> lines;
  for (const auto& [name, bytes] : files) lines.push_back(when + " " + sha256OfBytes(bytes) + " " + name);
  return lines;
}

std::vector<std::string> storedHashes(const std::string& when, const std::string& run) {
  std::vector<std::string> found;
  for (const std::string& line : storedLines("hashes", run))
    if (line.rfind(when + " ", 0) == 0) found.push_back(line);
  return found;
}

std::string withoutFolder(std::string text, const std::string& folder) {
  const std::string prefix = folder + "/";
  for (size_t at = 0; (at = text.find(prefix, at)) != std::string::npos;) text.erase(at, prefix.size());
  return text;
}

HostRun hostFor(const FrozenRun& run, const TestFolder& folder) {
  HostRun host;
  host.plugin = run.options ? EMEG_GENERAL_PLUGIN_PATH : EMEG_PLUGIN_PATH;
  host.workFolder = folder.path();
  if (run.options) host.environment["EMEG_RUN_OPTIONS"] = *run.options;
  if (run.largestFile > 0) {
    host.beforeStart = [size = run.largestFile] {
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit most{size, size};
      if (setrlimit(RLIMIT_FSIZE, &most) != 0) _exit(125);
    };
  }
  return host;
}

std::vector<std::string> callsOf(const FrozenRun& run, const TestFolder& folder) {
  const HostRunResult result = hostFor(run, folder).withAnswers(run.answers);
  constexpr int unusable = 2;
  if (result.exitStatus >= unusable)
    throw std::runtime_error("the host ended with status " + std::to_string(result.exitStatus) + ": " +
                             result.standardError);
  const std::string transcript = contentsOf(folder.path("host-run/transcript.jsonl"));
  std::vector<std::string> lines = linesOf(withoutFolder(transcript, folder.path()));
  lines.push_back("exit status " + std::to_string(result.exitStatus));
  return lines;
}

} // namespace

void PrintTo(const FrozenRun& run, std::ostream* out) {
  *out << run.name;
}

void expectAsStored(const FrozenRun& run) {
  const TestFolder folder;
  makeInput(run, folder);
  const std::vector<std::string> given = hashesOf("given", filesIn(folder.path("eeg")));
  const std::vector<std::string> calls = callsOf(run, folder);
  const std::vector<std::string> left = hashesOf("left", filesIn(folder.path("eeg")));
  if (isRenewal()) {
    std::vector<std::string> hashes = given;
    hashes.insert(hashes.end(), left.begin(), left.end());
    storeLines("transcripts", run.name, calls);
    storeLines("hashes", run.name, hashes);
    GTEST_SKIP() << "stored anew, not compared";
  }

  const std::string reason = whyHashesMayDiffer();
  if (reason.empty()) {
    const std::string difference = firstDifference(given, storedHashes("given", run.name));
    ASSERT_TRUE(difference.empty())
        << "The input is another one: look at what simulates it and at the file formats, not at the "
           "plug-in.\n"
        << difference;
  }
  const std::string inCalls = firstDifference(calls, storedLines("transcripts", run.name));
  EXPECT_TRUE(inCalls.empty()) << "Calls of the host: " << inCalls;
  if (!reason.empty()) GTEST_SKIP() << "the files are not compared: " << reason;
  const std::string inFiles = firstDifference(left, storedHashes("left", run.name));
  EXPECT_TRUE(inFiles.empty()) << "Files that the run left: " << inFiles;
}

} // namespace emeg::test
