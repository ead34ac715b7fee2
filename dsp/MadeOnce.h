#pragma once

#include <atomic>
#include <memory>
#include <mutex>

namespace emeg {

/// A place for one object that is made at its first use and never changes afterwards. Any number of threads
/// may ask for it at once: one of them makes it while the others wait. Once it is there, asking costs one
/// read. It lives as long as its place.
template <class T>
class MadeOnce {
public:
  /// `make` returns std::unique_ptr<const T>. When it throws, the place stays empty and a later call tries
  /// again.
  template <class Make>
  const T& get(const Make& make) {
    const T* object = object_.load(std::memory_order_acquire);
    if (object != nullptr) return *object;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (owner_ == nullptr) {
      owner_ = make();
      object_.store(owner_.get(), std::memory_order_release);
    }
    return *owner_;
  }

  /// Nothing when it has not been made yet.
  const T* find() const { return object_.load(std::memory_order_acquire); }

private:
  std::mutex mutex_;
  std::unique_ptr<const T> owner_;
  std::atomic<const T*> object_ = nullptr;
};

} // namespace emeg
