#include "app/correct/HostAnswers.h"

#include "plugin/bridge/HostFunctions.h"

#include <cstring>
#include <utility>

namespace emeg {

namespace {

constexpr const char* logPrefix = "// EMEG artifacts > ";
constexpr int cancelled = -1;
constexpr size_t pathCapacity = 4096; // of the bridge's buffer

HostAnswers* user = nullptr; ///< the host's functions have no argument to carry it

bool speaksOf(const std::string& prompt, const char* words) {
  return prompt.find(words) != std::string::npos;
}

std::string plainText(const std::string& text) {
  std::string plain;
  for (size_t i = 0; i < text.size();) {
    const bool lineBreak = text.compare(i, 4, "<br>") == 0;
    plain += lineBreak || text[i] == '\n' ? ' ' : text[i];
    i += lineBreak ? 4 : 1;
  }
  return plain;
}

} // namespace

/// The converter's side of the conversation, as plain functions.
struct HostFunctions {
  static int version(int* major, int* minor, int* revision) {
    *major = 2;
    *minor = 1;
    *revision = 0;
    return 1;
  }
  static void logText(const char* text) { user->logText(text); }
  static void messageBox(const char* text) { user->messageBox(text); }
  static int yesNo(const char* question) { return user->yesNo(question); }
  static int integerInput(const char* prompt, int, int, int) { return user->integerInput(prompt); }
  static float floatInput(const char* prompt, float, float, float) { return user->floatInput(prompt); }
  static int openFile(const char*, const char* pattern, const char*, char* path) {
    return user->chooseFile(pattern, path);
  }
  // Without parameters of a dialogue every question is asked, except for the scaling order, which only comes
  // from there.
  static int dialogInteger(int index) {
    constexpr int scalingOrderIndex = 5;
    return index == scalingOrderIndex ? user->dialogue_.scalingOrder : cancelled;
  }
  static float dialogFloat(int) { return static_cast<float>(cancelled); }
};

HostAnswers::HostAnswers(Dialogue dialogue, std::function<void(const std::string&)> log)
    : dialogue_(std::move(dialogue)), log_(std::move(log)) {
  user = this;
  HostFunctionTable table;
  table.lmGetVersionOfLumetra = HostFunctions::version;
  table.lmLogText = HostFunctions::logText;
  table.lmMessageBox = HostFunctions::messageBox;
  table.lmYesNoMessageBox = HostFunctions::yesNo;
  table.lmGetIntegerInput = HostFunctions::integerInput;
  table.lmGetFloatInput = HostFunctions::floatInput;
  table.lmGetOpenFileName = HostFunctions::openFile;
  table.lmGetDlgIntegerParameter = HostFunctions::dialogInteger;
  table.lmGetDlgFloatParameter = HostFunctions::dialogFloat;
  hostFunctions = table;
}

HostAnswers::~HostAnswers() {
  hostFunctions = HostFunctionTable();
  user = nullptr;
}

void HostAnswers::logText(const char* text) {
  std::string line = text;
  if (line.rfind(logPrefix, 0) == 0) line.erase(0, std::strlen(logPrefix));
  if (!line.empty()) log_(plainText(line));
}

void HostAnswers::messageBox(const char* text) {
  errors_.push_back(plainText(text));
}

void HostAnswers::noteUnanswered(const std::string& prompt) {
  errors_.push_back("the converter asked something that has no answer here: " + plainText(prompt));
}

int HostAnswers::yesNo(const std::string& question) {
  if (speaksOf(question, "performed volume-wise")) return dialogue_.volumeWise ? 1 : 0;
  if (speaksOf(question, "average reference")) return dialogue_.averageReference ? 1 : 0;
  noteUnanswered(question);
  return cancelled;
}

int HostAnswers::integerInput(const std::string& prompt) {
  if (speaksOf(prompt, "EEG-fMRI artifact correction")) return dialogue_.correctBcg ? 2 : 1;
  if (speaksOf(prompt, "decimation factor")) return dialogue_.decimationFactor;
  if (speaksOf(prompt, "number of notches")) return static_cast<int>(dialogue_.notches.size());
  if (speaksOf(prompt, "Window half-length")) return dialogue_.window;
  noteUnanswered(prompt);
  return cancelled;
}

float HostAnswers::floatInput(const std::string& prompt) {
  if (speaksOf(prompt, "high-pass filter")) return static_cast<float>(dialogue_.highPass);
  if (speaksOf(prompt, "low-pass filter")) return static_cast<float>(dialogue_.lowPass);
  if (nextNotch_ < dialogue_.notches.size()) {
    const Notch& notch = dialogue_.notches[nextNotch_];
    if (speaksOf(prompt, "provide the frequency")) return static_cast<float>(notch.frequency);
    if (speaksOf(prompt, "provide the width")) {
      ++nextNotch_;
      return static_cast<float>(notch.width);
    }
  }
  noteUnanswered(prompt);
  return static_cast<float>(cancelled);
}

/// Only the CTC file is chosen: names and markers do not go through the converter.
int HostAnswers::chooseFile(const std::string& pattern, char* path) const {
  if (pattern != "*.ctc" || dialogue_.ctcPath.size() >= pathCapacity) return 0;
  std::memcpy(path, dialogue_.ctcPath.c_str(), dialogue_.ctcPath.size() + 1);
  return 1;
}

} // namespace emeg
