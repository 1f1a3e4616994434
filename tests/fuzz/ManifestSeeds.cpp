// usage: manifest-seeds FOLDER
// Writes files for the fuzzer of the manifest reader to begin with: of each class and byte order.

#include <fstream>
#include <string>

#include "tests/introspection/support/ElfImage.h"

int main(int argc, char** argv) {
  using IntrospectionTest::ElfImage;
  if (argc != 2) return 2;
  for (bool const wide : {true, false}) {
    for (bool const bigEndian : {false, true}) {
      ElfImage const image{{wide, bigEndian},
                           {{".text", "code"}, {".vek.type", std::string("A::B\0C\0", 7)}}};
      std::ofstream out{std::string{argv[1]} + '/' + (wide ? "64" : "32") + (bigEndian ? "b" : "l"),
                        std::ios::binary};
      out.write(reinterpret_cast<char const*>(image.bytes().data()),
                static_cast<std::streamsize>(image.bytes().size()));
      if (!out.flush()) return 1;
    }
  }
  return 0;
}
