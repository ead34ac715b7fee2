#pragma once

// The workstation's own declaration of a plug-in's classes, as a compiler sees it that links to them.

class __declspec(dllimport) LMTRPluginInterface {
public:
  LMTRPluginInterface();
  LMTRPluginInterface(const LMTRPluginInterface& other);
  LMTRPluginInterface& operator=(const LMTRPluginInterface& other);
  virtual ~LMTRPluginInterface();
  virtual bool execute() = 0;
  virtual bool initPlugin() = 0;
};

class __declspec(dllimport) EMEGArtifactPlugin : public LMTRPluginInterface {
public:
  EMEGArtifactPlugin();
  EMEGArtifactPlugin(const EMEGArtifactPlugin& other);
  EMEGArtifactPlugin& operator=(const EMEGArtifactPlugin& other);
  ~EMEGArtifactPlugin() override;
  bool execute() override;
  bool initPlugin() override;
};
