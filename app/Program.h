#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace emeg {

/// The program `emeg` as a function: finds the command that `arguments` (without the program's name) begin
/// with and runs it. Returns the exit status (app/ExitStatus.h).
int runProgram(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

} // namespace emeg
