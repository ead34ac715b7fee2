#pragma once

#include "host/User.h"

#include <iosfwd>

namespace emeg {

/// A user at a terminal: questions go to one stream, typed lines come from another. An empty line takes the
/// default (yes for a yes/no question, no file for a file dialogue), the end of the input cancels. What
/// cannot be taken is asked again with the reason; after 100 refusals in one question, or a line of more than
/// 65536 characters, the question is cancelled, so that no input keeps the program for ever.
class Terminal : public User {
public:
  Terminal(std::istream& input, std::ostream& output) : input_(input), output_(output) {}

  std::optional<int> yesNo(const std::string& question) override;
  std::optional<int> integer(const std::string& prompt, int defaultValue, int minimum, int maximum) override;
  std::optional<float> real(const std::string& prompt, float defaultValue, float minimum,
                            float maximum) override;
  std::optional<std::string> text(const std::string& prompt, const std::string& defaultText) override;
  std::optional<std::string> openFile(const std::string& title, const std::string& pattern,
                                      const std::string& description) override;

private:
  /// Asks until `take` (typed line in; answer out, or a reason when there is none) finds an answer. An empty
  /// line gives `defaultAnswer`, the end of the input nothing.
  template <typename Answer, typename Take>
  std::optional<Answer> ask(const std::string& shown, const std::optional<Answer>& defaultAnswer, Take take);
  template <typename Number>
  std::optional<Number> askNumber(const std::string& prompt, Number defaultValue, Number minimum,
                                  Number maximum);
  /// The next typed line, nothing at the end of the input.
  std::optional<std::string> readLine();

  std::istream& input_;
  std::ostream& output_;
  bool ended_ = false;
};

} // namespace emeg
