#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

constexpr size_t ccdHeaderSize = 584;
constexpr size_t ccdChannelRecordSize = 420;
constexpr size_t ccdExtraRecordSize = 48;

/// The header of a channel description (CCD) file, kept as its raw little-endian bytes so that reserved
/// stretches are carried through unchanged. Offsets of the fields stand in CcdFile.cpp.
class CcdHeader {
public:
  std::array<unsigned char, ccdHeaderSize> bytes{};

  std::string ctcFileName() const;
  std::string prtFileName() const;
  /// Names longer than 255 bytes are cut; bytes behind the terminator stay what they are.
  void setCtcFileName(const std::string& name);
  void setPrtFileName(const std::string& name);

  int nrOfChannels() const;
  void setNrOfChannels(int count);
  int decimationFactor() const;
  void setDecimationFactor(int factor);
  int nrOfSelectedChannels() const;
  void setNrOfSelectedChannels(int count);
  double samplingFrequency() const; ///< Hz, after decimation
  void setSamplingFrequency(double hz);
  double intervalLengthMs() const;
  void setIntervalLengthMs(double ms);
  double intervalStartMs() const;
  void setIntervalStartMs(double ms);
  double intervalEndMs() const;
  void setIntervalEndMs(double ms);
  int32_t nrOfTimePoints() const;
  void setNrOfTimePoints(int32_t count);
  int nrOfExtraRecords() const;

  /// What processing produced the recording. Flags are only ever set, never cleared.
  enum class Flag {
    IntervalSelected = 576,
    Filtered = 577,
    AverageReferenced = 578,
    FourthSwitch = 579,
    GradientCorrected = 580,
    BcgCorrected = 581,
    OcularCorrected = 582,
    LastSwitch = 583
  };
  bool flag(Flag which) const { return bytes[static_cast<size_t>(which)] != 0; }
  void setFlag(Flag which) { bytes[static_cast<size_t>(which)] = 1; }
};

/// One channel's record, kept as raw bytes.
class CcdChannelRecord {
public:
  std::array<unsigned char, ccdChannelRecordSize> bytes{};

  /// A new record: good, not processed, colour white, the other defaults of the format.
  static CcdChannelRecord make(const std::string& name, int type, double samplingFrequency);
  /// "Channel_%03d" with the channel index from 0.
  static std::string defaultName(int channelIndex);

  std::string name() const;              ///< up to the first 0 byte, at most 32 bytes
  void setName(const std::string& name); ///< at most 31 bytes are kept, the rest of the field becomes 0
  bool good() const;
  void setGood(bool good);
  bool processed() const;
  void setProcessed(bool processed);
  int type() const;
  double samplingFrequency() const;
};

using CcdExtraRecord = std::array<unsigned char, ccdExtraRecordSize>;

/// A channel description: header, channel records in file order, opaque extra records.
struct ChannelDescription {
  CcdHeader header;
  std::vector<CcdChannelRecord> channelRecords;
  std::vector<CcdExtraRecord> extraRecords;
};

enum class CcdReadResult { Ok, CannotOpen, Truncated };

/// Reads a CCD file. The last bytes of the header's two file names are forced to 0. On failure the C
/// library's error number is set (0 when the file ended early) and `description` stays as it was.
CcdReadResult readCcdFile(const std::string& path, ChannelDescription& description);

/// The bytes of a CCD file: header, all channel records, extra records. The header's two record counts are
/// those of the records written (at most 65535 and 255), so that a reader finds each where it expects it.
std::vector<unsigned char> encodeCcdFile(const ChannelDescription& description);

} // namespace emeg
