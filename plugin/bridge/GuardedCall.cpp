#include "plugin/bridge/GuardedCall.h"

// What Microsoft's compilers raise for `throw`: 0xE0 and "msc".
static constexpr unsigned long microsoftCppException = 0xE06D7363;

extern "C" int emegGuardedCall(void (*function)(const void* context), const void* context) {
  __try {
    function(context);
  } __except (_exception_code() == microsoftCppException ? 1 : 0) {
    return 0;
  }
  return 1;
}
