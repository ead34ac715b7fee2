#include "app/correct/FileChecksums.h"

#include "files/formats/BinaryFile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <openssl/evp.h>

namespace emeg {

namespace {

constexpr int64_t toTheEnd = std::numeric_limits<int64_t>::max();
constexpr int64_t blockLength = 1 << 20;

struct ContextDeleter {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

std::string hexadecimal(std::span<const unsigned char> digest) {
  constexpr const char* digits = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : digest) {
    text += digits[byte / 16];
    text += digits[byte % 16];
  }
  return text;
}

} // namespace

/// One file, of which the first `position_` bytes are counted.
class FileChecksums::File {
public:
  explicit File(std::string path) : path_(std::move(path)), context_(EVP_MD_CTX_new()) {
    isGood_ = context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1;
  }

  const std::string& path() const { return path_; }

  void show(int64_t position, std::span<const unsigned char> bytes) {
    const int64_t end = position + static_cast<int64_t>(bytes.size());
    if (end <= position_) return;
    if (position > position_) readUpTo(position, [] {});
    add(bytes.subspan(static_cast<size_t>(std::max<int64_t>(position_ - position, 0))));
  }

  std::string finish(const std::function<void()>& watch) {
    readUpTo(toTheEnd, watch);
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (!isGood_ || EVP_DigestFinal_ex(context_.get(), digest.data(), &length) != 1) return {};
    return hexadecimal(std::span(digest).first(length));
  }

private:
  void add(std::span<const unsigned char> bytes) {
    isGood_ = isGood_ && EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1;
    position_ += static_cast<int64_t>(bytes.size());
  }

  void readUpTo(int64_t end, const std::function<void()>& watch) {
    if (!file_.isOpen()) isGood_ = isGood_ && file_.openForReading(path_);
    isGood_ = isGood_ && file_.seek(position_);
    std::vector<unsigned char> block;
    while (isGood_ && position_ < end) {
      block.resize(static_cast<size_t>(std::min(blockLength, end - position_)));
      const size_t length = file_.readSome(block.data(), block.size());
      add(std::span(block).first(length));
      if (length < block.size()) {
        isGood_ = isGood_ && end == toTheEnd && file_.tell() == file_.size();
        break;
      }
      watch();
    }
  }

  std::string path_;
  std::unique_ptr<EVP_MD_CTX, ContextDeleter> context_;
  BinaryFile file_;
  int64_t position_ = 0;
  bool isGood_ = false;
};

FileChecksums::FileChecksums(const std::vector<std::string>& files) {
  for (const std::string& path : files) files_.push_back(std::make_unique<File>(path));
}

FileChecksums::~FileChecksums() = default;

void FileChecksums::bytesRead(const std::string& path, int64_t position,
                              std::span<const unsigned char> bytes) {
  for (const auto& file : files_)
    if (file->path() == path) file->show(position, bytes);
}

std::vector<InputFile> FileChecksums::finish(const std::function<void()>& watch) {
  std::vector<InputFile> sums;
  for (const auto& file : files_) sums.push_back({file->path(), file->finish(watch)});
  return sums;
}

} // namespace emeg
