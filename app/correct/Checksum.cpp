#include "app/correct/Checksum.h"

#include <array>
#include <fstream>
#include <memory>
#include <openssl/evp.h>
#include <vector>

namespace emeg {

namespace {

struct ContextDeleter {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

} // namespace

std::string sha256Of(const std::string& path, const std::function<void()>& watch) {
  constexpr size_t blockLength = 1 << 20;
  const std::unique_ptr<EVP_MD_CTX, ContextDeleter> context(EVP_MD_CTX_new());
  std::ifstream file(path, std::ios::binary);
  if (!context || !file || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) return {};
  std::vector<char> block(blockLength);
  while (file) {
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    if (EVP_DigestUpdate(context.get(), block.data(), static_cast<size_t>(file.gcount())) != 1) return {};
    watch();
  }
  if (file.bad()) return {};
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1) return {};
  std::string text;
  constexpr const char* digits = "0123456789abcdef";
  for (size_t i = 0; i < length; ++i) {
    text += digits[digest[i] / 16];
    text += digits[digest[i] % 16];
  }
  return text;
}

} // namespace emeg
