#include "tests/run/HostRun.h"

#include "tests/run/ChildProcess.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace emeg::test {
namespace {

void write(const std::filesystem::path& file, const std::string& contents) {
  std::ofstream stream(file, std::ios::binary);
  stream << contents;
  if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

std::vector<nlohmann::json> jsonLines(const std::string& text) {
  std::vector<nlohmann::json> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

std::vector<std::string> textsOf(const std::vector<nlohmann::json>& calls) {
  std::vector<std::string> texts;
  for (const nlohmann::json& call : calls)
    texts.push_back(call.at("text").is_null() ? std::string() : call.at("text").get<std::string>());
  return texts;
}

} // namespace

std::vector<nlohmann::json> HostRunResult::calls(const std::string& name) const {
  std::vector<nlohmann::json> found;
  std::copy_if(transcript.begin(), transcript.end(), std::back_inserter(found),
               [&](const nlohmann::json& line) { return line.at("call") == name; });
  return found;
}

std::vector<std::string> HostRunResult::logLines() const {
  return textsOf(calls("lmLogText"));
}

std::vector<std::string> HostRunResult::messageBoxes() const {
  return textsOf(calls("lmMessageBox"));
}

std::vector<nlohmann::json> HostRunResult::questions() const {
  static constexpr std::array<const char*, 5> asking{
      "lmYesNoMessageBox", "lmGetIntegerInput", "lmGetFloatInput", "lmGetTextInput", "lmGetOpenFileName"};
  std::vector<nlohmann::json> found;
  std::copy_if(transcript.begin(), transcript.end(), std::back_inserter(found),
               [](const nlohmann::json& line) {
                 return std::any_of(asking.begin(), asking.end(),
                                    [&](const char* name) { return line.at("call") == name; });
               });
  return found;
}

HostRunResult HostRun::withAnswers(const nlohmann::json& answers) const {
  return run(answers.dump(2), "");
}

HostRunResult HostRun::withTyped(const std::string& lines) const {
  return run(std::nullopt, lines);
}

HostRunResult HostRun::run(const std::optional<std::string>& answers, const std::string& typed) const {
  const std::filesystem::path folder = std::filesystem::absolute(workFolder) / "host-run";
  std::filesystem::create_directories(folder);
  const std::filesystem::path transcript = folder / "transcript.jsonl";
  std::filesystem::remove(transcript);
  write(folder / "typed.txt", typed);

  ChildProcess host;
  host.program = program.empty() ? std::filesystem::path(EMEG_LUMETRA_PROGRAM) : program;
  host.arguments = {std::filesystem::absolute(plugin).string(), "--transcript", transcript.string()};
  if (answers) {
    write(folder / "answers.json", *answers);
    host.arguments.insert(host.arguments.end(), {"--answers", (folder / "answers.json").string()});
  }
  host.arguments.insert(host.arguments.end(), arguments.begin(), arguments.end());
  host.folder = workFolder;
  host.input = folder / "typed.txt";
  host.environment = environment;
  host.beforeStart = beforeStart;

  HostRunResult result;
  result.exitStatus = runChild(host, folder / "stdout.txt", folder / "stderr.txt").exitStatus;
  result.transcript = jsonLines(contentsOf(transcript));
  result.standardOutput = contentsOf(folder / "stdout.txt");
  result.standardError = contentsOf(folder / "stderr.txt");
  return result;
}

} // namespace emeg::test
