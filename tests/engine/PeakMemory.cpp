#include "tests/engine/PeakMemory.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

std::atomic<long long> inUse{0};
std::atomic<long long> highest{0};

void* allocate(std::size_t size, std::size_t alignment) {
  void* const memory = std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
  if (memory == nullptr) throw std::bad_alloc();
  inUse += static_cast<long long>(malloc_usable_size(memory));
  if (inUse > highest) highest = inUse.load();
  return memory;
}

void release(void* memory) {
  inUse -= static_cast<long long>(malloc_usable_size(memory));
  std::free(memory);
}

} // namespace

namespace emeg {

void beginPeakOfMemory() {
  inUse = 0;
  highest = 0;
}

std::size_t peakOfMemory() {
  return static_cast<std::size_t>(highest.load());
}

} // namespace emeg

void* operator new(std::size_t size) {
  return allocate(size > 0 ? size : 1, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
  release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  release(memory);
}
