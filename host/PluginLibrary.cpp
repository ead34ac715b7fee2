#include "host/PluginLibrary.h"

#include "host/PluginInterface.h"

#include <dlfcn.h>

#include <exception>
#include <system_error>

// The object's type information is the library's, not the host's: only the order of the virtual operations is
// shared, so the sanitizer's comparison of dynamic types has nothing to compare.
#define EMEG_FOREIGN_OBJECT __attribute__((no_sanitize("vptr")))

namespace emeg {
namespace {

std::string lastLoaderError() {
  const char* text = dlerror();
  return text != nullptr ? text : "unknown reason";
}

template <typename Function>
bool lookUp(void* handle, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(handle, name));
  return function != nullptr;
}

std::string textOf(const char* text) {
  return text != nullptr ? text : "";
}

EMEG_FOREIGN_OBJECT bool executeObject(LMTRPluginInterface& object, std::string& problem) {
  try {
    return object.execute();
  } catch (const std::exception& exception) {
    problem = std::string("the plug-in ended with an exception: ") + exception.what();
  } catch (...) {
    problem = "the plug-in ended with an exception of an unknown kind";
  }
  return false;
}

} // namespace

std::unique_ptr<PluginLibrary> PluginLibrary::load(const std::filesystem::path& file, std::string& problem) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    problem = "cannot load the plug-in " + file.string() + ": " +
              (error ? error.message() : std::string("it is not a file"));
    return nullptr;
  }
  // A name without a folder would be searched for in the system's library folders.
  const std::filesystem::path whole = std::filesystem::absolute(file, error);
  void* handle = error ? nullptr : dlopen(whole.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    problem =
        "cannot load the plug-in " + file.string() + ": " + (error ? error.message() : lastLoaderError());
    return nullptr;
  }
  std::unique_ptr<PluginLibrary> library(new PluginLibrary(handle));
  if (!library->lookUpExports(problem)) {
    problem = "cannot use the plug-in " + file.string() + ": " + problem;
    return nullptr;
  }
  return library;
}

PluginLibrary::~PluginLibrary() {
  dlclose(handle_);
}

bool PluginLibrary::lookUpExports(std::string& problem) {
  const auto need = [&](const char* name, auto& function) {
    if (lookUp(handle_, name, function)) return true;
    problem = std::string("it does not export ") + name;
    return false;
  };
  return need("createPlugin", create_) && need("getPluginName", name_) &&
         need("getPluginDescription", description_) && need("getAuthor", author_) &&
         need("getHelpFile", helpFile_) && need("getGUIScript", guiScript_) &&
         need("getPluginVersion", version_);
}

PluginDescription PluginLibrary::description() const {
  return {textOf(name_()),   textOf(description_()), textOf(version_()),
          textOf(author_()), textOf(helpFile_()),    textOf(guiScript_())};
}

EMEG_FOREIGN_OBJECT void PluginLibrary::ObjectDeleter::operator()(LMTRPluginInterface* object) const {
  delete object;
}

PluginLibrary::Outcome PluginLibrary::run(const std::function<void(bool)>& finished,
                                          std::string& problem) const {
  const ObjectPointer object(create_());
  if (!object) return Outcome::NoObject;
  const bool succeeded = executeObject(*object, problem);
  finished(succeeded);
  return succeeded ? Outcome::Succeeded : Outcome::Failed;
}

} // namespace emeg
