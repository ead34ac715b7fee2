#include "tests/dsp/CountedAllocations.h"

#include <cstdlib>
#include <new>

namespace emeg {

Allocations& allocations() {
  static Allocations counted;
  return counted;
}

} // namespace emeg

namespace {

void* allocate(std::size_t size, std::size_t alignment) {
  ++emeg::allocations().count;
  emeg::allocations().bytes += size;
  void* const memory = std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

} // namespace

void* operator new(std::size_t size) {
  return allocate(size > 0 ? size : 1, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}
