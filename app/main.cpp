#include "app/Program.h"
#include "files/exchange/TemporaryNames.h"

#include <iostream>

int main(int argc, char** argv) {
  emeg::removeTemporariesWhenInterrupted();
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return emeg::runProgram(arguments, std::cout, std::cerr);
}
