#pragma once

#include "plugin/LMTRPluginInterface.h"

/// Removes MR gradient and cardiac artifacts from EEG recorded during fMRI. Without state: every execution is
/// one complete run.
class EMEG_EXPORT EMEGArtifactPlugin : public LMTRPluginInterface {
public:
  EMEGArtifactPlugin();
  EMEGArtifactPlugin(const EMEGArtifactPlugin& other);
  EMEGArtifactPlugin& operator=(const EMEGArtifactPlugin& other);
  ~EMEGArtifactPlugin() override;

  /// Finds the host, checks its version and runs the converter. Throws nothing.
  bool execute() override;
  /// True; touches nothing.
  bool initPlugin() override;
};

/// Texts are constants that the host must not free. The object that createPlugin returns belongs to the host,
/// which deletes it through the interface; null when there is no memory for it.
extern "C" {
EMEG_EXPORT LMTRPluginInterface* createPlugin();
EMEG_EXPORT const char* getPluginName();
EMEG_EXPORT const char* getPluginDescription();
EMEG_EXPORT const char* getAuthor();
EMEG_EXPORT const char* getHelpFile();
EMEG_EXPORT const char* getGUIScript();
EMEG_EXPORT const char* getPluginVersion();
}
