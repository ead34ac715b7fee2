#include "tests/run/LoadedPlugin.h"

#include "host/PluginInterface.h"

#include <cstring>
#include <dlfcn.h>
#include <stdexcept>

// Only the order of the virtual operations is shared with the library: the sanitizer's comparison of dynamic
// types has nothing to compare.
#define EMEG_FOREIGN_OBJECT __attribute__((no_sanitize("vptr")))

namespace emeg::test {

LoadedPlugin::LoadedPlugin() : library_(dlopen(EMEG_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)) {
  if (library_ == nullptr) throw std::runtime_error(dlerror());
  object_ = reinterpret_cast<LMTRPluginInterface* (*)()>(symbol("createPlugin"))();
}

EMEG_FOREIGN_OBJECT LoadedPlugin::~LoadedPlugin() {
  delete object_;
}

EMEG_FOREIGN_OBJECT bool LoadedPlugin::execute() {
  return object_->execute();
}

EMEG_FOREIGN_OBJECT bool LoadedPlugin::initPlugin() {
  return object_->initPlugin();
}

void* LoadedPlugin::symbol(const std::string& name) const {
  return dlsym(library_, name.c_str());
}

std::string LoadedPlugin::text(const std::string& function) const {
  return reinterpret_cast<const char* (*)()>(symbol(function))();
}

const void* LoadedPlugin::virtualFunction(int slot) const {
  const void* const* table = nullptr;
  std::memcpy(&table, static_cast<const void*>(object_), sizeof table);
  return table[slot];
}

} // namespace emeg::test
