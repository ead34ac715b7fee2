#include "files/exchange/BrainVisionHeader.h"

#include "files/exchange/BrainVisionText.h"
#include "files/exchange/FileExtension.h"
#include "files/exchange/TextFields.h"
#include "files/exchange/TextFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace emeg {

namespace {

constexpr int64_t largestHeader = int64_t{16} << 20;
constexpr int64_t mostChannels = 100000;
constexpr double microsecondsPerSecond = 1e6;
constexpr double closeToWhole = 1e-9;
const char* const microvolt = "\xC2\xB5V";

/// The entries of one header file, asked for one by one; complaints name the file, section and key.
class HeaderFile {
public:
  explicit HeaderFile(const std::string& path)
      : path_(path),
        sections_(parseBrainVisionText(readTextFile(path, largestHeader, "a BrainVision header"))) {
    if (sectionNamed(sections_, "Common Infos") == nullptr)
      throw RecordingError("\"" + path + "\" has no section [Common Infos]; it is no BrainVision header.");
  }

  const std::vector<BrainVisionSection>& sections() const { return sections_; }

  /// Empty when it is not there.
  std::string value(const std::string& section, const std::string& key) const {
    const BrainVisionSection* found = sectionNamed(sections_, section);
    return found == nullptr ? std::string() : std::string(trimmed(found->valueOf(key).value_or("")));
  }

