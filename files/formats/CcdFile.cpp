#include "files/formats/CcdFile.h"

#include "files/formats/BinaryFile.h"
#include "files/formats/LittleEndian.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <span>
#include <utility>

namespace emeg {

namespace {

// Header
constexpr size_t ctcFileNameAt = 1;
constexpr size_t prtFileNameAt = 257;
constexpr size_t fileNameSize = 256;
constexpr size_t nrOfChannelsAt = 513;
constexpr size_t decimationFactorAt = 535;
constexpr size_t nrOfSelectedChannelsAt = 537;
constexpr size_t headerSamplingFrequencyAt = 539;
constexpr size_t intervalLengthMsAt = 547;
constexpr size_t intervalStartMsAt = 555;
constexpr size_t intervalEndMsAt = 563;
constexpr size_t nrOfTimePointsAt = 571;
constexpr size_t nrOfExtraRecordsAt = 575;

// Channel record
constexpr size_t channelNameAt = 0;
constexpr size_t channelNameSize = 32;
constexpr size_t goodAt = 32;
constexpr size_t processedAt = 33;
constexpr size_t typeAt = 34;
constexpr size_t unitValueAt = 350; // a reserved double that new records set to 1
constexpr size_t channelSamplingFrequencyAt = 360;
constexpr size_t unknownValueAt = 384; // a reserved double that new records set to -1
constexpr size_t colourAt = 416;
constexpr size_t lastByteAt = 419;

constexpr size_t maxNrOfChannelRecords = 65535;
constexpr size_t maxNrOfExtraRecords = 255;

std::string textIn(std::span<const unsigned char> field) {
  return std::string(field.begin(), std::find(field.begin(), field.end(), 0));
}

/// The text and one terminator; what lies behind them is carried through.
void putText(std::span<unsigned char> field, const std::string& text) {
  const auto end = std::copy_n(text.begin(), std::min(text.size(), field.size() - 1), field.begin());
  *end = 0;
}

/// Records are read one by one, so that memory follows the size of the file and not the count in its header.
template <typename Record, typename BytesOf>
bool readRecords(BinaryFile& file, int count, std::vector<Record>& records, BytesOf bytesOf) {
  for (int i = 0; i < count; ++i) {
    Record record{};
    auto& bytes = bytesOf(record);
    if (!file.read(bytes.data(), bytes.size())) return false;
    records.push_back(record);
  }
  return true;
}

} // namespace

std::string CcdHeader::ctcFileName() const {
  return textIn(std::span(bytes).subspan(ctcFileNameAt, fileNameSize));
}
std::string CcdHeader::prtFileName() const {
  return textIn(std::span(bytes).subspan(prtFileNameAt, fileNameSize));
}
void CcdHeader::setCtcFileName(const std::string& name) {
  putText(std::span(bytes).subspan(ctcFileNameAt, fileNameSize), name);
}
void CcdHeader::setPrtFileName(const std::string& name) {
  putText(std::span(bytes).subspan(prtFileNameAt, fileNameSize), name);
}

int CcdHeader::nrOfChannels() const {
  return loadLittleEndian<uint16_t>(bytes.data() + nrOfChannelsAt);
}
void CcdHeader::setNrOfChannels(int count) {
  storeLittleEndian(bytes.data() + nrOfChannelsAt, static_cast<uint16_t>(count));
}
int CcdHeader::decimationFactor() const {
  return loadLittleEndian<uint16_t>(bytes.data() + decimationFactorAt);
}
void CcdHeader::setDecimationFactor(int factor) {
  storeLittleEndian(bytes.data() + decimationFactorAt, static_cast<uint16_t>(factor));
}
int CcdHeader::nrOfSelectedChannels() const {
  return loadLittleEndian<uint16_t>(bytes.data() + nrOfSelectedChannelsAt);
}
void CcdHeader::setNrOfSelectedChannels(int count) {
  storeLittleEndian(bytes.data() + nrOfSelectedChannelsAt, static_cast<uint16_t>(count));
}
double CcdHeader::samplingFrequency() const {
  return loadLittleEndian<double>(bytes.data() + headerSamplingFrequencyAt);
}
void CcdHeader::setSamplingFrequency(double hz) {
  storeLittleEndian(bytes.data() + headerSamplingFrequencyAt, hz);
}
double CcdHeader::intervalLengthMs() const {
  return loadLittleEndian<double>(bytes.data() + intervalLengthMsAt);
}
void CcdHeader::setIntervalLengthMs(double ms) {
  storeLittleEndian(bytes.data() + intervalLengthMsAt, ms);
}
double CcdHeader::intervalStartMs() const {
  return loadLittleEndian<double>(bytes.data() + intervalStartMsAt);
}
void CcdHeader::setIntervalStartMs(double ms) {
  storeLittleEndian(bytes.data() + intervalStartMsAt, ms);
}
double CcdHeader::intervalEndMs() const {
  return loadLittleEndian<double>(bytes.data() + intervalEndMsAt);
}
void CcdHeader::setIntervalEndMs(double ms) {
  storeLittleEndian(bytes.data() + intervalEndMsAt, ms);
}
int32_t CcdHeader::nrOfTimePoints() const {
  return loadLittleEndian<int32_t>(bytes.data() + nrOfTimePointsAt);
}
void CcdHeader::setNrOfTimePoints(int32_t count) {
  storeLittleEndian(bytes.data() + nrOfTimePointsAt, count);
}
int CcdHeader::nrOfExtraRecords() const {
  return bytes[nrOfExtraRecordsAt];
}

CcdChannelRecord CcdChannelRecord::make(const std::string& name, int type, double samplingFrequency) {
  CcdChannelRecord record;
  record.setName(name);
  record.setGood(true);
  record.bytes[typeAt] = static_cast<unsigned char>(type);
  storeLittleEndian(record.bytes.data() + unitValueAt, 1.0);
  storeLittleEndian(record.bytes.data() + channelSamplingFrequencyAt, samplingFrequency);
  storeLittleEndian(record.bytes.data() + unknownValueAt, -1.0);
  std::fill_n(record.bytes.begin() + colourAt, 3, static_cast<unsigned char>(255));
  record.bytes[lastByteAt] = 3;
  return record;
}

std::string CcdChannelRecord::defaultName(int channelIndex) {
  std::array<char, channelNameSize> text{};
  std::snprintf(text.data(), text.size(), "Channel_%03d", channelIndex);
  return text.data();
}

std::string CcdChannelRecord::name() const {
  return textIn(std::span(bytes).subspan(channelNameAt, channelNameSize));
}
void CcdChannelRecord::setName(const std::string& name) {
  putText(std::span(bytes).subspan(channelNameAt, channelNameSize), name);
}
bool CcdChannelRecord::good() const {
  return bytes[goodAt] != 0;
}
void CcdChannelRecord::setGood(bool good) {
  bytes[goodAt] = good ? 1 : 0;
}
bool CcdChannelRecord::processed() const {
  return bytes[processedAt] != 0;
}
void CcdChannelRecord::setProcessed(bool processed) {
  bytes[processedAt] = processed ? 1 : 0;
}
int CcdChannelRecord::type() const {
  return bytes[typeAt];
}
double CcdChannelRecord::samplingFrequency() const {
  return loadLittleEndian<double>(bytes.data() + channelSamplingFrequencyAt);
}

CcdReadResult readCcdFile(const std::string& path, ChannelDescription& description) {
  BinaryFile file;
  if (!file.openForReading(path)) return CcdReadResult::CannotOpen;
  ChannelDescription read;
  if (!file.read(read.header.bytes.data(), ccdHeaderSize)) return CcdReadResult::Truncated;
  read.header.bytes[ctcFileNameAt + fileNameSize - 1] = 0;
  read.header.bytes[prtFileNameAt + fileNameSize - 1] = 0;
  const bool complete = readRecords(
                            file, read.header.nrOfChannels(), read.channelRecords,
                            [](CcdChannelRecord & record) -> auto& { return record.bytes; }) &&
                        readRecords(
                            file, read.header.nrOfExtraRecords(), read.extraRecords,
                            [](CcdExtraRecord & record) -> auto& { return record; });
  if (!complete) return CcdReadResult::Truncated;
  description = std::move(read);
  return CcdReadResult::Ok;
}

std::vector<unsigned char> encodeCcdFile(const ChannelDescription& description) {
  const size_t nrOfChannelRecords = std::min(description.channelRecords.size(), maxNrOfChannelRecords);
  const size_t nrOfExtraRecords = std::min(description.extraRecords.size(), maxNrOfExtraRecords);
  CcdHeader header = description.header;
  header.setNrOfChannels(static_cast<int>(nrOfChannelRecords));
  header.bytes[nrOfExtraRecordsAt] = static_cast<unsigned char>(nrOfExtraRecords);

  std::vector<unsigned char> bytes(ccdHeaderSize + nrOfChannelRecords * ccdChannelRecordSize +
                                   nrOfExtraRecords * ccdExtraRecordSize);
  auto next = std::copy(header.bytes.begin(), header.bytes.end(), bytes.begin());
  for (const CcdChannelRecord& record : std::span(description.channelRecords).first(nrOfChannelRecords))
    next = std::copy(record.bytes.begin(), record.bytes.end(), next);
  for (const CcdExtraRecord& record : std::span(description.extraRecords).first(nrOfExtraRecords))
    next = std::copy(record.begin(), record.end(), next);
  return bytes;
}

} // namespace emeg
