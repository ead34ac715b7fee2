#pragma once

#include "tests/windows/host/Platform.h"
#include "tests/windows/host/Settings.h"

static constexpr unsigned long microsoftCppException = 0xE06D7363;

inline void tellOfWatchedFile() {
  constexpr unsigned long none = 0xFFFFFFFF;
  if (settings.watch != nullptr)
    printf("watched file: %s\n", GetFileAttributesA(settings.watch) == none ? "gone" : "there");
}

template <typename Plugin>
void executeOnce(Plugin& plugin) {
  __try {
    printf("execute: %d\n", plugin.execute() ? 1 : 0);
  } __except (1) {
    printf("execute was left by a %s exception\n",
           _exception_code() == microsoftCppException ? "C++" : "structured");
  }
}

/// execute() as often as the settings say, with a line for each: what it returned or how it was left, and
/// whether the watched file is there.
template <typename Plugin>
void executePlugin(Plugin& plugin) {
  for (int i = 0; i < settings.executions; ++i) {
    executeOnce(plugin);
    tellOfWatchedFile();
  }
}
