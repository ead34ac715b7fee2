#pragma once

#include <memory>
#include <string>

class LMTRPluginInterface;

namespace emeg::test {

/// The plug-in library loaded into this process, with one object of it.
class LoadedPlugin {
public:
  /// Throws std::runtime_error when the library cannot be loaded.
  LoadedPlugin();
  /// Deletes the object through its interface. The library stays loaded: its static state is part of what is
  /// tested, and leak reports need its symbols.
  ~LoadedPlugin();
  LoadedPlugin(const LoadedPlugin&) = delete;
  LoadedPlugin& operator=(const LoadedPlugin&) = delete;

  bool execute();
  bool initPlugin();

  /// Address of an exported symbol; null when there is none.
  void* symbol(const std::string& name) const;
  /// Text that an exported function returns.
  std::string text(const std::string& function) const;
  /// Entry of the object's virtual table.
  const void* virtualFunction(int slot) const;

private:
  void* library_;
  LMTRPluginInterface* object_;
};

} // namespace emeg::test
