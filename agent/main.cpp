#include <exception>
#include <iostream>
#include <span>

#include "agent/Agent.h"
#include "agent/Options.h"

int main(int argc, char** argv) {
  using LinkFlapd::Options;
  try {
    Options const options = LinkFlapd::parseOptions(
        std::span<char const* const>{argv, static_cast<std::size_t>(argc)}.subspan(argc > 0 ? 1
                                                                                            : 0));
    switch (options.action) {
      case Options::Action::help:
        std::cout << LinkFlapd::usageText();
        return 0;
      case Options::Action::version:
        std::cout << "linkflapd " << LINKFLAPD_VERSION << '\n';
        return 0;
      case Options::Action::run:
        LinkFlapd::Agent{options, std::cout, std::cerr}.run();
        return 0;
    }
  } catch (LinkFlapd::UsageError const& error) {
    std::cerr << "linkflapd: " << error.what() << "\nTry 'linkflapd --help'.\n";
    return 2;
  } catch (std::exception const& error) {
    std::cerr << "linkflapd: " << error.what() << '\n';
    return 1;
  }
  return 1;
}
