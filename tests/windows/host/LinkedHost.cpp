// A workstation that is linked to the plug-in's exported class members.

#include "tests/windows/host/ExecutePlugin.h"
#include "tests/windows/host/LumetraPlugin.h"
#include "tests/windows/host/Platform.h"
#include "tests/windows/host/Settings.h"

extern "C" __declspec(dllimport) LMTRPluginInterface* createPlugin();

/// A plug-in of the workstation's own: the interface's exported members are its base.
class BuiltInPlugin : public LMTRPluginInterface {
public:
  explicit BuiltInPlugin(int number) : number_(number) {}
  bool execute() override { return number_ == 5; }
  bool initPlugin() override { return true; }

private:
  int number_;
};

static void show(const char* what, bool holds) {
  printf("%s: %s\n", what, holds ? "yes" : "no");
}

static void useEveryMember() {
  EMEGArtifactPlugin plugin;
  EMEGArtifactPlugin copy(plugin);
  show("assignment gives the object", &(copy = plugin) == &copy);
  show("object is its virtual table pointer", sizeof plugin == sizeof(void*));
  show("copy has the same virtual table",
       *reinterpret_cast<void**>(&plugin) == *reinterpret_cast<void**>(&copy));
  show("copy initialises", copy.EMEGArtifactPlugin::initPlugin());

  BuiltInPlugin five(5);
  BuiltInPlugin six(6);
  LMTRPluginInterface& interface = five;
  show("built-in plug-in executes", interface.execute() && !six.execute());
  show("interface assignment gives the object", &(interface = six) == &interface);
  show("interface assignment copies nothing", interface.execute());
  const BuiltInPlugin third(five);
  show("copied built-in plug-in keeps its value", const_cast<BuiltInPlugin&>(third).execute());
}

static void useTypeInformation() {
  LMTRPluginInterface* const object = createPlugin();
  show("dynamic_cast finds the plug-in's class", dynamic_cast<EMEGArtifactPlugin*>(object) == object);
  show("dynamic_cast refuses another class", dynamic_cast<BuiltInPlugin*>(object) == nullptr);
  delete object;
}

extern "C" [[noreturn]] void hostMain() {
  const bool good = readSettings();
  if (good) {
    useEveryMember();
    useTypeInformation();
    EMEGArtifactPlugin plugin;
    executePlugin(plugin);
  }
  printf("%s\n", good ? "done" : "failed");
  fflush(nullptr);
  ExitProcess(good ? 0 : 1);
}