  [[noreturn]] void refuse(const std::string& section, const std::string& key,
                           const std::string& expected) const {
    throw RecordingError("\"" + path_ + "\", [" + section + "]: " + key + " is \"" +
                         cutUtf8(value(section, key), 60) + "\"; " + expected);
  }

private:
  std::string path_;
  std::vector<BrainVisionSection> sections_;
};

const char* const common = "Common Infos";
const char* const binary = "Binary Infos";

/// 1666.6666666666667 us is meant as 600 Hz.
double frequencyOf(double intervalUs) {
  const double frequency = microsecondsPerSecond / intervalUs;
  const double whole = std::round(frequency);
  return std::abs(frequency - whole) < closeToWhole * whole ? whole : frequency;
}

double readFrequency(const HeaderFile& file) {
  const auto interval = numberIn(file.value(common, "SamplingInterval"));
  if (!interval || !(*interval > 0) || !std::isfinite(microsecondsPerSecond / *interval))
    file.refuse(common, "SamplingInterval",
                "the time from one sample to the next in microseconds is needed.");
  return frequencyOf(*interval);
}

void readDataLayout(const HeaderFile& file, BrainVisionHeader& header) {
  const std::string format = file.value(common, "DataFormat");
  if (!format.empty() && !equalsIgnoringCase(format, "BINARY"))
    file.refuse(common, "DataFormat", "only BINARY can be read; export the recording again as binary.");
  const std::string type = file.value(common, "DataType");
  if (!type.empty() && !equalsIgnoringCase(type, "TIMEDOMAIN"))
    file.refuse(common, "DataType", "only TIMEDOMAIN can be read.");

  const std::string orientation = file.value(common, "DataOrientation");
  header.vectorized = equalsIgnoringCase(orientation, "VECTORIZED");
  if (!header.vectorized && !equalsIgnoringCase(orientation, "MULTIPLEXED"))
    file.refuse(common, "DataOrientation", "MULTIPLEXED or VECTORIZED is expected.");

  const std::string samples = file.value(binary, "BinaryFormat");
  if (equalsIgnoringCase(samples, "INT_16"))
    header.samples = BrainVisionSamples::Int16;
  else if (equalsIgnoringCase(samples, "UINT_16"))
    header.samples = BrainVisionSamples::Uint16;
  else if (equalsIgnoringCase(samples, "INT_32"))
    header.samples = BrainVisionSamples::Int32;
  else if (equalsIgnoringCase(samples, "IEEE_FLOAT_32"))
    header.samples = BrainVisionSamples::Float32;
  else
    file.refuse(binary, "BinaryFormat", "INT_16, UINT_16, INT_32 or IEEE_FLOAT_32 is expected.");
  header.bigEndian = equalsIgnoringCase(file.value(binary, "UseBigEndianOrder"), "YES");

  if (const std::string points = file.value(common, "DataPoints"); !points.empty()) {
    const auto number = wholeNumberIn(points);
    if (!number || *number < 0) file.refuse(common, "DataPoints", "a number of samples is expected.");
    header.nrOfDataPoints = *number;
  }
}

StoredIntegers storedIntegers(BrainVisionSamples samples, double step) {
  StoredIntegers stored;
  stored.step = step;
  if (samples == BrainVisionSamples::Uint16) {
    stored.smallest = 0;
    stored.largest = std::numeric_limits<uint16_t>::max();
  } else if (samples == BrainVisionSamples::Int32) {
    stored.smallest = std::numeric_limits<int32_t>::min();
    stored.largest = std::numeric_limits<int32_t>::max();
  }
  return stored;
}

/// "name,reference,resolution,unit"
RecordingChannel channelFrom(const std::string& value, BrainVisionHeader& header, const std::string& key) {
  std::vector<std::string> fields = brainVisionFields(value);
  fields.resize(std::max<size_t>(fields.size(), 4));
  RecordingChannel channel;
  channel.name = fields[0];
  channel.reference = fields[1];
  channel.unit = trimmed(fields[3]);
  if (channel.unit.empty()) channel.unit = microvolt;
  channel.microvoltsPerUnit = microvoltsIn(channel.unit);
  double resolution = 1;
  if (!trimmed(fields[2]).empty()) {
    const auto number = numberIn(fields[2]);
    if (number && std::isfinite(*number) && *number != 0)
      resolution = *number;
    else
      header.recording.warnings.push_back(key + " (\"" + channel.name + "\") has the resolution \"" +
                                          cutUtf8(fields[2], 20) + "\", which is taken as 1.");
  }
  const double step = resolution * (channel.isVoltage() ? channel.microvoltsPerUnit : 1);
  channel.stored = storedIntegers(header.samples, step);
  return channel;
}

void readChannels(const HeaderFile& file, BrainVisionHeader& header) {
  const auto number = wholeNumberIn(file.value(common, "NumberOfChannels"));
  if (!number || *number < 1 || *number > mostChannels)
    file.refuse(common, "NumberOfChannels", "1 to " + std::to_string(mostChannels) + " are possible.");
  const BrainVisionSection* section = sectionNamed(file.sections(), "Channel Infos");
  std::vector<std::string> values(static_cast<size_t>(*number));
  std::vector<bool> described(values.size());
  if (section != nullptr) {
    for (const auto& [key, value] : section->entries) {
      if (key.size() < 3 || !equalsIgnoringCase(key.substr(0, 2), "Ch")) continue;
      const auto index = wholeNumberIn(key.substr(2));
      if (!index || *index < 1 || *index > *number) continue;
      values[static_cast<size_t>(*index - 1)] = value;
      described[static_cast<size_t>(*index - 1)] = true;
    }
  }
  for (size_t c = 0; c < values.size(); ++c) {
    const std::string key = "Ch" + std::to_string(c + 1);
    if (!described[c])
      file.refuse("Channel Infos", key, "every one of the NumberOfChannels must be described.");
    RecordingChannel channel = channelFrom(values[c], header, key);
    if (channel.name.empty()) channel.name = key;
    const GuessedKind guess = guessChannelKind(channel.name, "", channel.isVoltage());
    channel.kind = guess.kind;
    channel.kindRule = guess.rule;
    header.recording.channels.push_back(std::move(channel));
  }
}

/// Sections that describe more than this program uses.
void readTexts(const HeaderFile& file, RecordingHeader& recording) {
  for (const BrainVisionSection& section : file.sections()) {
    const auto isNamed = [&section](const char* name) { return equalsIgnoringCase(section.name, name); };
    if (isNamed(common) || isNamed(binary) || isNamed("Channel Infos")) continue;
    std::string text;
    for (const std::string& line : section.lines) text += line + "\n";
    text.erase(text.find_last_not_of('\n') + 1);
    if (!text.empty()) recording.texts.push_back({section.name, text});
  }
}

std::string numberText(double number) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.15g", number);
  if (numberIn(text.data()) != number) std::snprintf(text.data(), text.size(), "%.17g", number);
  return text.data();
}

