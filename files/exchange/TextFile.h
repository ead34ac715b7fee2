#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace emeg {

/// The whole content of a text file. Throws RecordingError when it cannot be read or is larger than `largest`
/// bytes, which no such text needs: `what` names what it should be ("a BrainVision header").
std::string readTextFile(const std::string& path, int64_t largest, const std::string& what);

/// Calls use(line) for every line without its end (LF, CR LF or CR); a byte order mark at the start is left
/// out.
template <typename Use>
void forEachLine(std::string_view text, const Use& use) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  while (!text.empty()) {
    const size_t end = text.find_first_of("\r\n");
    use(text.substr(0, end));
    if (end == std::string_view::npos) break;
    const bool pair = text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n';
    text.remove_prefix(end + (pair ? 2 : 1));
  }
}

/// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

bool isUtf8(std::string_view text);

/// The text in UTF-8: as it is when it is UTF-8, else taken as Latin-1.
std::string toUtf8(std::string_view text);

/// At most `longest` bytes of a UTF-8 text, cut between two characters.
std::string cutUtf8(const std::string& text, size_t longest);

/// Control characters become blanks, so that the text fits on one line.
std::string onOneLine(std::string text);

} // namespace emeg
