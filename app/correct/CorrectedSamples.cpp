#include "app/correct/CorrectedSamples.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace emeg {

CorrectedSamples::CorrectedSamples(RecordingWriter& writer, RecordingSource& input,
                                   const CorrectionPlan& plan, std::function<void(double)> progress)
    : writer_(writer), input_(input), plan_(plan), progress_(std::move(progress)),
      instants_(input.header().samplingFrequency, plan.outputRate) {}

void CorrectedSamples::take(int64_t count, std::span<const double> values) {
  if (input_.channelsToReadAgain().empty()) {
    writer_.write(count, values);
  } else {
    block_.assign(values.begin(), values.end());
    readAgain(count, block_);
    writer_.write(count, block_);
  }
  done_ += count;
  progress_(static_cast<double>(done_) / static_cast<double>(plan_.nrOfOutputs));
}

/// Many samples of the input may lie between two outputs: they are read in parts.
void CorrectedSamples::readAgain(int64_t count, std::span<double> values) {
  const double samples = std::max(plan_.samplesPerOutput, 1.0);
  const auto convenient = static_cast<double>(convenientBlockLength(input_.header().nrOfChannels()));
  const auto partLength = std::max<int64_t>(static_cast<int64_t>(convenient / samples), 1);
  for (int64_t start = 0; start < count; start += partLength)
    readPart(done_, start, std::min(partLength, count - start), count, values);
}

/// Outputs `start` ... of a block of `count` that begins with output `firstOutput`.
void CorrectedSamples::readPart(int64_t firstOutput, int64_t start, int64_t partLength, int64_t count,
                                std::span<double> values) {
  const int64_t last = plan_.nrOfTimePoints - 1;
  const auto sampleOf = [&](int64_t output) { return std::min(instants_[output].whole, last); };
  const int64_t from = sampleOf(firstOutput + start);
  const int64_t length = sampleOf(firstOutput + start + partLength - 1) - from + 1;
  inputBlock_.resize(static_cast<size_t>(length) * input_.header().channels.size());
  input_.reader().read(plan_.firstTimePoint + from, length, inputBlock_);
  for (const int channel : input_.channelsToReadAgain())
    for (int64_t t = 0; t < partLength; ++t)
      values[static_cast<size_t>(channel * count + start + t)] =
          inputBlock_[static_cast<size_t>(channel * length + sampleOf(firstOutput + start + t) - from)];
}

} // namespace emeg
