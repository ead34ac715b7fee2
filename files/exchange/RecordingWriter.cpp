#include "files/exchange/RecordingWriter.h"

#include "files/exchange/BrainVisionWriter.h"
#include "files/exchange/CtcRecordingWriter.h"
#include "files/exchange/EdfWriter.h"
#include "files/exchange/FileExtension.h"

#include <cmath>
#include <stdexcept>

namespace emeg {

void RecordingWriter::write(int64_t count, std::span<const double> values) {
  if (finished_ || count < 0 || count > header_.nrOfTimePoints - nrOfWrittenTimePoints_ ||
      values.size() != static_cast<size_t>(count) * header_.channels.size())
    throw std::out_of_range("a block does not fit the recording that was announced");
  if (count == 0) return;
  writeBlock(count, values);
  nrOfWrittenTimePoints_ += count;
}

void RecordingWriter::finish() {
  if (finished_) return;
  if (nrOfWrittenTimePoints_ != header_.nrOfTimePoints)
    throw std::out_of_range("fewer time points were written than announced");
  finished_ = true;
  finishFiles();
}

bool needsRanges(const std::string& path, const RecordingHeader& header) {
  const std::string extension = extensionOf(path);
  return (extension == ".edf" || extension == ".bdf") && edfNeedsRanges(header, extension == ".bdf");
}

std::unique_ptr<RecordingWriter> createRecording(const std::string& path, const RecordingHeader& header,
                                                 const WriteOptions& options) {
  const std::string start = "\"" + path + "\" cannot be written: ";
  if (header.channels.empty()) throw RecordingError(start + "there are no channels.");
  if (header.nrOfTimePoints < 1) throw RecordingError(start + "there are no time points.");
  if (!(header.samplingFrequency > 0) || !std::isfinite(header.samplingFrequency))
    throw RecordingError(start + "there is no sampling frequency.");
  if (!options.ranges.empty() && options.ranges.size() != header.channels.size())
    throw std::invalid_argument("one range per channel is needed");

  const std::string extension = extensionOf(path);
  if (extension == ".ctc") return createCtcRecording(path, header, options);
  if (extension == ".vhdr") return createBrainVisionRecording(path, header, options);
  if (extension == ".edf" || extension == ".bdf") return createEdfRecording(path, header, options);
  throw RecordingError(refusalOfOutputExtension(path));
}

} // namespace emeg
