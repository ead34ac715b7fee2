#include "files/exchange/EdfNames.h"

#include <set>

namespace emeg {

namespace {

constexpr size_t longestLabel = 16;
constexpr size_t longestUnit = 8;

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

} // namespace

std::string edfText(const std::string& text) {
  std::string plain = text;
  replaceAll(plain, "\xC2\xB5", "u"); // the micro sign
  replaceAll(plain, "\xCE\xBC", "u"); // the Greek letter
  std::string ascii;
  for (const char c : plain) {
    const auto byte = static_cast<unsigned char>(c);
    const bool continues = (byte & 0xC0) == 0x80;
    if (!continues) ascii += byte >= ' ' && byte < 0x7F ? c : '_';
  }
  return ascii;
}

std::vector<std::string> edfLabels(const RecordingHeader& header, std::vector<std::string>& warnings) {
  std::vector<std::string> labels;
  std::set<std::string> taken;
  size_t nrOfChanged = 0;
  for (const RecordingChannel& channel : header.channels) {
    const std::string whole = edfText(channel.name);
    std::string label = whole.substr(0, longestLabel);
    for (int number = 2; label != channel.name && taken.count(label) != 0; ++number) {
      std::string ending = "~";
      ending += std::to_string(number);
      label = whole.substr(0, longestLabel - ending.size()) + ending;
    }
    if (label != channel.name && nrOfChanged++ == 0)
      warnings.push_back("EDF and BDF hold 16 plain characters of a channel's name: \"" + channel.name +
                         "\" is called \"" + label + "\"");
    taken.insert(label);
    labels.push_back(label);
  }
  if (nrOfChanged > 0)
    warnings.back() +=
        nrOfChanged == 1 ? "." : ", and " + std::to_string(nrOfChanged - 1) + " more were changed.";
  return labels;
}

std::string edfUnit(const RecordingChannel& channel) {
  if (channel.isVoltage() && channel.microvoltsPerUnit == 1) return "uV";
  std::string unit = channel.unit;
  if (unit == "\xC2\xB0"
              "C")
    unit = "degC";
  return edfText(unit).substr(0, longestUnit);
}

} // namespace emeg
