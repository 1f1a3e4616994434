#include <elf.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

#include "tests/introspection/support/ElfImage.h"
#include "tools/manifest/Manifest.h"

namespace {

using IntrospectionTest::ElfImage;
using Manifest::readManifest;
using testing::ElementsAre;

std::string const kNames{"A::B\0C\0", 7};

/// What is wrong with these bytes.
std::string refusal(std::span<std::byte const> bytes) {
  try {
    (void)readManifest(bytes);
  } catch (Manifest::BadFile const& error) {
    return error.what();
  }
  return "nothing";
}

std::string refusal(std::string const& bytes) {
  return refusal(std::as_bytes(std::span{bytes}));
}

class ManifestOf : public testing::TestWithParam<ElfImage::Layout> {
 protected:
  ElfImage::Layout layout{GetParam()};
  /// Sections 1 to 3, of which 2 is the manifest; the table of names is 4.
  ElfImage image{layout, {{".text", "code"}, {".vek.type", kNames}, {".data", "data"}}};

  static constexpr char const* kNone{"no Vek types: not such a library"};
  static constexpr char const* kTable{
      "cut short: the section table ends beyond the end of the file"};
};

INSTANTIATE_TEST_SUITE_P(Files, ManifestOf,
                         testing::Values(ElfImage::Layout{true, false},
                                         ElfImage::Layout{true, true},
                                         ElfImage::Layout{false, false},
                                         ElfImage::Layout{false, true}),
                         [](auto const& param) {
                           return std::string{param.param.wide ? "Of64Bits" : "Of32Bits"} +
                                  (param.param.bigEndian ? "BigEndian" : "LittleEndian");
                         });

TEST_P(ManifestOf, AreTheNamesInTheirOrder) {
  EXPECT_THAT(readManifest(image.bytes()), ElementsAre("A::B", "C"));
}

TEST_P(ManifestOf, MayBeTheLastSectionOrTheFirst) {
  EXPECT_THAT(readManifest(ElfImage{layout, {{".vek.type", kNames}}}.bytes()),
              ElementsAre("A::B", "C"));
  EXPECT_THAT(readManifest(ElfImage{layout, {{".text", "x"}, {".vek.type", kNames}}}.bytes()),
              ElementsAre("A::B", "C"));
}

// A linker that puts two parts together fills up between them.
TEST_P(ManifestOf, MayHaveZerosBetweenNames) {
  std::string const padded{"\0\0A\0\0\0\0B\0\0", 10};
  EXPECT_THAT(readManifest(ElfImage{layout, {{".vek.type", padded}}}.bytes()),
              ElementsAre("A", "B"));
}

TEST_P(ManifestOf, OnlyTheSectionOfThatVeryNameCounts) {
  for (char const* const name : {".vek.types", ".vek.typ", ".vek", "vek.type", ".vek.type ", ""})
    EXPECT_EQ(refusal(ElfImage{layout, {{name, kNames}}}.bytes()), kNone) << name;
  // The name may also be the end of another, as linkers store them.
  ElfImage shared{layout, {{"more.vek.type", ""}, {"x", kNames}}};
  shared.nameIs(2, 1 + 4);
  EXPECT_THAT(readManifest(shared.bytes()), ElementsAre("A::B", "C"));
}

TEST_P(ManifestOf, IsMissing) {
  EXPECT_EQ(refusal(ElfImage{layout, {{".text", "code"}}}.bytes()), kNone);
  EXPECT_EQ(refusal(ElfImage{layout, {}}.bytes()), kNone);
  image.tableOffsetIs(0);  // a file without sections
  EXPECT_EQ(refusal(image.bytes()), kNone);
}

TEST_P(ManifestOf, AFileThatIsCutShortAnywhereIsReported) {
  std::size_t const header = layout.wide ? 64 : 52;
  std::size_t const size = image.bytes().size();
  for (std::size_t length = 0; length < size; ++length)
    EXPECT_EQ(refusal(image.cut(length)),
              length < 4        ? "not an ELF file"
              : length < header ? "cut short: the ELF header ends beyond the end of the file"
                                : kTable)
        << length;
  EXPECT_EQ(refusal(image.bytes()), "nothing");
}

TEST_P(ManifestOf, DataBeyondTheEndIsReported) {
  std::string const what{"cut short: section .vek.type ends beyond the end of the file"};
  std::size_t const size = image.bytes().size();
  image.offsetIs(2, size - kNames.size() + 1);
  EXPECT_EQ(refusal(image.bytes()), what);
  image.offsetIs(2, size + 1);
  EXPECT_EQ(refusal(image.bytes()), what);
  image.offsetIs(2, ~std::uint64_t{0});
  EXPECT_EQ(refusal(image.bytes()), what);
  image.offsetIs(2, image.dataOffset(2));
  image.sizeIs(2, ~std::uint64_t{0});
  EXPECT_EQ(refusal(image.bytes()), what);
  image.sizeIs(2, kNames.size());
  EXPECT_EQ(refusal(image.bytes()), "nothing");
  image.sizeIs(4, size);
  EXPECT_EQ(refusal(image.bytes()),
            "cut short: the table of section names ends beyond the end of the file");
}

TEST_P(ManifestOf, DataBeyondTheEndOfOtherSectionsIsNotLookedAt) {
  image.offsetIs(1, ~std::uint64_t{0});
  image.sizeIs(3, ~std::uint64_t{0});
  EXPECT_THAT(readManifest(image.bytes()), ElementsAre("A::B", "C"));
}

TEST_P(ManifestOf, ATableBeyondTheEndIsReported) {
  std::size_t const size = image.bytes().size();
  for (std::uint64_t const offset :
       {std::uint64_t{size}, std::uint64_t{size - 1}, std::uint64_t{size + 1}, ~std::uint64_t{0}}) {
    image.tableOffsetIs(offset);
    EXPECT_EQ(refusal(image.bytes()), kTable) << offset;
  }
  image.tableOffsetIs(image.tableOffset());
  image.countIs(6);
  EXPECT_EQ(refusal(image.bytes()), kTable);
  image.countIs(0xffff);
  EXPECT_EQ(refusal(image.bytes()), kTable);
  image.countIs(5);
  EXPECT_EQ(refusal(image.bytes()), "nothing");
  image.entrySizeIs(0xffff);
  EXPECT_EQ(refusal(image.bytes()), kTable);
}

// Larger entries than we know are read as far as we know them.
TEST_P(ManifestOf, EntriesOfAnotherSizeAreStrodeOverOrRefused) {
  for (unsigned const entrySize : {0U, 1U, layout.wide ? 63U : 39U}) {
    image.entrySizeIs(entrySize);
    EXPECT_EQ(refusal(image.bytes()), "damaged: the entries of its section table are too small");
  }
}

TEST_P(ManifestOf, NumbersTooLargeForTheHeaderStandInTheFirstEntry) {
  image.countIs(0);
  image.sizeIs(0, 5);
  EXPECT_THAT(readManifest(image.bytes()), ElementsAre("A::B", "C"));
  image.namesIndexIs(0xffff);
  image.linkIs(0, 4);
  EXPECT_THAT(readManifest(image.bytes()), ElementsAre("A::B", "C"));
  image.linkIs(0, 5);
  EXPECT_EQ(refusal(image.bytes()), "damaged: it has no table of section names");
  image.sizeIs(0, ~std::uint64_t{0});
  EXPECT_EQ(refusal(image.bytes()), kTable);
  image.sizeIs(0, 0);
  EXPECT_EQ(refusal(image.bytes()), kNone);
}

TEST_P(ManifestOf, AFileWithoutSectionNamesIsReported) {
  image.namesIndexIs(5);
  EXPECT_EQ(refusal(image.bytes()), "damaged: it has no table of section names");
  image.namesIndexIs(0);  // an entry of nothing: no section has a name
  EXPECT_EQ(refusal(image.bytes()), kNone);
}

TEST_P(ManifestOf, ANameBeyondTheTableOfNamesIsNone) {
  for (std::uint64_t const offset : {std::uint64_t{0xffffffff}, std::uint64_t{1000}}) {
    image.nameIs(2, offset);
    EXPECT_EQ(refusal(image.bytes()), kNone);
  }
}

// ".vek.type" at the very end of the table of names, without its NUL.
TEST_P(ManifestOf, ANameWithoutEndIsNone) {
  ElfImage last{layout, {{".vek.type", kNames}}};
  last.sizeIs(2, 1 + 9);
  EXPECT_EQ(refusal(last.bytes()), kNone);
  last.sizeIs(2, 1 + 10);
  EXPECT_EQ(refusal(last.bytes()), "nothing");
}

TEST_P(ManifestOf, NamesWithoutEndAreReported) {
  std::string const what{"damaged: the last name in section .vek.type has no end"};
  for (std::size_t length = 1; length < kNames.size(); ++length) {
    if (kNames[length - 1] == '\0') continue;
    EXPECT_EQ(refusal(ElfImage{layout, {{".vek.type", kNames.substr(0, length)}}}.bytes()), what);
  }
}

TEST_P(ManifestOf, NoNamesAreReported) {
  std::string const what{"damaged: section .vek.type holds no name"};
  EXPECT_EQ(refusal(ElfImage{layout, {{".vek.type", ""}}}.bytes()), what);
  EXPECT_EQ(refusal(ElfImage{layout, {{".vek.type", std::string(32, '\0')}}}.bytes()), what);
  EXPECT_EQ(refusal(ElfImage{layout, {{".vek.type", kNames, 8}}}.bytes()), what);
}

TEST_P(ManifestOf, WhatIsNoNameIsReported) {
  for (char const c : {'\n', '\x1b', '\x01', '\x7f'})
    EXPECT_EQ(
        refusal(ElfImage{layout, {{".vek.type", std::string{"A"} + c + std::string{"B\0", 2}}}}
                    .bytes()),
        "damaged: section .vek.type holds what is no name");
}

TEST_P(ManifestOf, AFileOfNoKnownFormIsReported) {
  for (char const order : {'\0', '\3', '\xff'}) {
    image.orderIs(order);
    EXPECT_EQ(refusal(image.bytes()), "damaged: of no known byte order");
  }
  image.orderIs(layout.bigEndian ? 2 : 1);
  for (char const fileClass : {'\0', '\3', '\xff'}) {
    image.classIs(fileClass);
    EXPECT_EQ(refusal(image.bytes()), "damaged: neither of 32 nor of 64 bits");
  }
}

TEST(ManifestOfAnythingElse, IsReported) {
  EXPECT_EQ(refusal(""), "not an ELF file");
  EXPECT_EQ(refusal("\x7f"), "not an ELF file");
  EXPECT_EQ(refusal("#!/bin/sh\n"), "not an ELF file");
  EXPECT_EQ(refusal(std::string(4096, '\0')), "not an ELF file");
  EXPECT_EQ(refusal("\x7f"
                    "ELf and more of that kind"),
            "not an ELF file");
  EXPECT_EQ(refusal("\x7f"
                    "ELF"),
            "cut short: the ELF header ends beyond the end of the file");
}

/// The library that was built.
class RealLibrary : public testing::Test {
 protected:
  RealLibrary() {
    std::ifstream in{LINKFLAP_LIBRARY, std::ios::binary};
    content.assign(std::istreambuf_iterator<char>{in}, {});
  }
  std::span<std::byte const> bytes() const { return std::as_bytes(std::span{content}); }

