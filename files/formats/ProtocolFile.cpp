#include "files/formats/ProtocolFile.h"

#include "files/formats/BinaryFile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

namespace emeg {

namespace {

constexpr int64_t maxProtocolFileSize = int64_t{256} << 20;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isSign(char c) {
  return c == '+' || c == '-';
}
bool isBlank(char c) {
  return c == ' ' || c == '\t';
}
bool isLineEnd(char c) {
  return c == '\r' || c == '\n';
}

/// A position in a protocol's text that never moves past its end.
class ProtocolScanner {
public:
  explicit ProtocolScanner(const std::string& text) : text_(text) {}

  bool atEnd() const { return position_ == text_.size(); }

  /// Moves behind the next occurrence of a keyword.
  bool moveBehind(const std::string& keyword) {
    const size_t found = text_.find(keyword, position_);
    if (found == std::string::npos) return false;
    position_ = found + keyword.size();
    return true;
  }

  template <typename Predicate>
  void skipWhile(const Predicate& holds) {
    while (!atEnd() && holds(text_[position_])) ++position_;
  }

  /// Blanks between a number and the end of its line say nothing; before other text they belong to it.
  void skipBlanksBeforeLineEnd() {
    const size_t start = position_;
    skipWhile(isBlank);
    if (!atEnd() && !isLineEnd(text_[position_])) position_ = start;
  }

  bool startsWith(const std::string& word) const { return text_.compare(position_, word.size(), word) == 0; }

  std::string restOfLine() {
    const size_t start = position_;
    skipWhile([](char c) { return !isLineEnd(c); });
    return text_.substr(start, position_ - start);
  }

