#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace emeg {

/// Characters that a plug-in's buffer for a text or a path takes, without the terminating null.
constexpr std::size_t longestResultText = 255;

/// Whoever answers a plug-in's questions. Every question may be cancelled: the answer is then empty.
class User {
public:
  virtual ~User() = default;

  /// 1 for yes, 0 for no.
  virtual std::optional<int> yesNo(const std::string& question) = 0;
  virtual std::optional<int> integer(const std::string& prompt, int defaultValue, int minimum,
                                     int maximum) = 0;
  virtual std::optional<float> real(const std::string& prompt, float defaultValue, float minimum,
                                    float maximum) = 0;
  virtual std::optional<std::string> text(const std::string& prompt, const std::string& defaultText) = 0;
  /// Path of a file to open; `pattern` is the dialogue's file pattern, such as "*.ctc".
  virtual std::optional<std::string> openFile(const std::string& title, const std::string& pattern,
                                              const std::string& description) = 0;
};

} // namespace emeg
