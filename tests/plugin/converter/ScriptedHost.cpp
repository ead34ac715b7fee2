#include "tests/plugin/converter/ScriptedHost.h"

#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/messages/Text.h"

#include <algorithm>
#include <cstring>

namespace emeg {

namespace {

ScriptedHost* player = nullptr;

template <typename Answer>
Answer nextOf(std::deque<Answer>& answers, Answer otherwise) {
  if (answers.empty()) return otherwise;
  Answer answer = answers.front();
  answers.pop_front();
  return answer;
}

int answerVersion(int* major, int* minor, int* revision) {
  player->record("version");
  *major = player->hostVersion[0];
  *minor = player->hostVersion[1];
  *revision = player->hostVersion[2];
  return 0;
}

void answerLog(const char* text) {
  player->record(std::string("log ") + text);
}

void answerBox(const char* text) {
  player->record(std::string("box ") + text);
}

int answerYesNo(const char* text) {
  player->record(std::string("yesno ") + text);
  return nextOf(player->yesNoAnswers, -1);
}

int answerInteger(const char* text, int defaultValue, int minimum, int maximum) {
  player->record(formatText("integer %s [%d, %d, %d]", text, defaultValue, minimum, maximum));
  return nextOf(player->integerAnswers, -1);
}

float answerFloat(const char* text, float defaultValue, float minimum, float maximum) {
  player->record(formatText("float %s [%.7g, %.7g, %.7g]", text, static_cast<double>(defaultValue),
                            static_cast<double>(minimum), static_cast<double>(maximum)));
  return nextOf(player->floatAnswers, -1.0f);
}

void answerText(const char* text, const char* defaultText, char* buffer) {
  player->record(formatText("text %s [%s]", text, defaultText));
  const std::string answer = nextOf(player->textAnswers, std::string());
  std::memcpy(buffer, answer.c_str(), answer.size() + 1);
}

int answerFile(const char* title, const char* pattern, const char* description, char* buffer) {
  player->record(formatText("file %s|%s|%s", title, pattern, description));
  const std::string answer = nextOf(player->fileAnswers, std::string());
  if (answer.empty()) return 0;
  std::memcpy(buffer, answer.c_str(), answer.size() + 1);
  return 1;
}

void answerUpdate() {
  player->record("update");
}

int answerParameter(int index) {
  player->record(formatText("parameter %d", index));
  const auto known = player->dialogIntegers.find(index);
  return known == player->dialogIntegers.end() ? -1 : known->second;
}

float answerFloatParameter(int index) {
  player->record(formatText("float parameter %d", index));
  const auto known = player->dialogFloats.find(index);
  return known == player->dialogFloats.end() ? -1.0f : known->second;
}

bool startsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

} // namespace

ScriptedHost::ScriptedHost() {
  player = this;
  hostFunctions = HostFunctionTable{answerVersion, answerLog,       answerBox,           answerYesNo,
                                    answerInteger, answerFloat,     answerText,          answerFile,
                                    answerUpdate,  answerParameter, answerFloatParameter};
}

ScriptedHost::~ScriptedHost() {
  hostFunctions = HostFunctionTable();
  player = nullptr;
}

void ScriptedHost::record(const std::string& line) {
  calls.push_back(line);
  if (onCall) onCall(line);
}

std::vector<std::string> ScriptedHost::texts(const std::string& kind) const {
  std::vector<std::string> found;
  for (const std::string& call : calls)
    if (startsWith(call, kind + " ")) found.push_back(call.substr(kind.size() + 1));
  return found;
}

std::vector<std::string> ScriptedHost::questions() const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (startsWith(call, "float parameter ")) continue;
    for (const char* kind : {"yesno ", "integer ", "float ", "text ", "file "})
      if (startsWith(call, kind)) found.push_back(call);
  }
  return found;
}

bool ScriptedHost::logged(const std::string& line) const {
  const std::vector<std::string> lines = logLines();
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

} // namespace emeg