  /// The next integer, whatever stands before it; values beyond 64 bits are held at the largest. Nothing when
  /// the text ends before a number.
  std::optional<int64_t> nextInteger() {
    skipWhile([](char c) { return !isDigit(c) && !isSign(c); });
    const bool negative = !atEnd() && text_[position_] == '-';
    if (!atEnd() && isSign(text_[position_])) ++position_;
    if (atEnd()) return std::nullopt;
    constexpr int64_t largest = std::numeric_limits<int64_t>::max();
    int64_t value = 0;
    for (; !atEnd() && isDigit(text_[position_]); ++position_) {
      const int digit = text_[position_] - '0';
      value = value > (largest - digit) / 10 ? largest : value * 10 + digit;
    }
    return negative ? -value : value;
  }

private:
  const std::string& text_;
  size_t position_ = 0;
};

TimeResolution scanResolution(ProtocolScanner& scanner) {
  scanner.skipWhile([](char c) { return c == ':' || isBlank(c); });
  if (scanner.startsWith("msec")) return TimeResolution::Msec;
  if (scanner.startsWith("Volu")) return TimeResolution::Volumes;
  return TimeResolution::Usec;
}

int16_t colourComponent(int64_t value) {
  return static_cast<int16_t>(
      std::clamp<int64_t>(value, std::numeric_limits<int16_t>::min(), std::numeric_limits<int16_t>::max()));
}

Condition scanCondition(ProtocolScanner& scanner) {
  Condition condition;
  condition.conditionName = scanner.restOfLine();
  const int64_t nrOfIntervals = scanner.nextInteger().value_or(0);
  for (int64_t i = 0; i < nrOfIntervals; ++i) {
    const std::optional<int64_t> onset = scanner.nextInteger();
    const std::optional<int64_t> offset = scanner.nextInteger();
    if (!onset || !offset) return condition;
    condition.onsets.push_back(static_cast<double>(*onset));
    condition.offsets.push_back(static_cast<double>(*offset));
  }
  const std::optional<int64_t> r = scanner.nextInteger();
  const std::optional<int64_t> g = scanner.nextInteger();
  const std::optional<int64_t> b = scanner.nextInteger();
  if (r && g && b) condition.colour = Colour{colourComponent(*r), colourComponent(*g), colourComponent(*b)};
  return condition;
}

} // namespace

std::optional<Protocol> parseProtocol(const std::string& text, const std::string& fileNameSuffix) {
  ProtocolScanner scanner(text);
  if (!scanner.moveBehind("ResolutionOfTime")) return std::nullopt;
  Protocol protocol(false, fileNameSuffix, scanResolution(scanner));
  if (!scanner.moveBehind("NrOfConditions")) return std::nullopt;
  protocol.startConditions();
  constexpr int64_t mostConditions = Protocol::maxNrOfConditions - 1;
  const int64_t nrOfConditions = std::min(scanner.nextInteger().value_or(0), mostConditions);
  for (int64_t c = 0; c < nrOfConditions; ++c) {
    scanner.skipBlanksBeforeLineEnd();
    scanner.skipWhile(isLineEnd);
    if (scanner.atEnd()) break;
    protocol.conditions.push_back(scanCondition(scanner));
  }
  return protocol;
}

std::optional<Protocol> loadProtocol(const std::string& basePath, const std::string& fileNameSuffix) {
  BinaryFile file;
  if (!file.openForReading(basePath + fileNameSuffix + ".prt")) return std::nullopt;
  const int64_t size = file.size();
  if (size < 0 || size > maxProtocolFileSize) return std::nullopt;
  std::string text(static_cast<size_t>(size), '\0');
  if (!file.read(text.data(), text.size())) return std::nullopt;
  return parseProtocol(text, fileNameSuffix);
}

namespace {

/// Without decimals, right-aligned. The largest double has 309 digits.
void appendNumber(std::string& text, int width, double value) {
  std::array<char, 352> number{};
  std::snprintf(number.data(), number.size(), "%*.0f", width, value);
  text += number.data();
}

void appendResolution(std::string& text, TimeResolution resolution) {
  switch (resolution) {
  case TimeResolution::Usec:
    text += "\r\nResolutionOfTime:   usec";
    break;
  case TimeResolution::Msec:
    text += "\r\nResolutionOfTime:   msec";
    break;
  case TimeResolution::Volumes:
    text += "\r\nResolutionOfTime:   Volumes";
    break;
  }
  text += "\r\n";
}

void appendCondition(std::string& text, const Condition& condition, const std::string& label, double delayUs,
                     double timeFactor) {
  text += "\r\n\r\n" + label;
  text += "\r\n" + std::to_string(condition.nrOfIntervals());
  for (size_t i = 0; i < condition.onsets.size(); ++i) {
    text += "\r\n";
    appendNumber(text, 10, condition.onsets[i] * timeFactor);
    appendNumber(text, 14, (condition.offsets[i] + delayUs) * timeFactor);
  }
  const Colour colour = condition.colour.value_or(Colour{});
  text += "\r\nColor:              " + std::to_string(colour.r) + " " + std::to_string(colour.g) + " " +
          std::to_string(colour.b);
}

} // namespace

std::string formatProtocol(const Protocol& protocol, const std::string& experimentPath, double timeFactor,
                           const std::vector<std::string>& labels, const std::vector<double>& delaysUs) {
  std::string text = "\r\nFileVersion:        2\r\n";
  appendResolution(text, protocol.resolutionOfTime);
  text += "\r\nExperiment:         " + experimentPath + "\r\n";
  text += "\r\nBackgroundColor:    0 0 0"
          "\r\nTextColor:          255 255 255"
          "\r\nTimeCourseColor:    192 192 192"
          "\r\nTimeCourseThick:    2"
          "\r\nReferenceFuncColor: 0 0 80"
          "\r\nReferenceFuncThick: 2"
          "\r\n";
  const int nrOfConditions = protocol.nrOfConditions();
  text += "\r\nNrOfConditions:     " + std::to_string(std::max(nrOfConditions - 1, 0));
  for (int c = 1; c < nrOfConditions; ++c) {
    const auto slot = static_cast<size_t>(c);
    appendCondition(text, protocol.conditions[slot],
                    slot < labels.size() ? labels[slot] : conditionLabel(protocol, c),
                    slot < delaysUs.size() ? delaysUs[slot] : 0.0, timeFactor);
  }
  return text;
}

} // namespace emeg
