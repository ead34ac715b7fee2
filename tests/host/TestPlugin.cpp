// A plug-in whose work is a sequence of calls to the host, chosen by the variable EMEG_TEST_SCRIPT. What it
// got to hear it tells through the host's log, so that the tests see both sides of every call. The variable
// EMEG_TEST_PROMPT is the prompt of its questions.

#include "host/PluginInterface.h"

#include <dlfcn.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {

/// A function of the running program by its name.
template <typename Function>
Function host(const char* name) {
  void* found = dlsym(dlopen(nullptr, RTLD_NOW), name);
  if (found == nullptr) throw std::runtime_error(std::string("the host does not export ") + name);
  return reinterpret_cast<Function>(found);
}

int version(int* major, int* minor, int* revision) {
  return host<int (*)(int*, int*, int*)>("lmGetVersionOfLumetra")(major, minor, revision);
}
void logText(const char* text) {
  host<void (*)(const char*)>("lmLogText")(text);
}
void messageBox(const char* text) {
  host<void (*)(const char*)>("lmMessageBox")(text);
}
int yesNo(const char* question) {
  return host<int (*)(const char*)>("lmYesNoMessageBox")(question);
}
int integer(const char* prompt, int def, int min, int max) {
  return host<int (*)(const char*, int, int, int)>("lmGetIntegerInput")(prompt, def, min, max);
}
float real(const char* prompt, float def, float min, float max) {
  return host<float (*)(const char*, float, float, float)>("lmGetFloatInput")(prompt, def, min, max);
}
void text(const char* prompt, const char* def, char* result) {
  host<void (*)(const char*, const char*, char*)>("lmGetTextInput")(prompt, def, result);
}
int openFile(const char* title, const char* pattern, const char* description, char* path) {
  return host<int (*)(const char*, const char*, const char*, char*)>("lmGetOpenFileName")(title, pattern,
                                                                                          description, path);
}
void updateActiveWindow() {
  host<void (*)()>("lmUpdateActiveWindow")();
}
int integerParameter(int index) {
  return host<int (*)(int)>("lmGetDlgIntegerParameter")(index);
}
float floatParameter(int index) {
  return host<float (*)(int)>("lmGetDlgFloatParameter")(index);
}

void tell(const std::string& what, const std::string& value) {
  logText((what + " = " + value).c_str());
}
void tell(const std::string& what, int value) {
  tell(what, std::to_string(value));
}
void tell(const std::string& what, float value) {
  std::array<char, 64> shown{};
  std::snprintf(shown.data(), shown.size(), "%g", static_cast<double>(value));
  tell(what, shown.data());
}

/// A result buffer of the agreed 256 characters between guards that nobody may touch.
struct GuardedBuffer {
  static constexpr std::size_t guardLength = 64, bufferLength = 256;
  std::array<char, guardLength + bufferLength + guardLength> bytes;
  GuardedBuffer() { bytes.fill('#'); }
  char* buffer() { return bytes.data() + guardLength; }
  bool guardsAreWhole() const {
    for (std::size_t i = 0; i < bytes.size(); ++i)
      if ((i < guardLength || i >= guardLength + bufferLength) && bytes[i] != '#') return false;
    return true;
  }
};

const char* prompt() {
  const char* given = std::getenv("EMEG_TEST_PROMPT");
  return given != nullptr ? given : "Please answer.";
}

void tellVersion() {
  int major = 0, minor = 0, revision = 0;
  version(&major, &minor, &revision);
  tell("version", std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(revision));
}

void askYesNo() {
  tell("yes/no", yesNo(prompt()));
}
void askInteger() {
  tell("integer", integer(prompt(), 3, 1, 20));
}
void askFloat() {
  tell("float", real(prompt(), 0.5f, 0.0f, 100.0f));
}

void askText() {
  GuardedBuffer result;
  text(prompt(), "the default", result.buffer());
  tell("text", result.buffer());
  tell("guards", result.guardsAreWhole());
}

void askTextInPlace() {
  GuardedBuffer result;
  std::snprintf(result.buffer(), GuardedBuffer::bufferLength, "label");
  text(prompt(), result.buffer(), result.buffer());
  tell("text", result.buffer());
}

void askFile() {
  GuardedBuffer path;
  const int chosen = openFile("Please select a CTC file...", "*.ctc", "CTC files (*.ctc)", path.buffer());
  tell("chosen", chosen);
  tell("path", path.buffer());
  tell("guards", path.guardsAreWhole());
}

