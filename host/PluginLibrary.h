#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

class LMTRPluginInterface;

namespace emeg {

/// What a plug-in says about itself; empty where it says nothing.
struct PluginDescription {
  std::string name, description, version, author, helpFile, guiScript;
};

/// A loaded plug-in library; unloaded when this object ends.
class PluginLibrary {
public:
  /// Loads the library and looks up all that a plug-in has to export. Null, with the reason in `problem`,
  /// when the file is no regular file, cannot be loaded, or lacks an export.
  static std::unique_ptr<PluginLibrary> load(const std::filesystem::path& file, std::string& problem);

  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;
  ~PluginLibrary();

  PluginDescription description() const;

  enum class Outcome { Succeeded, Failed, NoObject };
  /// Creates the plug-in's object, executes it and deletes it through the interface. `finished` is called
  /// between the two last steps with what execute returned. An exception that leaves execute is a failure,
  /// named in `problem`.
  Outcome run(const std::function<void(bool)>& finished, std::string& problem) const;

private:
  struct ObjectDeleter {
    void operator()(LMTRPluginInterface* object) const;
  };
  using ObjectPointer = std::unique_ptr<LMTRPluginInterface, ObjectDeleter>;
  using TextFunction = const char* (*)();
  using CreateFunction = LMTRPluginInterface* (*)();

  explicit PluginLibrary(void* handle) : handle_(handle) {}
  bool lookUpExports(std::string& problem);

  void* handle_;
  CreateFunction create_ = nullptr;
  TextFunction name_ = nullptr;
  TextFunction description_ = nullptr;
  TextFunction author_ = nullptr;
  TextFunction helpFile_ = nullptr;
  TextFunction guiScript_ = nullptr;
  TextFunction version_ = nullptr;
};

} // namespace emeg
