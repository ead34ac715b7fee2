#include "plugin/bridge/HostModule.h"

#include <dlfcn.h>

namespace emeg {

// Any program that exports the host functions is a host.
HostModule::HostModule() : handle_(dlopen(nullptr, RTLD_LAZY)) {}

HostModule::~HostModule() {
  if (handle_ != nullptr) dlclose(handle_);
}

void* HostModule::function(const char* name) const {
  return dlsym(handle_, name);
}

void callGuarded(void (*function)(const void* context), const void* context) {
  function(context);
}

} // namespace emeg
