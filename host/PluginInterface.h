#pragma once

/// What the workstation knows of a plug-in's object. Host and plug-in agree on the order of these virtual
/// operations and on nothing else: each side has its own declaration. The name is global because it is part
/// of that agreement.
class LMTRPluginInterface {
public:
  virtual ~LMTRPluginInterface() = default;
  /// The plug-in's whole work; true when it was done.
  virtual bool execute() = 0;
  virtual bool initPlugin() = 0;
};
