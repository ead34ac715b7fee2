// A library that can be loaded but is no plug-in: it has a name and nothing else.
extern "C" __attribute__((visibility("default"))) const char* getPluginName() {
  return "half a plug-in";
}
