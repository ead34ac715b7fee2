// The shell that the host sees: the classes and the exported functions, nothing else. Without standard
// headers, so that any compiler can build it alone: on Windows one that follows Microsoft's C++ ABI, which
// the hosts there have.

#include "plugin/EMEGArtifactPlugin.h"

#include "plugin/RunPlugin.h"

LMTRPluginInterface::LMTRPluginInterface() {}
LMTRPluginInterface::LMTRPluginInterface(const LMTRPluginInterface&) {}
LMTRPluginInterface& LMTRPluginInterface::operator=(const LMTRPluginInterface&) {
  return *this;
}
LMTRPluginInterface::~LMTRPluginInterface() {}

EMEGArtifactPlugin::EMEGArtifactPlugin() {}
EMEGArtifactPlugin::EMEGArtifactPlugin(const EMEGArtifactPlugin& other) : LMTRPluginInterface(other) {}
EMEGArtifactPlugin& EMEGArtifactPlugin::operator=(const EMEGArtifactPlugin&) {
  return *this;
}
EMEGArtifactPlugin::~EMEGArtifactPlugin() {}

bool EMEGArtifactPlugin::execute() {
  return emegRunPlugin() != 0;
}
bool EMEGArtifactPlugin::initPlugin() {
  return true;
}

namespace {

struct OrNull {};

} // namespace

/// The form of `new` that gives null when there is no memory.
void* operator new(decltype(sizeof 0) size, OrNull) noexcept {
  return emegAllocateObject(size);
}

static const char* pluginDescription = "EMEG Artifact Plugin.";

extern "C" {

LMTRPluginInterface* createPlugin() {
  return new (OrNull{}) EMEGArtifactPlugin;
}

const char* getPluginName() {
  return "EEG-fMRI Artifact removal (MR gradients, heart pulses) ...";
}
const char* getPluginDescription() {
  return pluginDescription;
}
const char* getAuthor() {
  return "<i>The EMEG Artifact Plugin developers</i>";
}
const char* getPluginVersion() {
  return "1.0";
}

// The plug-in offers neither a help file nor a GUI script: one function, two names.
const char* getHelpFile() {
  return "";
}
const char* getGUIScript() __attribute__((alias("getHelpFile")));
}