void askAllFiles() {
  for (const char* pattern : {"*.ccd", "*.prt", "*.ctc", "*.xyz"}) {
    GuardedBuffer path;
    const int chosen = openFile("Please select...", pattern, "Files", path.buffer());
    tell(pattern, std::to_string(chosen) + ' ' + path.buffer());
  }
}

void askEverything() {
  askYesNo();
  askInteger();
  askFloat();
  askText();
  askFile();
  tell("integer parameter", integerParameter(0));
  tell("float parameter", floatParameter(2));
}

void callEverything() {
  tellVersion();
  logText("a log line");
  messageBox("a message");
  askEverything();
  updateActiveWindow();
}

void passNullPointers() {
  version(nullptr, nullptr, nullptr);
  logText(nullptr);
  messageBox(nullptr);
  tell("yes/no", yesNo(nullptr));
  tell("integer", integer(nullptr, 1, 1, 2));
  tell("float", real(nullptr, 1.0f, 1.0f, 2.0f));
  text(nullptr, nullptr, nullptr);
  tell("chosen", openFile(nullptr, "*.ctc", nullptr, nullptr));
  tell("chosen", openFile(nullptr, nullptr, nullptr, nullptr));
}

void passUnusualTexts() {
  logText("caf\xe9 \xff\xfe");
  messageBox("one<br>two<i>three</i>");
  logText("bell \a and escape \x1b[2J");
  tell("integer", integer("br\xfc"
                          "der",
                          1, 1, 2));
}

void passUnusualNumbers() {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  constexpr float infinity = std::numeric_limits<float>::infinity();
  tell("float", real(prompt(), nan, -infinity, infinity));
  tell("integer", integer(prompt(), std::numeric_limits<int>::min(), 5, 1));
  tell("parameter", integerParameter(-7));
}

void askThreeIntegers() {
  for (const char* question : {"How many slices?", "How many volumes?", "How many slices again?"})
    tell(question, integer(question, 3, 1, 20));
}

void logManyLines(int lines) {
  for (int i = 0; i < lines; ++i) logText("a line of the log that takes some room in the transcript");
}

const std::map<std::string, std::function<bool()>>& scripts() {
  const auto done = [](void (*script)()) { return [script] { return script(), true; }; };
  static const std::map<std::string, std::function<bool()>> all{
      {"everything", done(callEverything)},
      {"all questions", done(askEverything)},
      {"yes/no", done(askYesNo)},
      {"integer", done(askInteger)},
      {"three integers", done(askThreeIntegers)},
      {"float", done(askFloat)},
      {"text", done(askText)},
      {"text in place", done(askTextInPlace)},
      {"file", done(askFile)},
      {"all files", done(askAllFiles)},
      {"version", done(tellVersion)},
      {"null pointers", done(passNullPointers)},
      {"unusual texts", done(passUnusualTexts)},
      {"unusual numbers", done(passUnusualNumbers)},
      {"nothing", [] { return true; }},
      {"false", [] { return false; }},
      {"throw", []() -> bool { throw std::runtime_error("a wilful exception"); }},
      {"crash", []() -> bool { logText("before the end"), std::_Exit(77); }},
      {"long log", [] { return logManyLines(2000), true; }},
  };
  return all;
}

std::string chosenScript() {
  const char* chosen = std::getenv("EMEG_TEST_SCRIPT");
  return chosen != nullptr ? chosen : "nothing";
}

class TestPlugin : public LMTRPluginInterface {
public:
  ~TestPlugin() override { std::fputs("the object was deleted\n", stderr); }
  bool execute() override { return scripts().at(chosenScript())(); }
  bool initPlugin() override { return true; }
};

} // namespace

EXPORT LMTRPluginInterface* createPlugin() {
  return chosenScript() == "no object" ? nullptr : std::make_unique<TestPlugin>().release();
}
EXPORT const char* getPluginName() {
  return "Test plug-in ...";
}
EXPORT const char* getPluginDescription() {
  return "Does what a test asks for.";
}
EXPORT const char* getAuthor() {
  return "<i>Somebody</i>";
}
EXPORT const char* getHelpFile() {
  return chosenScript() == "no object" ? nullptr : "";
}
EXPORT const char* getGUIScript() {
  return "";
}
EXPORT const char* getPluginVersion() {
  return "0.9";
}
