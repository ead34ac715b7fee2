#include "host/Answers.h"

#include <charconv>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <system_error>

namespace emeg {

/// Fills Answers from a JSON document, one function per key. Each returns false after it has written down
/// what is wrong and where.
class AnswersReader {
public:
  AnswersReader(Answers& answers, std::string& problem) : answers_(answers), problem_(problem) {}

  bool read(const nlohmann::json& document) {
    return hasOnly(document, "the answers", {"version", "files", "parameters", "prompts", "inOrder"}) &&
           readPart(document, "version", &AnswersReader::readVersion) &&
           readPart(document, "files", &AnswersReader::readFiles) &&
           readPart(document, "parameters", &AnswersReader::readParameters) &&
           readPart(document, "prompts", &AnswersReader::readPrompts) &&
           readPart(document, "inOrder", &AnswersReader::readInOrder);
  }

private:
  using Json = nlohmann::json;

  bool refuse(const std::string& sentence) {
    problem_ = sentence;
    return false;
  }

  bool hasOnly(const Json& object, const std::string& where, std::initializer_list<const char*> known) {
    std::string names;
    for (const char* name : known) {
      if (!names.empty()) names += ", ";
      names += '"';
      names += name;
      names += '"';
    }
    if (!object.is_object()) return refuse(where + " must be an object with keys out of " + names);
    for (const auto& item : object.items()) {
      bool isKnown = false;
      for (const char* name : known) isKnown = isKnown || item.key() == name;
      if (!isKnown) return refuse("unknown key \"" + item.key() + "\" in " + where + "; known are " + names);
    }
    return true;
  }

  bool readPart(const Json& document, const char* key, bool (AnswersReader::*readIt)(const Json&)) {
    const auto part = document.find(key);
    return part == document.end() || (this->*readIt)(*part);
  }

  bool readVersion(const Json& version) {
    const char* expected = "\"version\" must be three whole numbers, such as [2, 1, 0]";
    if (!version.is_array() || version.size() != answers_.version_.size()) return refuse(expected);
    for (std::size_t i = 0; i < version.size(); ++i) {
      const std::optional<int> number = integerIn(version[i]);
      if (!number) return refuse(expected);
      answers_.version_[i] = *number;
    }
    return true;
  }

  bool readFiles(const Json& files) {
    if (!hasOnly(files, "\"files\"", {"*.ccd", "*.prt", "*.ctc"})) return false;
    for (const auto& item : files.items()) {
      if (item.value().is_null()) continue;
      if (!item.value().is_string())
        return refuse("the choice for \"" + item.key() + "\" in \"files\" must be a path, or null for none");
      answers_.files_[item.key()] = item.value().get<std::string>();
    }
    return true;
  }

  bool readParameters(const Json& parameters) {
    if (!hasOnly(parameters, "\"parameters\"", {"integers", "floats"})) return false;
    if (parameters.contains("integers") &&
        !readNumbers(parameters["integers"], "integers", answers_.integerParameters_, integerIn))
      return false;
    return !parameters.contains("floats") ||
           readNumbers(parameters["floats"], "floats", answers_.floatParameters_, floatIn);
  }

  template <typename Number>
  bool readNumbers(const Json& numbers, const std::string& name, std::map<int, Number>& target,
                   std::optional<Number> (*numberIn)(const Json&)) {
    if (!numbers.is_object()) return refuse('"' + name + "\" must be an object such as {\"0\": 150}");
    for (const auto& item : numbers.items()) {
      int index = 0;
      const char* keyEnd = item.key().data() + item.key().size();
      const auto [end, error] = std::from_chars(item.key().data(), keyEnd, index);
      if (error != std::errc() || end != keyEnd || index < 0)
        return refuse("unknown key \"" + item.key() + "\" in \"" + name +
                      "\": parameters are known by their index, \"0\" or above");
      if (item.value().is_null()) continue;
      const std::optional<Number> number = numberIn(item.value());
      if (!number)
        return refuse("the value of \"" + item.key() + "\" in \"" + name +
                      "\" is not a number that such a parameter can hold");
      target[index] = *number;
    }
    return true;
  }

  bool readPrompts(const Json& prompts) {
    if (!prompts.is_array()) return refuse("\"prompts\" must be a list");
    for (std::size_t i = 0; i < prompts.size(); ++i) {
      const std::string where = "entry " + std::to_string(i + 1) + " of \"prompts\"";
      if (!hasOnly(prompts[i], where, {"prompt", "answer", "repeat"})) return false;
      const auto prompt = prompts[i].find("prompt");
      const auto answer = prompts[i].find("answer");
      const auto repeat = prompts[i].find("repeat");
      if (prompt == prompts[i].end() || !prompt->is_string())
        return refuse(where + " needs a text \"prompt\", a part of the question");
      if (answer == prompts[i].end()) return refuse(where + " needs an \"answer\"");
      if (!isAnswer(*answer, where)) return false;
      if (repeat != prompts[i].end() && !repeat->is_boolean())
        return refuse("\"repeat\" in " + where + " must be true or false");
      answers_.byPrompt_.push_back(
          {prompt->get<std::string>(), *answer, repeat != prompts[i].end() && repeat->get<bool>(), false});
    }
    return true;
  }

  bool readInOrder(const Json& inOrder) {
    if (!inOrder.is_array()) return refuse("\"inOrder\" must be a list");
    for (std::size_t i = 0; i < inOrder.size(); ++i) {
      if (!isAnswer(inOrder[i], "entry " + std::to_string(i + 1) + " of \"inOrder\"")) return false;
      answers_.inOrder_.push_back(inOrder[i]);
    }
    return true;
  }

  bool isAnswer(const Json& value, const std::string& where) {
    return value.is_primitive() ||
           refuse("the answer in " + where +
                  " must be a number, a text, true, false, or null for a cancelled question");
  }

  Answers& answers_;
  std::string& problem_;
};

std::optional<Answers> Answers::parse(const nlohmann::json& document, std::string& problem) {
  Answers answers;
  if (!AnswersReader(answers, problem).read(document)) return std::nullopt;
  return answers;
}

std::optional<Answers> Answers::load(const std::filesystem::path& file, std::string& problem) {
  constexpr std::size_t mostBytes = std::size_t{1024} * 1024;
  const auto refuse = [&](const std::string& reason) -> std::optional<Answers> {
    problem = "the answers file " + file.string() + " " + reason;
    return std::nullopt;
  };
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) return refuse("is a folder");
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return refuse("cannot be opened");
  std::string text(mostBytes + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad()) return refuse("cannot be read");
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (text.size() > mostBytes) return refuse("is larger than 1 MiB");

  const nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
  if (document.is_discarded()) return refuse("is not valid JSON");
  std::string reason;
  std::optional<Answers> answers = parse(document, reason);
  if (!answers) return refuse("cannot be used: " + reason);
  return answers;
}

} // namespace emeg
