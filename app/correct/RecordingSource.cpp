#include "app/correct/RecordingSource.h"

#include "app/correct/BidsDataset.h"
#include "app/correct/Interrupt.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

bool isFloat(double value) {
  return !std::isnan(value) && static_cast<double>(static_cast<float>(value)) == value;
}

} // namespace

RecordingSource::RecordingSource(const CorrectParameters& parameters) {
  try {
    OpenOptions options;
    options.channels = parameters.channels;
    reader_ = openRecording(parameters.input, options);
    header_ = reader_->header();
    if (parameters.bids) applyBidsChannels(bidsPlaceOf(parameters.input, {}), header_);
  } catch (const RecordingError& error) {
    throw UnusableInput(error.what());
  }
  checksums_ = std::make_unique<FileChecksums>(header_.files);
}

void RecordingSource::takeInto(Correction& correction, const CorrectionPlan& plan,
                               ProgressObserver& observer) {
  observer.takesIn();
  reader_->showBytesTo(checksums_.get());
  const int64_t blockLength = std::max<int64_t>(convenientBlockLength(header_.nrOfChannels()) / 4, 1);
  for (int64_t done = 0; done < plan.nrOfTimePoints;) {
    const int64_t count = std::min(blockLength, plan.nrOfTimePoints - done);
    block_.resize(static_cast<size_t>(count) * header_.channels.size());
    try {
      reader_->read(plan.firstTimePoint + done, count, block_);
    } catch (const RecordingError& error) {
      throw UnusableInput(error.what());
    }
    lookForInexactValues(plan, count);
    correction.takeIn(count, block_);
    done += count;
    observer.progress(static_cast<double>(done) / static_cast<double>(plan.nrOfTimePoints));
  }
  reader_->showBytesTo(nullptr);
  std::vector<double>().swap(block_); // megabytes that nobody needs meanwhile
}

void RecordingSource::lookForInexactValues(const CorrectionPlan& plan, int64_t count) {
  for (int channel = 0; channel < header_.nrOfChannels(); ++channel) {
    if (!plan.channels.roles[static_cast<size_t>(channel)].passesUnchanged) continue;
    const auto first = block_.begin() + channel * count;
    if (std::all_of(first, first + count, isFloat)) continue;
    if (std::find(channelsToReadAgain_.begin(), channelsToReadAgain_.end(), channel) ==
        channelsToReadAgain_.end())
      channelsToReadAgain_.push_back(channel);
  }
}

std::vector<InputFile> RecordingSource::checksums() {
  return checksums_->finish(InterruptWatch::check);
}

} // namespace emeg
