#pragma once

#include "files/formats/Protocol.h"

#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// Parses the text of a protocol file. Times stay in the file's own unit. Nothing when "ResolutionOfTime" or
/// "NrOfConditions" is missing. A text that ends early gives the intervals that it holds completely;
/// conditions beyond the 255th are not read. Numbers are integers of 64 bits, colours of 16; what is larger
/// is held at the largest.
std::optional<Protocol> parseProtocol(const std::string& text, const std::string& fileNameSuffix);

/// Reads the protocol named by `basePath`, `fileNameSuffix` and ".prt". Nothing when the file cannot be read,
/// is larger than 256 MiB or is no protocol.
std::optional<Protocol> loadProtocol(const std::string& basePath, const std::string& fileNameSuffix);

/// The text of a protocol file, CR LF in front of every item. `labels` and `delaysUs` hold one entry per slot
/// (slot 0 unused); every offset is lengthened by its condition's delay. A slot without an entry has its
/// conditionLabel and no delay; a condition without a colour is written as black.
std::string formatProtocol(const Protocol& protocol, const std::string& experimentPath, double timeFactor,
                           const std::vector<std::string>& labels, const std::vector<double>& delaysUs);

} // namespace emeg
