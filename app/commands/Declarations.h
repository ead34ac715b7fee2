#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace emeg {

/// An option or an argument as a command declares it.
struct DeclaredOption {
  std::vector<std::string> names; ///< "-o", "--output"; the argument's own name for a positional argument
  std::string description;
  std::string group;
  bool isPositional = false;
  bool isRequired = false;
  bool takesValue = false;
  std::string value;      ///< what stands for the value in help: "HZ"
  bool takesFile = false; ///< the value is a path
};

/// A command as it is declared to the parser: what help, completion and manual pages are made of.
struct DeclaredCommand {
  std::string name;
  std::string description;
  std::string footer;
  std::vector<DeclaredOption> options;
};

/// All commands of the program in their order.
std::vector<DeclaredCommand> declaredCommands(const CLI::App& program);

} // namespace emeg
