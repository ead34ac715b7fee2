#include "files/exchange/CtcRecordingWriter.h"

#include "files/exchange/FileExtension.h"
#include "files/exchange/PendingFiles.h"
#include "files/exchange/ProtocolMarkers.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/CcdFile.h"
#include "files/formats/CtcFile.h"
#include "files/formats/TriggerMarkers.h"

#include <algorithm>
#include <limits>

namespace emeg {

namespace {

constexpr int eegChannelType = 0;
constexpr size_t longestName = 31;
constexpr int most16BitChannels = std::numeric_limits<int16_t>::max();

class CtcRecordingWriter : public RecordingWriter {
public:
  CtcRecordingWriter(const std::string& path, const RecordingHeader& header, const WriteOptions& options);

private:
  void writeBlock(int64_t count, std::span<const double> values) override;
  void finishFiles() override;
  void writeWhole(const std::string& path, const void* bytes, size_t nrOfBytes) const;
  void writeProtocols();
  void writeDescription() const;
  void noteLosses();

  std::string path_;
  std::string stem_;
  MarkerProtocols protocols_;
  PendingFiles pending_;
  std::string temporaryCtc_, temporaryCcd_, temporaryPrt_, temporaryTriggers_;
  BinaryFile ctc_;
  std::vector<float> samples_;
};

CtcRecordingWriter::CtcRecordingWriter(const std::string& path, const RecordingHeader& header,
                                       const WriteOptions& options)
    : path_(path), stem_(withoutExtension(path)), protocols_(protocolsOf(header)),
      pending_(options.overwrite) {
  header_ = header;
  if (header.nrOfChannels() > most16BitChannels)
    throw RecordingError("\"" + path + "\" cannot be written: a CTC file holds at most 32767 channels, not " +
                         std::to_string(header.nrOfChannels()) + ".");
  if (header.nrOfTimePoints > std::numeric_limits<int32_t>::max())
    throw RecordingError("\"" + path +
                         "\" cannot be written: a CTC file holds at most 2147483647 time points, "
                         "not " +
                         std::to_string(header.nrOfTimePoints) + "; write .vhdr or .bdf instead.");
  const auto addProtocol = [this](const Protocol& protocol, const std::string& suffix) {
    if (hasIntervals(protocol)) return pending_.add(stem_ + suffix + ".prt");
    pending_.addLeftover(stem_ + suffix + ".prt");
    return std::string();
  };
  temporaryPrt_ = addProtocol(protocols_.main, "");
  temporaryTriggers_ = addProtocol(protocols_.detected, triggerProtocolName);
  temporaryCcd_ = pending_.add(stem_ + ".ccd");
  temporaryCtc_ = pending_.add(path);
  files_ = pending_.finalPaths();

  CtcHeader ctc;
  ctc.nrOfChannels = header.nrOfChannels();
  ctc.nrOfTimePoints = static_cast<int32_t>(header.nrOfTimePoints);
  ctc.samplingFrequency = static_cast<float>(header.samplingFrequency);
  const auto bytes = encodeCtcHeader(ctc);
  if (!ctc_.create(temporaryCtc_) || !ctc_.write(bytes.data(), bytes.size()))
    throw RecordingError(writeFailure(path));
  noteLosses();
}

void CtcRecordingWriter::noteLosses() {
  warnings_ = protocols_.warnings;
  const auto nrOfLongNames =
      std::count_if(header_.channels.begin(), header_.channels.end(),
                    [](const RecordingChannel& channel) { return channel.name.size() > longestName; });
  if (nrOfLongNames > 0)
    warnings_.push_back("a channel description holds 31 bytes of a name: " + std::to_string(nrOfLongNames) +
                        (nrOfLongNames == 1 ? " name was cut." : " names were cut."));
  for (const RecordingChannel& channel : header_.channels)
    if (!channel.isVoltage())
      warnings_.push_back("a CTC file has no units: channel \"" + channel.name + "\" loses its unit \"" +
                          channel.unit + "\", its values stay.");
}

void CtcRecordingWriter::writeBlock(int64_t count, std::span<const double> values) {
  const auto nrOfChannels = header_.channels.size();
  samples_.resize(values.size());
  for (size_t c = 0; c < nrOfChannels; ++c)
    for (size_t t = 0; t < static_cast<size_t>(count); ++t)
      storeSample(1, values[c * static_cast<size_t>(count) + t], samples_.data(),
                  static_cast<int64_t>(t * nrOfChannels + c));
  if (!hostIsLittleEndian) swapByteGroups(samples_.data(), samples_.size() * sizeof(float), sizeof(float));
  if (!ctc_.write(samples_.data(), samples_.size() * sizeof(float)))
    throw RecordingError(writeFailure(path_));
}

void CtcRecordingWriter::writeWhole(const std::string& path, const void* bytes, size_t nrOfBytes) const {
  BinaryFile file;
  if (!file.create(path) || !file.write(bytes, nrOfBytes) || !file.close())
    throw RecordingError(writeFailure(path_));
}

void CtcRecordingWriter::writeProtocols() {
  const auto writeProtocol = [this](const Protocol& protocol, const std::string& path) {
    if (path.empty()) return;
    const std::string text = protocolText(protocol, path_);
    writeWhole(path, text.data(), text.size());
  };
  writeProtocol(protocols_.main, temporaryPrt_);
  writeProtocol(protocols_.detected, temporaryTriggers_);
}

void CtcRecordingWriter::writeDescription() const {
  ChannelDescription description;
  CcdHeader& ccd = description.header;
  const double endMs = 1000 * static_cast<double>(header_.nrOfTimePoints - 1) / header_.samplingFrequency;
  ccd.setCtcFileName(fileNameOf(path_));
  ccd.setPrtFileName(temporaryPrt_.empty() ? std::string() : fileNameOf(stem_ + ".prt"));
  ccd.setNrOfChannels(header_.nrOfChannels());
  ccd.setNrOfSelectedChannels(header_.nrOfChannels());
  ccd.setDecimationFactor(1);
  ccd.setSamplingFrequency(header_.samplingFrequency);
  ccd.setIntervalStartMs(0);
  ccd.setIntervalEndMs(endMs);
  ccd.setIntervalLengthMs(endMs);
  ccd.setNrOfTimePoints(static_cast<int32_t>(header_.nrOfTimePoints));
  for (const RecordingChannel& channel : header_.channels) {
    description.channelRecords.push_back(
        CcdChannelRecord::make(channel.name, eegChannelType, header_.samplingFrequency));
    description.channelRecords.back().setGood(channel.good);
  }
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  writeWhole(temporaryCcd_, bytes.data(), bytes.size());
}

void CtcRecordingWriter::finishFiles() {
  if (!ctc_.close()) throw RecordingError(writeFailure(path_));
  writeProtocols();
  writeDescription();
  pending_.commit();
}

} // namespace

std::unique_ptr<RecordingWriter> createCtcRecording(const std::string& path, const RecordingHeader& header,
                                                    const WriteOptions& options) {
  return std::make_unique<CtcRecordingWriter>(path, header, options);
}

} // namespace emeg
