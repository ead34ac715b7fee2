#pragma once

#include <functional>
#include <ostream>

namespace CLI {
class App;
}

namespace emeg {

/// One command of the program: it declares its arguments to the parser, and runs when it was chosen. `run`
/// returns the exit status (app/ExitStatus.h).
struct Command {
  CLI::App* parser; ///< owned by the program's parser
  std::function<int(std::ostream& out, std::ostream& err)> run;
};

} // namespace emeg
