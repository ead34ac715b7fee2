#include "tests/run/frozen/StoredFiles.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <openssl/evp.h>
#include <sstream>
#include <stdexcept>

namespace emeg::test {

namespace fs = std::filesystem;

namespace {

fs::path pathOf(const std::string& folder, const std::string& run) {
  return fs::path(EMEG_FROZEN_FOLDER) / folder / (run + ".txt");
}

} // namespace

std::string sha256OfBytes(const std::string& bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1)
    throw std::runtime_error("no SHA-256 can be computed");
  constexpr const char* digits = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < length; ++i) {
    text += digits[digest[i] / 16];
    text += digits[digest[i] % 16];
  }
  return text;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> storedLines(const std::string& folder, const std::string& run) {
  const fs::path path = pathOf(folder, run);
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error(path.string() + " is missing");
  return linesOf({std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
}

void storeLines(const std::string& folder, const std::string& run, const std::vector<std::string>& lines) {
  const fs::path path = pathOf(folder, run);
  fs::create_directories(path.parent_path());
  std::ofstream stream(path, std::ios::binary);
  for (const std::string& line : lines) stream << line << '\n';
  if (!stream.flush()) throw std::runtime_error(path.string() + " cannot be written");
}

bool isRenewal() {
  const char* const wanted = std::getenv("EMEG_RENEW_FROZEN_RUNS");
  return wanted != nullptr && std::string(wanted) == "1";
}

std::string firstDifference(const std::vector<std::string>& is, const std::vector<std::string>& should) {
  for (size_t i = 0; i < std::max(is.size(), should.size()); ++i) {
    if (i < is.size() && i < should.size() && is[i] == should[i]) continue;
    return "line " + std::to_string(i + 1) + " is\n  " + (i < is.size() ? is[i] : "(the lines end)") +
           "\nand should be\n  " + (i < should.size() ? should[i] : "(the lines end)");
  }
  return {};
}

std::string whyHashesMayDiffer() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("fma")) return {};
  return "this processor cannot fuse multiply and add: the C library's exp and log round differently here";
#else
  return "the hashes are those of an x86-64 processor: the C library may round differently here";
#endif
}

} // namespace emeg::test
