#pragma once

#include <string>

namespace emeg::test {

constexpr size_t descriptionHeaderSize = 584;
constexpr size_t descriptionRecordSize = 420;
constexpr size_t descriptionExtraSize = 48;

/// The bytes of a channel description (CCD) file as another program could have written it: names and counts
/// as given, every other byte of the header and of all records filled with a pattern, so that nothing that
/// should be carried through can get lost unseen. Flags of earlier processing are 0.
std::string descriptionBytes(const std::string& ctcName, const std::string& prtName, int nrOfChannels,
                             int nrOfExtraRecords = 2);

/// Puts a name and its terminator into the header; what lies behind them stays.
void putDescriptionName(std::string& bytes, size_t offset, const std::string& name);
constexpr size_t ctcNameOffset = 1;
constexpr size_t prtNameOffset = 257;
constexpr size_t channelCountOffset = 513;
constexpr size_t gradientFlagOffset = 580;

/// Stores the lowest 16 bits, the lower byte first.
void putUint16(std::string& bytes, size_t offset, int value);

} // namespace emeg::test