  std::string content;
};

TEST_F(RealLibrary, ListsItsTypes) {
  EXPECT_THAT(readManifest(bytes()),
              ElementsAre("LinkFlap::Root", "LinkFlap::LinkFlapSm", "LinkFlap::LinkFlapIntfSm",
                          "LinkFlap::LinkFlapProfileSm"));
}

std::string const kManifest{
    "LinkFlap::Root\0LinkFlap::LinkFlapSm\0LinkFlap::LinkFlapIntfSm\0"
    "LinkFlap::LinkFlapProfileSm\0",
    89};

// Clang's address sanitizer may put a guard of zeros behind whatever it finds.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LINKFLAP_TEST_PADS
#endif
#endif
#ifdef LINKFLAP_TEST_PADS
constexpr bool kSanitizerPads{true};
#else
constexpr bool kSanitizerPads{false};
#endif

// Four names, each with one NUL behind it, and nothing more. The library is of this machine's own
// form, so its headers can be looked at as they are.
TEST_F(RealLibrary, HasThatSectionByteForByte) {
  Elf64_Ehdr header;
  ASSERT_GE(content.size(), sizeof header);
  content.copy(reinterpret_cast<char*>(&header), sizeof header);
  if (header.e_ident[EI_CLASS] != ELFCLASS64) GTEST_SKIP() << "built for 32 bits";
  auto const entry = [&](std::size_t index) {
    Elf64_Shdr section;
    content.copy(reinterpret_cast<char*>(&section), sizeof section,
                 header.e_shoff + index * header.e_shentsize);
    return section;
  };
  Elf64_Shdr const names = entry(header.e_shstrndx);
  unsigned found = 0;
  for (std::size_t i = 0; i < header.e_shnum; ++i) {
    Elf64_Shdr const section = entry(i);
    if (content.c_str() + names.sh_offset + section.sh_name != std::string_view{".vek.type"})
      continue;
    ++found;
    EXPECT_EQ(content.substr(section.sh_offset, kManifest.size()), kManifest);
    EXPECT_EQ(
        content.substr(section.sh_offset + kManifest.size(), section.sh_size - kManifest.size()),
        std::string(kSanitizerPads ? section.sh_size - kManifest.size() : 0, '\0'));
  }
  EXPECT_EQ(found, 1U);
}

TEST_F(RealLibrary, CutShortIsReported) {
  for (std::size_t length = 0; length < content.size(); length += content.size() / 97)
    EXPECT_NE(refusal(bytes().first(length)), "nothing") << length;
}

}  // namespace
