#include "files/exchange/ChannelSubset.h"

#include <algorithm>
#include <utility>

namespace emeg {

namespace {

class ChannelSubset : public RecordingReader {
public:
  ChannelSubset(std::unique_ptr<RecordingReader> reader, std::vector<int> chosen)
      : reader_(std::move(reader)), chosen_(std::move(chosen)) {
    header_ = reader_->header();
    std::vector<RecordingChannel> channels;
    for (const int c : chosen_) channels.push_back(header_.channels[static_cast<size_t>(c)]);
    header_.channels = std::move(channels);
    std::vector<RecordingMarker> markers;
    for (RecordingMarker marker : header_.markers) {
      if (marker.channel != RecordingMarker::allChannels) {
        const auto place = std::find(chosen_.begin(), chosen_.end(), marker.channel);
        if (place == chosen_.end()) continue;
        marker.channel = static_cast<int>(place - chosen_.begin());
      }
      markers.push_back(std::move(marker));
    }
    header_.markers = std::move(markers);
  }

  void showBytesTo(ByteWatcher* watcher) override { reader_->showBytesTo(watcher); }

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override {
    const int64_t blockLength = convenientBlockLength(reader_->header().nrOfChannels());
    for (int64_t done = 0; done < count; done += blockLength) {
      const int64_t length = std::min(blockLength, count - done);
      all_.resize(static_cast<size_t>(length) * reader_->header().channels.size());
      reader_->read(first + done, length, all_);
      for (size_t k = 0; k < chosen_.size(); ++k)
        std::copy_n(all_.begin() + chosen_[k] * length, length,
                    values.begin() + static_cast<int64_t>(k) * count + done);
    }
  }

  std::unique_ptr<RecordingReader> reader_;
  std::vector<int> chosen_;
  std::vector<double> all_;
};

} // namespace

std::vector<int> channelsNamed(const RecordingHeader& header, const std::vector<std::string>& names) {
  const std::string file = "\"" + (header.files.empty() ? std::string() : header.files.front()) + "\": ";
  std::vector<int> chosen;
  for (const std::string& name : names) {
    const auto hasName = [&name](const RecordingChannel& channel) { return channel.name == name; };
    const auto found = std::find_if(header.channels.begin(), header.channels.end(), hasName);
    if (found == header.channels.end())
      throw RecordingError(file + "there is no channel \"" + name + "\"; emeg info lists the names.");
    if (std::find_if(found + 1, header.channels.end(), hasName) != header.channels.end())
      throw RecordingError(file + "more than one channel is called \"" + name +
                           "\", so it cannot be chosen by its name.");
    const auto index = static_cast<int>(found - header.channels.begin());
    if (std::find(chosen.begin(), chosen.end(), index) != chosen.end())
      throw RecordingError(file + "channel \"" + name + "\" is chosen twice; name it once.");
    chosen.push_back(index);
  }
  return chosen;
}

std::unique_ptr<RecordingReader> chooseChannels(std::unique_ptr<RecordingReader> reader,
                                                const std::vector<std::string>& names) {
  std::vector<int> chosen = channelsNamed(reader->header(), names);
  return std::make_unique<ChannelSubset>(std::move(reader), std::move(chosen));
}

} // namespace emeg
