// What a Microsoft C++ program expects of its runtime library.

#include "tests/windows/host/Platform.h"

extern "C" {
void* malloc(unsigned long long nrOfBytes);
void free(void* memory);

/// The compiler refers to it in programs that use floating point.
int _fltused = 0;
}

void* operator new(decltype(sizeof 0) nrOfBytes) {
  return malloc(nrOfBytes);
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, decltype(sizeof 0)) noexcept {
  free(memory);
}
extern "C" int _purecall() {
  ExitProcess(3);
}
