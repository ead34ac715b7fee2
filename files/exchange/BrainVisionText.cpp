#include "files/exchange/BrainVisionText.h"

#include "files/exchange/TextFields.h"
#include "files/exchange/TextFile.h"

#include <algorithm>

namespace emeg {

namespace {

const std::string commaCode = "\\1";

} // namespace

std::optional<std::string> BrainVisionSection::valueOf(std::string_view key) const {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [key](const auto& entry) { return equalsIgnoringCase(entry.first, key); });
  if (found == entries.end()) return std::nullopt;
  return found->second;
}

std::optional<std::string> brainVisionSectionIn(std::string_view line) {
  line = trimmed(line);
  if (line.size() < 2 || line.front() != '[' || line.back() != ']') return std::nullopt;
  return std::string(line.substr(1, line.size() - 2));
}

std::vector<BrainVisionSection> parseBrainVisionText(std::string_view text) {
  std::vector<BrainVisionSection> sections;
  bool inComment = false;
  forEachLine(text, [&](std::string_view rawLine) {
    if (!inComment) {
      if (const auto name = brainVisionSectionIn(rawLine)) {
        sections.push_back({toUtf8(*name), {}, {}});
        inComment = equalsIgnoringCase(*name, "Comment");
        return;
      }
      if (rawLine.starts_with(';') || trimmed(rawLine).empty()) return;
    }
    if (sections.empty()) return;
    BrainVisionSection& section = sections.back();
    section.lines.push_back(toUtf8(rawLine));
    const std::string& line = section.lines.back();
    if (const size_t sign = line.find('='); sign != std::string::npos && !inComment)
      section.entries.emplace_back(std::string(trimmed(std::string_view(line).substr(0, sign))),
                                   line.substr(sign + 1));
  });
  return sections;
}

const BrainVisionSection* sectionNamed(const std::vector<BrainVisionSection>& sections,
                                       std::string_view name) {
  const auto found =
      std::find_if(sections.begin(), sections.end(), [name](const BrainVisionSection& section) {
        return equalsIgnoringCase(section.name, name);
      });
  return found == sections.end() ? nullptr : &*found;
}

std::vector<std::string> brainVisionFields(std::string_view value) {
  std::vector<std::string> fields(1);
  for (size_t i = 0; i < value.size(); ++i) {
    if (value[i] == ',') {
      fields.emplace_back();
    } else if (value.substr(i, commaCode.size()) == commaCode) {
      fields.back() += ',';
      i += commaCode.size() - 1;
    } else {
      fields.back() += value[i];
    }
  }
  return fields;
}

std::string brainVisionField(const std::string& text) {
  std::string field;
  for (const char c : onOneLine(text)) field += c == ',' ? commaCode : std::string(1, c);
  return field;
}

} // namespace emeg
