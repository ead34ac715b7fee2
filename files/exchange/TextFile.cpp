#include "files/exchange/TextFile.h"

#include "files/exchange/Recording.h"
#include "files/formats/BinaryFile.h"

#include <cerrno>
#include <cstring>

namespace emeg {

namespace {

/// Length of the UTF-8 character at the start of `text`; 0 when there is none (RFC 3629).
size_t utf8LengthAt(std::string_view text) {
  const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return 1;
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  const bool overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
  const bool surrogate = first == 0xED && byte(1) > 0x9F;
  const bool beyondUnicode = first == 0xF4 && byte(1) > 0x8F;
  return overlong || surrogate || beyondUnicode ? 0 : length;
}

} // namespace

std::string readTextFile(const std::string& path, int64_t largest, const std::string& what) {
  BinaryFile file;
  if (!file.openForReading(path))
    throw RecordingError("\"" + path + "\" cannot be read: " + std::strerror(errno) + ".");
  const int64_t size = file.size();
  if (size > largest)
    throw RecordingError("\"" + path + "\" is " + std::to_string(size) + " bytes long, too long for " + what +
                         "; is it the right file?");
  std::string text(static_cast<size_t>(size < 0 ? 0 : size), '\0');
  if (size < 0 || !file.read(text.data(), text.size()))
    throw RecordingError("\"" + path + "\" cannot be read" +
                         (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string()) + ".");
  return text;
}

std::string_view trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const size_t length = utf8LengthAt(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string toUtf8(std::string_view text) {
  if (isUtf8(text)) return std::string(text);
  std::string converted;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      converted += c;
    } else {
      converted += static_cast<char>(0xC0 | (byte >> 6));
      converted += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return converted;
}

std::string cutUtf8(const std::string& text, size_t longest) {
  if (text.size() <= longest) return text;
  size_t end = longest;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

std::string onOneLine(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = ' ';
  return text;
}

} // namespace emeg
