// A workstation that loads the plug-in at run time and knows its object through createPlugin alone.

#include "tests/windows/host/ExecutePlugin.h"
#include "tests/windows/host/Platform.h"
#include "tests/windows/host/Settings.h"

/// Only the order of the virtual operations is shared: nothing here links to the plug-in.
class LMTRPluginInterface {
public:
  virtual ~LMTRPluginInterface() = 0;
  virtual bool execute() = 0;
  virtual bool initPlugin() = 0;
};

using Text = const char* (*)();
using Factory = LMTRPluginInterface* (*)();

static bool showText(void* module, const char* name) {
  const Text function = reinterpret_cast<Text>(GetProcAddress(module, name));
  if (function == nullptr) {
    printf("%s is missing\n", name);
    return false;
  }
  const bool same = function() == function();
  printf("%s: %s%s\n", name, function(), same ? "" : " (changes its place)");
  return true;
}

static bool run(void* module) {
  static const char* const texts[] = {"getPluginName", "getPluginDescription", "getAuthor",
                                      "getHelpFile",   "getGUIScript",         "getPluginVersion"};
  for (const char* name : texts)
    if (!showText(module, name)) return false;
  printf("help file and script: %s function\n",
         GetProcAddress(module, "getHelpFile") == GetProcAddress(module, "getGUIScript") ? "one" : "not one");

  const Factory createPlugin = reinterpret_cast<Factory>(GetProcAddress(module, "createPlugin"));
  LMTRPluginInterface* const plugin = createPlugin != nullptr ? createPlugin() : nullptr;
  if (plugin == nullptr) {
    printf("no plug-in object\n");
    return false;
  }
  void* const table = *reinterpret_cast<void**>(plugin);
  printf("virtual table: %s\n",
         table == GetProcAddress(module, "??_7EMEGArtifactPlugin@@6B@") ? "the exported one" : "another one");
  printf("initPlugin: %d\n", plugin->initPlugin() ? 1 : 0);
  executePlugin(*plugin);
  delete plugin;
  printf("deleted\n");
  return true;
}

extern "C" [[noreturn]] void hostMain() {
  bool good = readSettings();
  if (good) {
    void* const module = LoadLibraryA(settings.plugin);
    if (module == nullptr) printf("cannot load %s: error %lu\n", settings.plugin, GetLastError());
    good = module != nullptr && run(module);
    if (module != nullptr) printf("unloaded: %d\n", FreeLibrary(module) != 0 ? 1 : 0);
    tellOfWatchedFile();
  }
  printf("%s\n", good ? "done" : "failed");
  fflush(nullptr);
  ExitProcess(good ? 0 : 1);
}
