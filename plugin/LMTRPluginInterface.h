#pragma once

// No standard headers here: the interface is shared with hosts built by other compilers.

#if defined(__ELF__)
#define EMEG_EXPORT __attribute__((visibility("default")))
#else
#define EMEG_EXPORT
#endif

/// What the host knows of a plug-in. It holds no data besides its virtual table, whose order is fixed:
/// destructor, execute, initPlugin.
class EMEG_EXPORT LMTRPluginInterface {
public:
  LMTRPluginInterface();
  LMTRPluginInterface(const LMTRPluginInterface& other);
  LMTRPluginInterface& operator=(const LMTRPluginInterface& other);
  virtual ~LMTRPluginInterface();

  /// Does the plug-in's work; true when it was done.
  virtual bool execute() = 0;
  virtual bool initPlugin() = 0;
};
