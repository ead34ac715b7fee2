#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace emeg {

/// A section of a BrainVision header or marker file: its "key=value" lines in order, and all its lines.
struct BrainVisionSection {
  std::string name;
  std::vector<std::pair<std::string, std::string>> entries;
  std::vector<std::string> lines;

  /// The value of the first entry of that key (case does not count).
  std::optional<std::string> valueOf(std::string_view key) const;
};

/// The sections of a text, in UTF-8. Lines that begin with ';' are left out, except in the section "Comment",
/// which holds everything up to the end of the text. What stands before the first section is left out.
/// (BrainVision Core Data Format 1.0.)
std::vector<BrainVisionSection> parseBrainVisionText(std::string_view text);

/// The section of that name (case does not count); null when there is none.
const BrainVisionSection* sectionNamed(const std::vector<BrainVisionSection>& sections,
                                       std::string_view name);

/// The fields of a value, which are separated by commas; "\1" in a field stands for a comma.
std::vector<std::string> brainVisionFields(std::string_view value);

/// A field's text with its commas as "\1", on one line.
std::string brainVisionField(const std::string& text);

/// "[Name]" gives the name; nothing for another line.
std::optional<std::string> brainVisionSectionIn(std::string_view line);

} // namespace emeg
