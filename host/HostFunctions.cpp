#include "host/HostFunctions.h"

#include "host/Answers.h"
#include "host/ScreenText.h"
#include "host/Transcript.h"
#include "host/User.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <ostream>
#include <string>

namespace emeg {
namespace {

HostSession* currentSession = nullptr;

constexpr int cancelled = -1;
constexpr float cancelledFloat = -1.0f;

std::string textOf(const char* text) {
  return text != nullptr ? text : "";
}

/// A text as the transcript tells it: a null pointer is seen there.
nlohmann::ordered_json recorded(const char* text) {
  return text != nullptr ? nlohmann::ordered_json(text) : nlohmann::ordered_json();
}

double recorded(float value) {
  return static_cast<double>(value);
}

/// Runs the body of an exported function on the current session; `fallback` is the result when there is none
/// or an exception occurs. The plug-in's side was built on its own and must not see exceptions of this side.
template <typename Result, typename Body>
Result served(Result fallback, Body body) noexcept {
  try {
    if (currentSession != nullptr) return body(*currentSession);
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "lumetra: a call of the plug-in could not be served: %s\n", exception.what());
  } catch (...) {
    std::fputs("lumetra: a call of the plug-in could not be served\n", stderr);
  }
  return fallback;
}

template <typename Body>
void served(Body body) noexcept {
  served(0, [&](HostSession& session) {
    body(session);
    return 0;
  });
}

/// The answer when it fits a result buffer; otherwise it counts as cancelled and a note says why.
std::optional<std::string> fitting(std::optional<std::string> answer, const char* what,
                                   HostSession& session) {
  if (!answer) return answer;
  if (answer->size() > longestResultText)
    session.notes << "lumetra: " << what << " of " << answer->size()
                  << " characters is refused: the dialogue takes " << longestResultText
                  << ". The question counts as cancelled: " << excerpt(*answer) << '\n'
                  << std::flush;
  else if (answer->find('\0') != std::string::npos)
    session.notes << "lumetra: " << what
                  << " with a null character inside is refused. The question counts as "
                  << "cancelled: " << excerpt(*answer) << '\n'
                  << std::flush;
  else
    return answer;
  return std::nullopt;
}

/// Writes a text of at most 255 characters and its terminating null.
void fill(char* buffer, const std::string& text) {
  if (buffer != nullptr) buffer[text.copy(buffer, longestResultText)] = '\0';
}

void show(HostSession& session, const char* mark, const char* text) {
  if (session.screen != nullptr) *session.screen << mark << screenText(textOf(text)) << '\n' << std::flush;
}

} // namespace

HostSessionScope::HostSessionScope(HostSession& session) {
  currentSession = &session;
}
HostSessionScope::~HostSessionScope() {
  currentSession = nullptr;
}

} // namespace emeg

using namespace emeg;

int lmGetVersionOfLumetra(int* major, int* minor, int* revision) {
  return served(0, [&](HostSession& session) {
    const auto& version = session.settings.version();
    if (major != nullptr) *major = version[0];
    if (minor != nullptr) *minor = version[1];
    if (revision != nullptr) *revision = version[2];
    session.transcript.write({{"call", "lmGetVersionOfLumetra"}, {"answer", version}});
    return 1;
  });
}

void lmLogText(const char* text) {
  served([&](HostSession& session) {
    session.transcript.write({{"call", "lmLogText"}, {"text", recorded(text)}});
    show(session, "", text);
  });
}

void lmMessageBox(const char* text) {
  served([&](HostSession& session) {
    session.transcript.write({{"call", "lmMessageBox"}, {"text", recorded(text)}});
    show(session, "! ", text);
  });
}

int lmYesNoMessageBox(const char* question) {
  return served(cancelled, [&](HostSession& session) {
    const int answer = session.user.yesNo(textOf(question)).value_or(cancelled);
    session.transcript.write(
        {{"call", "lmYesNoMessageBox"}, {"prompt", recorded(question)}, {"answer", answer}});
    return answer;
  });
}

int lmGetIntegerInput(const char* prompt, int defaultValue, int minimum, int maximum) {
  return served(cancelled, [&](HostSession& session) {
    const int answer =
        session.user.integer(textOf(prompt), defaultValue, minimum, maximum).value_or(cancelled);
    session.transcript.write({{"call", "lmGetIntegerInput"},
                              {"prompt", recorded(prompt)},
                              {"default", defaultValue},
                              {"minimum", minimum},
                              {"maximum", maximum},
                              {"answer", answer}});
    return answer;
  });
}

float lmGetFloatInput(const char* prompt, float defaultValue, float minimum, float maximum) {
  return served(cancelledFloat, [&](HostSession& session) {
    const float answer =
        session.user.real(textOf(prompt), defaultValue, minimum, maximum).value_or(cancelledFloat);
    session.transcript.write({{"call", "lmGetFloatInput"},
                              {"prompt", recorded(prompt)},
                              {"default", recorded(defaultValue)},
                              {"minimum", recorded(minimum)},
                              {"maximum", recorded(maximum)},
                              {"answer", recorded(answer)}});
    return answer;
  });
}

void lmGetTextInput(const char* prompt, const char* defaultText, char* result) {
  const bool done = served(false, [&](HostSession& session) {
    // Copied first: the default may stand in the result buffer.
    const nlohmann::ordered_json recordedDefault = recorded(defaultText);
    const std::string answer =
        fitting(session.user.text(textOf(prompt), textOf(defaultText)), "a text", session).value_or("");
    fill(result, answer);
    session.transcript.write({{"call", "lmGetTextInput"},
                              {"prompt", recorded(prompt)},
                              {"default", recordedDefault},
                              {"answer", answer}});
    return true;
  });
  if (!done && result != nullptr) result[0] = '\0';
}

int lmGetOpenFileName(const char* title, const char* pattern, const char* description, char* path) {
  const int chosen = served(0, [&](HostSession& session) {
    const std::optional<std::string> answer = fitting(
        session.user.openFile(textOf(title), textOf(pattern), textOf(description)), "a path", session);
    const int answered = answer && path != nullptr ? 1 : 0;
    fill(path, answer.value_or(""));
    session.transcript.write({{"call", "lmGetOpenFileName"},
                              {"title", recorded(title)},
                              {"pattern", recorded(pattern)},
                              {"description", recorded(description)},
                              {"answer", answered},
                              {"path", answered == 1 ? *answer : ""}});
    return answered;
  });
  if (chosen == 0 && path != nullptr) path[0] = '\0';
  return chosen;
}

void lmUpdateActiveWindow() {
  served([](HostSession& session) { session.transcript.write({{"call", "lmUpdateActiveWindow"}}); });
}

int lmGetDlgIntegerParameter(int index) {
  return served(cancelled, [&](HostSession& session) {
    const int answer = session.settings.integerParameter(index).value_or(cancelled);
    session.transcript.write({{"call", "lmGetDlgIntegerParameter"}, {"index", index}, {"answer", answer}});
    return answer;
  });
}

float lmGetDlgFloatParameter(int index) {
  return served(cancelledFloat, [&](HostSession& session) {
    const float answer = session.settings.floatParameter(index).value_or(cancelledFloat);
    session.transcript.write(
        {{"call", "lmGetDlgFloatParameter"}, {"index", index}, {"answer", recorded(answer)}});
    return answer;
  });
}
