// What code with Microsoft's C++ ABI needs of its runtime library, which this library does without.

#include "plugin/RunPlugin.h"

// The deleting destructors call one of these, depending on the compiler.
void operator delete(void* object) noexcept {
  emegFreeObject(object);
}
void operator delete(void* object, decltype(sizeof 0)) noexcept {
  emegFreeObject(object);
}

// Stands in the virtual table of the interface in place of its pure functions. Nobody can call it: every
// object is complete before the host gets it.
extern "C" int _purecall() {
  __builtin_trap();
}
