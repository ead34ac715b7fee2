#include "engine/store/CorrectedInStore.h"

#include <algorithm>

namespace emeg {

void sendStored(ChannelStore& store, int64_t nrOfSamples, std::span<const double> factors,
                CorrectedSink& sink) {
  constexpr int64_t valuesOfBlock = int64_t{1} << 22;
  const int64_t longest = std::max<int64_t>(valuesOfBlock / static_cast<int64_t>(factors.size()), 1);
  std::vector<float> stored;
  std::vector<double> values;
  for (int64_t done = 0; done < nrOfSamples; done += longest) {
    const auto length = static_cast<size_t>(std::min(longest, nrOfSamples - done));
    stored.resize(length);
    values.resize(length * factors.size());
    for (size_t c = 0; c < factors.size(); ++c) {
      store.read(static_cast<int>(c), done, stored);
      for (size_t i = 0; i < length; ++i)
        values[c * length + i] = static_cast<double>(stored[i]) * factors[c];
    }
    sink.take(static_cast<int64_t>(length), values);
  }
}

void sendBlock(std::span<const float> block, size_t nrOfChannels, CorrectedSink& sink) {
  constexpr size_t valuesOfPart = size_t{1} << 18;
  const size_t count = block.size() / nrOfChannels;
  const size_t longest = std::max<size_t>(valuesOfPart / nrOfChannels, 1);
  std::vector<double> values;
  for (size_t done = 0; done < count; done += longest) {
    const size_t length = std::min(longest, count - done);
    values.resize(length * nrOfChannels);
    for (size_t c = 0; c < nrOfChannels; ++c)
      std::copy_n(block.begin() + static_cast<std::ptrdiff_t>(c * count + done), length,
                  values.begin() + static_cast<std::ptrdiff_t>(c * length));
    sink.take(static_cast<int64_t>(length), values);
  }
}

} // namespace emeg
