#include "tests/run/DescriptionBytes.h"

namespace emeg::test {

void putDescriptionName(std::string& bytes, size_t offset, const std::string& name) {
  bytes.replace(offset, name.size() + 1, name + '\0');
}

void putUint16(std::string& bytes, size_t offset, int value) {
  bytes[offset] = static_cast<char>(value & 0xff);
  bytes[offset + 1] = static_cast<char>(value >> 8 & 0xff);
}

std::string descriptionBytes(const std::string& ctcName, const std::string& prtName, int nrOfChannels,
                             int nrOfExtraRecords) {
  constexpr size_t nrOfExtraRecordsOffset = 575;
  constexpr size_t nrOfFlags = 8; // the last bytes of the header
  std::string bytes(descriptionHeaderSize + static_cast<size_t>(nrOfChannels) * descriptionRecordSize +
                        static_cast<size_t>(nrOfExtraRecords) * descriptionExtraSize,
                    '\0');
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>((i * 37 + 11) % 251);
  putDescriptionName(bytes, ctcNameOffset, ctcName);
  putDescriptionName(bytes, prtNameOffset, prtName);
  bytes[prtNameOffset - 1] = '\0'; // the last bytes of the names
  bytes[channelCountOffset - 1] = '\0';
  putUint16(bytes, channelCountOffset, nrOfChannels);
  bytes[nrOfExtraRecordsOffset] = static_cast<char>(nrOfExtraRecords);
  bytes.replace(descriptionHeaderSize - nrOfFlags, nrOfFlags, std::string(nrOfFlags, '\0'));
  return bytes;
}

} // namespace emeg::test
