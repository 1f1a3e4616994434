#include "tools/manifest/Manifest.h"

#include <cstdint>
#include <cstring>
#include <elf.h>
#include <string_view>

namespace Manifest {

namespace {

using Bytes = std::span<std::byte const>;

[[noreturn]] void fail(std::string const& what) {
  throw BadFile{what};
}

/// The part of `file` that a header speaks of. `what` names it when it is not all there.
Bytes part(Bytes file, std::uint64_t offset, std::uint64_t size, char const* what) {
  if (offset > file.size() || size > file.size() - offset)
    fail(std::string{"cut short: "} + what + " ends beyond the end of the file");
  return file.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

/// Reads the numbers of a header. Which one is told by a member of a structure of <elf.h>, from
/// which place and width are taken; the bytes are put together in the file's order.
class Fields {
 public:
  Fields(Bytes bytes, bool bigEndian) : bytes_{bytes}, bigEndian_{bigEndian} {}

  template <typename Header, typename Field>
  std::uint64_t operator()(Field Header::*field) const {
    static Header const none{};
    auto const offset = static_cast<std::size_t>(reinterpret_cast<char const*>(&(none.*field)) -
                                                 reinterpret_cast<char const*>(&none));
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Field); ++i) {
      std::size_t const from = bigEndian_ ? i : sizeof(Field) - 1 - i;
      value = value << 8U | std::to_integer<std::uint64_t>(bytes_[offset + from]);
    }
    return value;
  }

 private:
  Bytes bytes_;
  bool bigEndian_;
};

/// What the section table says of one section, of either class.
struct Section {
  std::uint64_t name;
  std::uint64_t type;
  std::uint64_t offset;
  std::uint64_t size;
  std::uint64_t link;
};

/// The sections of a file of one class: `Ehdr` and `Shdr` are its headers.
template <typename Ehdr, typename Shdr>
class Sections {
 public:
  Sections(Bytes file, bool bigEndian) : file_{file}, bigEndian_{bigEndian} {
    Fields const header{part(file, 0, sizeof(Ehdr), "the ELF header"), bigEndian};
    offset_ = header(&Ehdr::e_shoff);
    if (offset_ == 0) return;  // a file without sections
    entrySize_ = header(&Ehdr::e_shentsize);
    if (entrySize_ < sizeof(Shdr)) fail("damaged: the entries of its section table are too small");
    count_ = header(&Ehdr::e_shnum);
    names_ = header(&Ehdr::e_shstrndx);
    // Numbers that the header has no room for stand in the first entry.
    if (count_ == 0 || names_ == SHN_XINDEX) {
      Section const first = entry(0);
      if (count_ == 0) count_ = first.size;
      if (names_ == SHN_XINDEX) names_ = first.link;
    }
    // So no product below can be too large.
    if (offset_ > file.size() || count_ > (file.size() - offset_) / entrySize_)
      fail("cut short: the section table ends beyond the end of the file");
    if (count_ != 0 && names_ >= count_) fail("damaged: it has no table of section names");
  }

  std::uint64_t count() const noexcept { return count_; }

  Section entry(std::uint64_t index) const {
    Fields const field{part(file_, offset_ + index * entrySize_, sizeof(Shdr), "the section table"),
                       bigEndian_};
    return {field(&Shdr::sh_name), field(&Shdr::sh_type), field(&Shdr::sh_offset),
            field(&Shdr::sh_size), field(&Shdr::sh_link)};
  }

  Bytes names() const { return data(entry(names_), "the table of section names"); }

  Bytes data(Section const& section, char const* what) const {
    if (section.type == SHT_NOBITS) return {};
    return part(file_, section.offset, section.size, what);
  }

 private:
  Bytes file_;
  bool bigEndian_;
  std::uint64_t offset_{0};
  std::uint64_t entrySize_{0};
  std::uint64_t count_{0};
  std::uint64_t names_{0};
};

/// Whether `wanted` and a NUL stand at `offset` of the table of section names.
bool hasName(Bytes names, std::uint64_t offset, std::string_view wanted) {
  if (offset >= names.size() || names.size() - offset <= wanted.size()) return false;
  auto const at = names.subspan(static_cast<std::size_t>(offset));
  return std::memcmp(at.data(), wanted.data(), wanted.size()) == 0 &&
         at[wanted.size()] == std::byte{0};
}

std::vector<std::string> namesIn(Bytes manifest) {
  if (!manifest.empty() && manifest.back() != std::byte{0})
    fail(std::string{"damaged: the last name in section "} + kSection + " has no end");
  std::vector<std::string> names;
  std::string name;
  for (std::byte const byte : manifest) {
    auto const c = std::to_integer<unsigned char>(byte);
    if (c != 0) {
      // Names are printed one to a line, on terminals too.
      if (c < 0x20 || c == 0x7f)
        fail(std::string{"damaged: section "} + kSection + " holds what is no name");
      name += static_cast<char>(c);
    } else if (!name.empty()) {  // linkers fill up with zeros between the parts of a section
      names.push_back(std::move(name));
      name.clear();
    }
  }
  if (names.empty()) fail(std::string{"damaged: section "} + kSection + " holds no name");
  return names;
}

template <typename Ehdr, typename Shdr>
std::vector<std::string> namesOf(Bytes file, bool bigEndian) {
  Sections<Ehdr, Shdr> const sections{file, bigEndian};
  if (sections.count() != 0) {
    Bytes const sectionNames = sections.names();
    for (std::uint64_t i = 0; i < sections.count(); ++i) {
      Section const section = sections.entry(i);
      // The first one counts: linkers make one of all that have this name.
      if (hasName(sectionNames, section.name, kSection))
        return namesIn(sections.data(section, "section .vek.type"));
    }
  }
  fail("no Vek types: not such a library");
}

}  // namespace

std::vector<std::string> readManifest(Bytes file) {
  if (file.size() < SELFMAG || std::memcmp(file.data(), ELFMAG, SELFMAG) != 0)
    fail("not an ELF file");
  Bytes const ident = part(file, 0, EI_NIDENT, "the ELF header");
  auto const order = std::to_integer<unsigned>(ident[EI_DATA]);
  if (order != ELFDATA2LSB && order != ELFDATA2MSB) fail("damaged: of no known byte order");
  bool const bigEndian = order == ELFDATA2MSB;
  switch (std::to_integer<unsigned>(ident[EI_CLASS])) {
    case ELFCLASS64:
      return namesOf<Elf64_Ehdr, Elf64_Shdr>(file, bigEndian);
    case ELFCLASS32:
      return namesOf<Elf32_Ehdr, Elf32_Shdr>(file, bigEndian);
    default:
      fail("damaged: neither of 32 nor of 64 bits");
  }
}

}  // namespace Manifest
