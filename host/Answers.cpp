#include "host/Answers.h"

#include "host/ScreenText.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace emeg {

std::optional<int> Answers::integerParameter(int index) const {
  const auto found = integerParameters_.find(index);
  return found != integerParameters_.end() ? std::optional<int>(found->second) : std::nullopt;
}

std::optional<float> Answers::floatParameter(int index) const {
  const auto found = floatParameters_.find(index);
  return found != floatParameters_.end() ? std::optional<float>(found->second) : std::nullopt;
}

std::optional<std::string> Answers::file(const std::string& pattern) const {
  const auto found = files_.find(pattern);
  return found != files_.end() ? std::optional<std::string>(found->second) : std::nullopt;
}

const nlohmann::json* Answers::next(const std::string& prompt) {
  for (PromptAnswer& candidate : byPrompt_) {
    if (candidate.used && !candidate.repeats) continue;
    if (prompt.find(candidate.partOfPrompt) == std::string::npos) continue;
    candidate.used = true;
    return &candidate.answer;
  }
  return nrUsedInOrder_ < inOrder_.size() ? &inOrder_[nrUsedInOrder_++] : nullptr;
}

std::vector<std::string> Answers::unused() const {
  std::vector<std::string> sentences;
  for (const PromptAnswer& candidate : byPrompt_)
    if (!candidate.used)
      sentences.push_back("no question used the answer for the prompt " + excerpt(candidate.partOfPrompt));
  if (nrUsedInOrder_ < inOrder_.size())
    sentences.push_back("only " + std::to_string(nrUsedInOrder_) + " of the " +
                        std::to_string(inOrder_.size()) + " answers in order were asked for");
  return sentences;
}

std::optional<int> integerIn(const nlohmann::json& value) {
  if (!value.is_number_integer()) return std::nullopt;
  constexpr auto largest = std::numeric_limits<int>::max();
  if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(largest))
    return std::nullopt;
  const auto number = value.get<std::int64_t>();
  if (number < std::numeric_limits<int>::min() || number > largest) return std::nullopt;
  return static_cast<int>(number);
}

std::optional<float> floatIn(const nlohmann::json& value) {
  if (!value.is_number()) return std::nullopt;
  const auto number = value.get<double>();
  if (!(std::fabs(number) <= static_cast<double>(std::numeric_limits<float>::max()))) return std::nullopt;
  return static_cast<float>(number);
}

} // namespace emeg
