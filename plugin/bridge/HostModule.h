#pragma once

#include <exception>

namespace emeg {

// The platform's only place in the bridge.

/// The running host program, in which functions are looked up by name.
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

/// A host function ended with an exception of another compiler, whose reason cannot be read here.
class HostException : public std::exception {
public:
  const char* what() const noexcept override { return "the workstation reported an error of its own"; }
};

/// function(context), in which host functions are called and nothing else: frames between a host's exception
/// and here may be skipped without running destructors. Where this library and its host have different
/// exceptions (Windows), the host's C++ exceptions end here and leave as HostException; elsewhere they pass.
void callGuarded(void (*function)(const void* context), const void* context);

/// call(), guarded.
template <typename Call>
void callHost(const Call& call) {
  callGuarded([](const void* context) { (*static_cast<const Call*>(context))(); }, &call);
}

} // namespace emeg
