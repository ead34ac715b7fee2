#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace emeg {

/// The 32-byte header of a channel time course (CTC) file. All values are little-endian; samples follow at
/// byte 32.
///
/// | offset | type    | field            |
/// |--------|---------|------------------|
/// | 0      | uint16  | version, 1; not checked on reading |
/// | 8      | int32   | dataType: 1 float, 2 double, 3 int16, 4 int8 (written only) |
/// | 12     | int32   | dataOrganisation: 1 channel after channel, else multiplexed |
/// | 16     | int16   | nrOfChannels     |
/// | 20     | int32   | nrOfTimePoints   |
/// | 24     | float   | samplingFrequency, Hz |
struct CtcHeader {
  int32_t dataType = 1;
  int32_t dataOrganisation = 2;
  int32_t nrOfChannels = 0;
  int32_t nrOfTimePoints = 0;
  float samplingFrequency = 0;
};

constexpr size_t ctcHeaderSize = 32;

/// The converter's own sample codes. Int32 never comes from a CTC file.
enum class SampleFormat : uint8_t { Unsupported = 0, Int16 = 1, Float32 = 2, Int32 = 3, Float64 = 4 };

/// Maps a CTC dataType to the sample code of a reader: 1 -> Float32, 2 -> Float64, 3 -> Int16; anything else,
/// 4 included, is unsupported.
SampleFormat inputSampleFormatOf(int32_t dataType);

/// Bytes of one sample: Int16 2, Float32 and Int32 4, Float64 8, Unsupported 0.
int bytesPerSampleOf(SampleFormat format);

/// Bytes of one sample of a CTC dataType as the writer knows it (1, 2, 3, 4); 0 for another code.
int bytesPerWrittenSample(int32_t dataType);

std::array<unsigned char, ctcHeaderSize> encodeCtcHeader(const CtcHeader& header);
CtcHeader decodeCtcHeader(std::span<const unsigned char, ctcHeaderSize> bytes);

/// True when this machine stores the lowest byte first.
extern const bool hostIsLittleEndian;

/// Reverses every group of `groupSize` (2, 4 or 8) bytes in place; an incomplete group at the end stays.
void swapByteGroups(void* bytes, size_t nrOfBytes, int groupSize);

/// Converts `count` samples of `format` (machine byte order) to the working type: integers exactly as signed
/// integers, doubles rounded to float. `stride` counts input samples between two outputs: 1 for channel after
/// channel, the number of channels for multiplexed blocks. Doubles beyond the range of float become infinite;
/// an unsupported format gives zeros.
void convertSamplesToFloat(SampleFormat format, const void* samples, int64_t stride, int64_t count,
                           float* out);

/// Stores the already scaled value at out[index] as the CTC dataType says: 1 rounded to float, 2 as it is, 3
/// and 4 truncated toward zero with the low 16 or 8 bits kept (no clamping; values that are not finite or
/// beyond 64 bits give 0). Machine byte order; another code stores nothing.
void storeSample(int32_t dataType, double value, void* out, int64_t index);

} // namespace emeg
