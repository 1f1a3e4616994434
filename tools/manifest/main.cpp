#include <exception>
#include <fstream>
#include <ios>
#include <iostream>
#include <iterator>
#include <span>
#include <string>

#include "tools/manifest/Manifest.h"

namespace {

std::string contentOf(char const* path) {
  std::ifstream in{path, std::ios::binary};
  if (!in) throw Manifest::BadFile{"cannot be opened"};
  try {
    return std::string{std::istreambuf_iterator<char>{in}, {}};
  } catch (std::ios_base::failure const&) {  // a directory, for example
    throw Manifest::BadFile{"cannot be read"};
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: vek-types FILE\n"
                 "Prints the names of the types that a library provides, one to a line, without\n"
                 "loading the library.\n";
    return 2;
  }
  try {
    std::string const content = contentOf(argv[1]);
    for (std::string const& name : Manifest::readManifest(std::as_bytes(std::span{content})))
      std::cout << name << '\n';
    if (std::cout.flush()) return 0;
    std::cerr << "vek-types: standard output could not be written\n";
  } catch (std::exception const& error) {
    std::cerr << "vek-types: " << argv[1] << ": " << error.what() << '\n';
  }
  return 1;
}
