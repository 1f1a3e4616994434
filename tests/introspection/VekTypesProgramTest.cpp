#include <array>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>

#include "tests/introspection/support/ElfImage.h"

// The program around the reader: what it prints, and how it ends.

namespace {

struct Outcome {
  int status;
  std::string printed;  ///< on both outputs
};

Outcome run(std::string const& arguments) {
  std::string const command = std::string{"{ "} + VEK_TYPES_PROGRAM + ' ' + arguments + "; } 2>&1";
  Outcome outcome{-1, {}};
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return outcome;
  std::array<char, 4096> chunk;
  while (std::size_t const length = std::fread(chunk.data(), 1, chunk.size(), pipe))
    outcome.printed.append(chunk.data(), length);
  int const status = pclose(pipe);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return outcome;
}

std::string fileOf(std::string const& name, std::span<std::byte const> content) {
  std::string const path = testing::TempDir() + "vek-types-" + name;
  std::ofstream{path, std::ios::binary}.write(reinterpret_cast<char const*>(content.data()),
                                              static_cast<std::streamsize>(content.size()));
  return path;
}

constexpr char const* kUsage{
    "usage: vek-types FILE\n"
    "Prints the names of the types that a library provides, one to a line, without\n"
    "loading the library.\n"};

TEST(VekTypesProgram, PrintsTheTypesOfTheLibrary) {
  auto const outcome = run(LINKFLAP_LIBRARY);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed,
            "LinkFlap::Root\nLinkFlap::LinkFlapSm\nLinkFlap::LinkFlapIntfSm\n"
            "LinkFlap::LinkFlapProfileSm\n");
}

TEST(VekTypesProgram, ReadsAForeignFile) {
  IntrospectionTest::ElfImage const image{{false, true},
                                          {{".vek.type", std::string("A::B\0C\0", 7)}}};
  auto const path = fileOf("foreign", image.bytes());
  auto const outcome = run(path);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed, "A::B\nC\n");
  std::remove(path.c_str());
}

TEST(VekTypesProgram, NamesTheFileAndWhatIsWrongWithIt) {
  auto outcome = run("/nowhere/at/all.so");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.printed, "vek-types: /nowhere/at/all.so: cannot be opened\n");

  outcome = run("/");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.printed, "vek-types: /: cannot be read\n");

  outcome = run("/dev/null");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.printed, "vek-types: /dev/null: not an ELF file\n");

  outcome = run(VEK_TYPES_PROGRAM);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.printed, std::string{"vek-types: "} + VEK_TYPES_PROGRAM +
                                 ": no Vek types: not such a library\n");

  IntrospectionTest::ElfImage const image{{true, false},
                                          {{".vek.type", std::string("A::B\0C\0", 7)}}};
  auto const path = fileOf("cut", image.cut(image.tableOffset() + 1));
  outcome = run(path);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(
      outcome.printed,
      "vek-types: " + path + ": cut short: the section table ends beyond the end of the file\n");
  std::remove(path.c_str());
}

TEST(VekTypesProgram, RefusesBadUsage) {
  for (char const* const arguments : {"", "one two", "'' ''"}) {
    auto const outcome = run(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_EQ(outcome.printed, kUsage);
  }
}

TEST(VekTypesProgram, SaysWhenItCannotWrite) {
  auto const outcome = run(LINKFLAP_LIBRARY " >/dev/full");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.printed, "vek-types: standard output could not be written\n");
}

}  // namespace
