#pragma once

#include <string>
#include <vector>

namespace emeg::test {

/// The SHA-256 of bytes in hexadecimal digits.
std::string sha256OfBytes(const std::string& bytes);

/// The lines of a text, without their ends.
std::vector<std::string> linesOf(const std::string& text);

/// What is stored of the frozen runs: for every run a text of this name in one of the folders beside the
/// tests. Throws when there is none.
std::vector<std::string> storedLines(const std::string& folder, const std::string& run);
void storeLines(const std::string& folder, const std::string& run, const std::vector<std::string>& lines);

/// True when the stored texts are to be written instead of compared (EMEG_RENEW_FROZEN_RUNS=1).
bool isRenewal();

/// The first line that differs, as a sentence with both; empty when all lines are the same.
std::string firstDifference(const std::vector<std::string>& is, const std::vector<std::string>& should);

/// Why hashes cannot be compared on this machine; empty when they can. The C library's exp and log round
/// their last bit differently where the processor cannot fuse multiply and add.
std::string whyHashesMayDiffer();

} // namespace emeg::test
