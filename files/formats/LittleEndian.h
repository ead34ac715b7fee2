#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace emeg {

/// The unsigned integer that carries the bits of a value of `size` bytes.
template <size_t size>
using BitsOfSize = std::conditional_t<
    size == 1, uint8_t,
    std::conditional_t<size == 2, uint16_t, std::conditional_t<size == 4, uint32_t, uint64_t>>>;

/// Reads a number stored with its lowest byte first, whatever the order of this machine; needs no alignment.
template <typename Number>
Number loadLittleEndian(const unsigned char* bytes) {
  using Bits = BitsOfSize<sizeof(Number)>;
  uint64_t bits = 0;
  for (size_t i = sizeof(Number); i-- > 0;) bits = bits << 8 | bytes[i];
  return std::bit_cast<Number>(static_cast<Bits>(bits));
}

/// Stores a number with its lowest byte first.
template <typename Number>
void storeLittleEndian(unsigned char* bytes, Number value) {
  uint64_t bits = std::bit_cast<BitsOfSize<sizeof(Number)>>(value);
  for (size_t i = 0; i < sizeof(Number); ++i, bits >>= 8) bytes[i] = static_cast<unsigned char>(bits & 0xff);
}

} // namespace emeg
