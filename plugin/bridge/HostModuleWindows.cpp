#include "plugin/bridge/HostModule.h"

#include "plugin/bridge/GuardedCall.h"

#include <windows.h>

namespace emeg {

// The program is loaded as long as this library is: its handle needs no release.
HostModule::HostModule() : handle_(GetModuleHandleA("Lumetra.exe")) {}

HostModule::~HostModule() = default;

void* HostModule::function(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void callGuarded(void (*function)(const void* context), const void* context) {
  if (emegGuardedCall(function, context) == 0) throw HostException();
}

} // namespace emeg
