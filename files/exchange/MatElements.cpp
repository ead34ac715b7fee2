#include "files/exchange/MatElements.h"

#include "files/exchange/Recording.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/LittleEndian.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>
#include <zlib.h>

namespace emeg {

namespace {

constexpr int64_t headerSize = 128;
constexpr size_t versionAt = 124;
constexpr size_t byteOrderAt = 126;
constexpr uint16_t version5 = 0x0100;
constexpr uint32_t compressedType = 15;
constexpr size_t tagSize = 8;
constexpr size_t bufferSize = 1 << 18;

struct Element {
  int64_t at = 0; ///< of its data, behind its tag
  int64_t nrOfBytes = 0;
  bool isCompressed = false;
};

[[noreturn]] void refuse(const std::string& path, const std::string& problem) {
  throw RecordingError("\"" + path + "\" is " + problem + ". Copy it again from where it was made.");
}

/// Nothing for a file of another version.
std::optional<std::vector<Element>> elementsOf(BinaryFile& file, const std::string& path) {
  std::array<unsigned char, headerSize> header{};
  if (!file.read(header.data(), header.size())) return std::nullopt;
  const bool littleEndian = header[byteOrderAt] == 'I' && header[byteOrderAt + 1] == 'M';
  if (!littleEndian || loadLittleEndian<uint16_t>(header.data() + versionAt) != version5) return std::nullopt;
  const int64_t end = file.size();
  std::vector<Element> elements;
  for (int64_t at = headerSize; at < end;) {
    std::array<unsigned char, tagSize> tag{};
    if (!file.seek(at) || !file.read(tag.data(), tag.size())) refuse(path, "cut off");
    Element element;
    element.isCompressed = loadLittleEndian<uint32_t>(tag.data()) == compressedType;
    element.nrOfBytes = loadLittleEndian<uint32_t>(tag.data() + sizeof(uint32_t));
    element.at = at + static_cast<int64_t>(tagSize);
    at = element.at + element.nrOfBytes;
    if (at > end) refuse(path, "cut off");
    elements.push_back(element);
  }
  return elements;
}

/// zlib's state of one element.
class Inflation {
public:
  Inflation() {
    if (inflateInit(&stream_) != Z_OK) throw std::bad_alloc();
  }
  ~Inflation() { inflateEnd(&stream_); }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;
  z_stream& operator*() { return stream_; }

private:
  z_stream stream_{};
};

class Unpacker {
public:
  Unpacker(BinaryFile& file, const std::string& path, ScratchCopy& copy)
      : file_(file), path_(path), copy_(copy), in_(bufferSize), out_(bufferSize) {}

  void copyPlain(int64_t at, int64_t nrOfBytes) {
    seek(at);
    while (nrOfBytes > 0) {
      const size_t length = readPart(nrOfBytes);
      copy_.append(in_.data(), length);
      nrOfBytes -= static_cast<int64_t>(length);
    }
  }

  /// What is packed is an element of its own: its tag tells how long it becomes.
  void unpack(const Element& element) {
    Inflation inflation;
    z_stream& stream = *inflation;
    int64_t left = element.nrOfBytes;
    int64_t written = 0;
    int64_t expected = -1;
    seek(element.at);
    for (int status = Z_OK; status != Z_STREAM_END;) {
      if (stream.avail_in == 0) {
        if (left == 0) refuse(path_, "damaged: compressed data end too early");
        const size_t length = readPart(left);
        left -= static_cast<int64_t>(length);
        stream.next_in = in_.data();
        stream.avail_in = static_cast<uInt>(length);
      }
      stream.next_out = out_.data();
      stream.avail_out = static_cast<uInt>(out_.size());
      status = inflate(&stream, Z_NO_FLUSH);
      if (status != Z_OK && status != Z_STREAM_END)
        refuse(path_, "damaged: compressed data cannot be unpacked");
      const size_t length = out_.size() - stream.avail_out;
      if (written == 0 && length >= tagSize)
        expected = static_cast<int64_t>(tagSize) + loadLittleEndian<uint32_t>(out_.data() + sizeof(uint32_t));
      written += static_cast<int64_t>(length);
      if (written > expected) refuse(path_, "damaged: compressed data are longer than they say");
      copy_.append(out_.data(), length);
    }
    if (written != expected) refuse(path_, "damaged: compressed data are shorter than they say");
  }

private:
  void seek(int64_t at) {
    if (!file_.seek(at)) refuse(path_, "not readable");
  }
  size_t readPart(int64_t nrOfBytes) {
    const auto length = static_cast<size_t>(std::min(nrOfBytes, static_cast<int64_t>(in_.size())));
    if (!file_.read(in_.data(), length)) refuse(path_, "not readable");
    return length;
  }

  BinaryFile& file_;
  const std::string& path_;
  ScratchCopy& copy_;
  std::vector<unsigned char> in_, out_;
};

} // namespace

std::unique_ptr<ScratchCopy> unpackMatElements(const std::string& path) {
  BinaryFile file;
  if (!file.openForReading(path))
    throw RecordingError("\"" + path + "\" cannot be read: " + std::strerror(errno) + ".");
  const std::optional<std::vector<Element>> elements = elementsOf(file, path);
  const auto isCompressed = [](const Element& element) { return element.isCompressed; };
  if (!elements || std::none_of(elements->begin(), elements->end(), isCompressed)) return nullptr;

  auto copy = std::make_unique<ScratchCopy>("Unpacking \"" + path + "\"");
  Unpacker unpacker(file, path, *copy);
  unpacker.copyPlain(0, headerSize);
  for (const Element& element : *elements) {
    if (element.isCompressed)
      unpacker.unpack(element);
    else
      unpacker.copyPlain(element.at - static_cast<int64_t>(tagSize),
                         element.nrOfBytes + static_cast<int64_t>(tagSize));
  }
  copy->flush();
  return copy;
}

} // namespace emeg
