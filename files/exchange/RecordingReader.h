#pragma once

#include "files/exchange/ByteWatcher.h"
#include "files/exchange/Recording.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace emeg {

/// A recording that is read block by block. Memory does not grow with its length (its markers are kept).
class RecordingReader {
public:
  virtual ~RecordingReader() = default;
  RecordingReader() = default;
  RecordingReader(const RecordingReader&) = delete;
  RecordingReader& operator=(const RecordingReader&) = delete;

  const RecordingHeader& header() const { return header_; }

  /// Time points first ... first + count - 1 of every channel, channel after channel:
  /// values[c x count + t]. Voltages in microvolts, other channels in their own unit; what the file holds as
  /// not a number or infinite arrives so. Throws RecordingError when the file cannot be read, and
  /// std::out_of_range for a stretch outside the recording or a span of another size.
  void read(int64_t first, int64_t count, std::span<double> values);

  /// From now on `watcher` (null: nobody) is shown the samples' bytes as they stand in the file, in the order
  /// in which they are read. Formats whose bytes a library reads show nothing.
  virtual void showBytesTo(ByteWatcher* watcher) { watcher_ = watcher; }

protected:
  virtual void readBlock(int64_t first, int64_t count, std::span<double> values) = 0;

  void show(const std::string& path, int64_t position, std::span<const unsigned char> bytes) const {
    if (watcher_ != nullptr) watcher_->bytesRead(path, position, bytes);
  }

  RecordingHeader header_;

private:
  ByteWatcher* watcher_ = nullptr;
};

struct OpenOptions {
  /// Names of the channels to read, in this order; empty: all of them. With it, EDF files whose signals
  /// differ in their rates can be read as long as the chosen ones agree.
  std::vector<std::string> channels;
};

/// Opens a recording; its extension (case does not count) chooses the format: .ctc, .vhdr, .edf, .bdf, .set.
/// Throws RecordingError.
std::unique_ptr<RecordingReader> openRecording(const std::string& path, const OpenOptions& options = {});

/// A stretch of values, smallest and largest.
struct ValueRange {
  double smallest = 0;
  double largest = 0;
};

/// The range of the finite values of every channel, found by reading the whole recording once; {0, 0} for a
/// channel without any. `progress` is told the finished part (0 ... 1).
std::vector<ValueRange> measureRanges(RecordingReader& reader, const std::function<void(double)>& progress);

/// Time points of a block that keeps a buffer of all channels at some megabytes.
int64_t convenientBlockLength(int nrOfChannels);

} // namespace emeg
