#include "tests/windows/host/Settings.h"

#include "tests/windows/host/Platform.h"

Settings settings;

static bool take(const char* word, const char* name, const char*& value) {
  const unsigned long long length = strlen(name);
  if (strncmp(word, name, length) != 0 || word[length] != '=') return false;
  value = word + length + 1;
  return true;
}

static bool take(const char* word, const char* name, int& value) {
  const char* text = nullptr;
  if (!take(word, name, text)) return false;
  value = atoi(text);
  return true;
}

bool readSettings() {
  int count = 0;
  char** words = nullptr;
  char** environment = nullptr;
  int startInfo = 0;
  __getmainargs(&count, &words, &environment, 0, &startInfo);
  for (int i = 1; i < count; ++i) {
    const char* const word = words[i];
    if (take(word, "plugin", settings.plugin) || take(word, "major", settings.major) ||
        take(word, "minor", settings.minor) || take(word, "revision", settings.revision) ||
        take(word, "ccd", settings.ccd) || take(word, "prt", settings.prt) ||
        take(word, "ctc", settings.ctc) || take(word, "correction", settings.correction) ||
        take(word, "executions", settings.executions) || take(word, "leaveAt", settings.leaveAt) ||
        take(word, "leave", settings.leave) || take(word, "watch", settings.watch))
      continue;
    printf("not understood: %s\n", word);
    return false;
  }
  return true;
}
