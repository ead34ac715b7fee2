#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <string>

namespace emeg {

/// A record of every call between plug-in and host, one JSON object per line, each written out as soon as the
/// call is answered so that nothing is lost when the program ends early. Without a file it records nothing.
class Transcript {
public:
  using Line = nlohmann::ordered_json;

  Transcript() = default;
  /// Starts an empty file. False, with the reason in `problem`, when that is not possible.
  bool open(const std::filesystem::path& file, std::string& problem);

  /// Texts that are not valid UTF-8 get replacement characters.
  void write(const Line& line);
  /// False when a line could not be written.
  bool isComplete() const { return !failed_; }

private:
  std::ofstream stream_;
  bool failed_ = false;
};

} // namespace emeg
