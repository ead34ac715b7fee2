#pragma once

namespace emeg {

/// The running host program, in which functions are looked up by name. The platform's only place in the
/// bridge.
class HostModule {
public:
  HostModule();
  ~HostModule();
  HostModule(const HostModule&) = delete;
  HostModule& operator=(const HostModule&) = delete;

  bool isThere() const { return handle_ != nullptr; }
  /// Address of an exported function, null when there is none of that name.
  void* function(const char* name) const;

private:
  void* handle_;
};

} // namespace emeg
