#include <exception>
#include <iostream>

#include "tools/scenario/Interpreter.h"

int main(int argc, char** /*argv*/) {
  if (argc > 1) {
    std::cerr
        << "usage: scenario <SCENARIO\n"
           "Carries out the commands of a scenario (docs/scenario-language.md), one a line.\n";
    return 2;
  }
  try {
    Scenario::Interpreter interpreter{std::cout, std::cerr};
    if (interpreter.run(std::cin)) return 0;
    std::cerr << "scenario: standard output could not be written\n";
  } catch (std::exception const& error) {
    std::cerr << "scenario: " << error.what() << '\n';
  }
  return 1;
}
