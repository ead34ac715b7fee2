#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace emeg {

/// A store could not be read or written. `errorNumber` is the C library's, 0 where it gave none.
class StoreError : public std::runtime_error {
public:
  StoreError(const std::string& message, bool whileWriting, int errorNumber)
      : std::runtime_error(message), whileWriting_(whileWriting), errorNumber_(errorNumber) {}
  bool whileWriting() const { return whileWriting_; }
  int errorNumber() const { return errorNumber_; }

private:
  bool whileWriting_;
  int errorNumber_;
};

/// The channels of a recording as 32-bit floats, read and written in stretches. Channels are numbered from 0,
/// samples from the store's first one. Not for several threads at once.
class ChannelStore {
public:
  virtual ~ChannelStore() = default;
  ChannelStore() = default;
  ChannelStore(const ChannelStore&) = delete;
  ChannelStore& operator=(const ChannelStore&) = delete;

  /// Fills `samples` with those of a channel from `first` on. Throws StoreError.
  virtual void read(int channel, int64_t first, std::span<float> samples) = 0;
  /// Replaces them. Throws StoreError.
  virtual void write(int channel, int64_t first, std::span<const float> samples) = 0;
};

} // namespace emeg