std::string withBaseName(std::string name, const std::string& path) {
  if (const size_t place = name.find("$b"); place != std::string::npos)
    name.replace(place, 2, fileNameOf(withoutExtension(path)));
  return name;
}

/// True for a further section of a BrainVision header, whose lines are all "key=value": readers of the format
/// expect no others outside [Comment].
bool isSection(const RecordingText& text) {
  for (const char* own : {"Common Infos", "Binary Infos", "Channel Infos", "Marker Infos", "Comment"})
    if (equalsIgnoringCase(text.name, own)) return false;
  bool allEntries = true;
  forEachLine(text.text, [&allEntries](std::string_view line) {
    allEntries = allEntries && line.find('=') != std::string_view::npos;
  });
  return allEntries;
}

/// What [Comment] says: the comment that was there, and what other formats say in fields of their own.
std::string commentText(const RecordingHeader& header) {
  std::string comment;
  for (const RecordingText& text : header.texts) {
    if (equalsIgnoringCase(text.name, "Comment"))
      comment += text.text + "\n";
    else if (!isSection(text))
      comment += text.name + ": " + text.text + "\n";
  }
  return comment;
}

std::string withLineEnds(const std::string& text) {
  std::string lines;
  forEachLine(text, [&lines](std::string_view line) { lines += std::string(line) + "\r\n"; });
  return lines;
}

} // namespace

int bytesPerSampleOf(BrainVisionSamples samples) {
  return samples == BrainVisionSamples::Int16 || samples == BrainVisionSamples::Uint16 ? 2 : 4;
}

BrainVisionHeader readBrainVisionHeader(const std::string& path) {
  const HeaderFile file(path);
  BrainVisionHeader header;
  header.recording.samplingFrequency = readFrequency(file);
  readDataLayout(file, header);
  readChannels(file, header);
  readTexts(file, header.recording);
  header.dataFile = withBaseName(file.value(common, "DataFile"), path);
  if (header.dataFile.empty()) file.refuse(common, "DataFile", "the name of the data file (.eeg) is needed.");
  header.markerFile = withBaseName(file.value(common, "MarkerFile"), path);
  for (std::string& warning : header.recording.warnings) warning = "\"" + path + "\": " + warning;
  return header;
}

std::string brainVisionHeaderText(const RecordingHeader& header, const std::string& dataFileName,
                                  const std::string& markerFileName) {
  std::string text =
      "Brain Vision Data Exchange Header File Version 1.0\r\n"
      "\r\n[Common Infos]\r\nCodepage=UTF-8\r\nDataFile=" +
      dataFileName + "\r\nMarkerFile=" + markerFileName +
      "\r\nDataFormat=BINARY\r\nDataOrientation=MULTIPLEXED\r\nDataType=TIMEDOMAIN\r\n"
      "NumberOfChannels=" +
      std::to_string(header.nrOfChannels()) + "\r\nDataPoints=" + std::to_string(header.nrOfTimePoints) +
      "\r\n; Microseconds from one sample to the next\r\nSamplingInterval=" +
      numberText(microsecondsPerSecond / header.samplingFrequency) +
      "\r\n\r\n[Binary Infos]\r\nBinaryFormat=IEEE_FLOAT_32\r\n"
      "\r\n[Channel Infos]\r\n"
      "; Ch<number>=<name>,<reference>,<resolution>,<unit>; commas are written as \"\\1\".\r\n";
  int64_t number = 0;
  for (const RecordingChannel& channel : header.channels) {
    const bool isMicrovolts = channel.isVoltage() && channel.microvoltsPerUnit == 1;
    const double resolution = channel.isVoltage() ? 1 / channel.microvoltsPerUnit : 1;
    text += "Ch" + std::to_string(++number) + "=" + brainVisionField(channel.name) + "," +
            brainVisionField(channel.reference) + "," + numberText(resolution) + "," +
            (isMicrovolts ? std::string(microvolt) : brainVisionField(channel.unit)) + "\r\n";
  }
  for (const RecordingText& section : header.texts)
    if (isSection(section)) text += "\r\n[" + onOneLine(section.name) + "]\r\n" + withLineEnds(section.text);
  if (const std::string comment = commentText(header); !comment.empty())
    text += "\r\n[Comment]\r\n" + withLineEnds(comment);
  return text;
}

} // namespace emeg
