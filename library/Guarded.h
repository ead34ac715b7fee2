#pragma once

#include "engine/Correction.h"
#include "engine/Observer.h"
#include "engine/store/ChannelStore.h"

#include <emeg/emeg.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace emeg {

/// A call that cannot be carried out, with what it returns. The message is a sentence.
class Refusal : public std::runtime_error {
public:
  Refusal(emeg_status status, const std::string& message) : std::runtime_error(message), status_(status) {}
  emeg_status status() const { return status_; }

private:
  emeg_status status_;
};

inline void refuseNull(const void* pointer, const char* name) {
  if (pointer == nullptr) throw Refusal(EMEG_BAD_ARGUMENT, std::string(name) + " is a null pointer.");
}

/// Keeps a message where there is memory for it.
inline emeg_status failWith(emeg_status status, std::string& error, const char* message) noexcept {
  try {
    error = message;
  } catch (...) {
    error.clear();
  }
  return status;
}

/// Does the work of a C function: nothing leaves it but a status, and a sentence in `error`.
template <class Work>
emeg_status guarded(std::string& error, Work work) noexcept {
  error.clear();
  try {
    work();
    return EMEG_OK;
  } catch (const Refusal& refusal) {
    return failWith(refusal.status(), error, refusal.what());
  } catch (const UnusableSettings& unusable) {
    return failWith(EMEG_BAD_SETTING, error, unusable.what());
  } catch (const Cancelled&) {
    return failWith(EMEG_CANCELLED, error, "A callback has cancelled the correction.");
  } catch (const StoreError& failure) {
    return failWith(EMEG_FILE_FAILED, error, failure.what());
  } catch (const std::bad_alloc&) {
    return failWith(EMEG_NO_MEMORY, error, "Not enough memory.");
  } catch (const std::length_error&) {
    return failWith(EMEG_NO_MEMORY, error, "Not enough memory.");
  } catch (const std::exception& failure) {
    return failWith(EMEG_FAILED, error, failure.what());
  } catch (...) {
    return failWith(EMEG_FAILED, error, "Something unexpected happened.");
  }
}

/// The same where no handle can keep the sentence.
template <class Work>
emeg_status guarded(Work work) noexcept {
  std::string nobodyReads;
  return guarded(nobodyReads, work);
}

} // namespace emeg
