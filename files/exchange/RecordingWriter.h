#pragma once

#include "files/exchange/Recording.h"
#include "files/exchange/RecordingReader.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace emeg {

/// A recording that is written block by block. Its files have temporary names of their own (two writers never
/// meet) until finish() renames them, the one the user named last: a set of files is complete when that one
/// is there. Without finish() nothing remains.
class RecordingWriter {
public:
  virtual ~RecordingWriter() = default;
  RecordingWriter() = default;
  RecordingWriter(const RecordingWriter&) = delete;
  RecordingWriter& operator=(const RecordingWriter&) = delete;

  /// The next `count` time points, channel after channel: values[c x count + t], as RecordingReader::read
  /// gives them. Throws RecordingError when they cannot be written, and when a value lies outside the range
  /// that was announced for its channel.
  void write(int64_t count, std::span<const double> values);

  /// Completes the files and gives them their names. Throws RecordingError; then nothing is left.
  void finish();

  /// What the format could not hold of the recording (cut names, rounded marker times, samples that are no
  /// numbers, ...), sentences for the user. Complete after finish().
  const std::vector<std::string>& warnings() const { return warnings_; }

  /// Final paths of the files, the one the user named last.
  const std::vector<std::string>& files() const { return files_; }

protected:
  virtual void writeBlock(int64_t count, std::span<const double> values) = 0;
  virtual void finishFiles() = 0;

  RecordingHeader header_; ///< set by the derived class's constructor
  std::vector<std::string> warnings_;
  std::vector<std::string> files_;

private:
  int64_t nrOfWrittenTimePoints_ = 0;
  bool finished_ = false;
};

struct WriteOptions {
  bool overwrite = false;
  /// For formats of integers: the smallest and largest value of every channel (measureRanges), from which
  /// steps are chosen for channels whose `stored` does not say them; those that have it keep their integers.
  std::vector<ValueRange> ranges;
};

/// True when the format of `path` stores integers and the channels do not say by themselves how: then
/// createRecording needs ranges. Callers that change values clear `stored` first.
bool needsRanges(const std::string& path, const RecordingHeader& header);

/// Creates a recording of `header.nrOfTimePoints` time points; the extension chooses the format: .ctc, .vhdr,
/// .edf, .bdf. Throws RecordingError when it cannot be created, when the header contradicts itself or when a
/// file of the set exists and must not be replaced.
std::unique_ptr<RecordingWriter> createRecording(const std::string& path, const RecordingHeader& header,
                                                 const WriteOptions& options = {});

} // namespace emeg
