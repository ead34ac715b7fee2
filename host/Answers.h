#pragma once

#include <nlohmann/json.hpp>

#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// What a plug-in gets to hear when nobody sits at a terminal: file choices, answers, dialogue parameters and
/// the host's version, read from a JSON document. host/README.md describes the document. Without a document:
/// version 2.1.0 and nothing else.
class Answers {
public:
  /// Reads an answers file of at most 1 MiB. Nothing, with the reason in `problem`, when it cannot be read,
  /// is no JSON or does not follow the description; unknown keys are named.
  static std::optional<Answers> load(const std::filesystem::path& file, std::string& problem);
  static std::optional<Answers> parse(const nlohmann::json& document, std::string& problem);

  /// Major, minor, revision.
  const std::array<int, 3>& version() const { return version_; }
  /// Parameters of the plug-in dialogue; nothing when not given.
  std::optional<int> integerParameter(int index) const;
  std::optional<float> floatParameter(int index) const;
  /// The file chosen in dialogues with this pattern; nothing when cancelled or not given.
  std::optional<std::string> file(const std::string& pattern) const;

  /// The answer to a question, used up by this call unless it repeats: the first one left whose part of a
  /// prompt occurs in this prompt, else the next of those in order. Null pointer when there is none.
  const nlohmann::json* next(const std::string& prompt);
  /// One sentence for each kind of answers that no question has used.
  std::vector<std::string> unused() const;

private:
  friend class AnswersReader;

  struct PromptAnswer {
    std::string partOfPrompt;
    nlohmann::json answer;
    bool repeats = false;
    bool used = false;
  };

  std::array<int, 3> version_{2, 1, 0};
  std::map<int, int> integerParameters_;
  std::map<int, float> floatParameters_;
  std::map<std::string, std::string> files_;
  std::vector<PromptAnswer> byPrompt_;
  std::vector<nlohmann::json> inOrder_;
  std::size_t nrUsedInOrder_ = 0;
};

/// A JSON number as a value that the host's functions can carry; nothing when it is of another kind or too
/// large.
std::optional<int> integerIn(const nlohmann::json& value);
std::optional<float> floatIn(const nlohmann::json& value);

} // namespace emeg
