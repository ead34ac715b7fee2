#include "plugin/EMEGArtifactPlugin.h"

#include "plugin/RunPlugin.h"

#include <new>

LMTRPluginInterface::LMTRPluginInterface() {}
LMTRPluginInterface::LMTRPluginInterface(const LMTRPluginInterface&) {}
LMTRPluginInterface& LMTRPluginInterface::operator=(const LMTRPluginInterface&) {
  return *this;
}
LMTRPluginInterface::~LMTRPluginInterface() {}

EMEGArtifactPlugin::EMEGArtifactPlugin() {}
EMEGArtifactPlugin::~EMEGArtifactPlugin() {}

bool EMEGArtifactPlugin::execute() {
  return emegRunPlugin() != 0;
}
bool EMEGArtifactPlugin::initPlugin() {
  return true;
}

static const char* pluginDescription = "EMEG Artifact Plugin.";

extern "C" {

LMTRPluginInterface* createPlugin() {
  return new (std::nothrow) EMEGArtifactPlugin;
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
