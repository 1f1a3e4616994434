#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace IntrospectionTest {

/// An ELF file made by hand, byte by byte, of either class and either byte order: a header, the
/// data of some sections, the table of their names, the section table. Offsets are those of the
/// format, not taken from a header file, so that a reader that uses one is checked against another
/// source.
class ElfImage {
 public:
  struct Layout {
    bool wide;  ///< 64 bits
    bool bigEndian;
  };
  struct Section {
    std::string name;
    std::string data;
    std::uint32_t type{1};  ///< 1: has data in the file; 8: has none
  };

  ElfImage(Layout layout, std::vector<Section> sections) : layout_{layout} {
    sections.insert(sections.begin(), Section{"", "", 0});  // the first entry stands for nothing
    sections.push_back({".shstrtab", "", 3});
    for (Section const& section : sections) {
      nameOffsets_.push_back(sections.back().data.size());
      sections.back().data += section.name + '\0';
    }

    bytes_ = std::string(layout.wide ? 64 : 52, '\0');
    bytes_.replace(0, 7,
                   std::string{"\x7f"
                               "ELF\0\0\1",
                               8}
                       .substr(0, 7));
    bytes_[4] = layout.wide ? 2 : 1;
    bytes_[5] = layout.bigEndian ? 2 : 1;
    for (Section const& section : sections) {
      dataOffsets_.push_back(bytes_.size());
      if (section.type != 8) bytes_ += section.data;
    }
    bytes_.resize((bytes_.size() + 7) / 8 * 8);
    table_ = bytes_.size();
    bytes_.resize(table_ + sections.size() * entrySize());
    for (std::size_t i = 0; i < sections.size(); ++i) {
      nameIs(i, nameOffsets_[i]);
      put(entry(i) + 4, 4, sections[i].type);
      if (sections[i].type == 0) continue;
      offsetIs(i, dataOffsets_[i]);
      sizeIs(i, sections[i].data.size());
    }
    tableOffsetIs(table_);
    entrySizeIs(entrySize());
    countIs(sections.size());
    namesIndexIs(sections.size() - 1);
  }

  std::span<std::byte const> bytes() const { return std::as_bytes(std::span{bytes_}); }
  /// The same, cut to `size` bytes.
  std::span<std::byte const> cut(std::size_t size) const { return bytes().first(size); }
  std::size_t tableOffset() const { return table_; }
  std::size_t dataOffset(std::size_t section) const { return dataOffsets_[section]; }

  void put(std::size_t offset, std::size_t width, std::uint64_t value) {
    for (std::size_t i = 0; i < width; ++i) {
      std::size_t const shift = 8 * (layout_.bigEndian ? width - 1 - i : i);
      bytes_[offset + i] = static_cast<char>(value >> shift & 0xff);
    }
  }

  // Fields of the file header.
  void classIs(char value) { bytes_[4] = value; }
  void orderIs(char value) { bytes_[5] = value; }
  void tableOffsetIs(std::uint64_t value) { putWord(layout_.wide ? 40 : 32, value); }
  void entrySizeIs(std::uint64_t value) { put(layout_.wide ? 58 : 46, 2, value); }
  void countIs(std::uint64_t value) { put(layout_.wide ? 60 : 48, 2, value); }
  void namesIndexIs(std::uint64_t value) { put(layout_.wide ? 62 : 50, 2, value); }

  // Fields of a section's entry; the sections given count from 1, the names come last.
  void nameIs(std::size_t section, std::uint64_t value) { put(entry(section), 4, value); }
  void offsetIs(std::size_t section, std::uint64_t value) {
    putWord(entry(section) + (layout_.wide ? 24 : 16), value);
  }
  void sizeIs(std::size_t section, std::uint64_t value) {
    putWord(entry(section) + (layout_.wide ? 32 : 20), value);
  }
  void linkIs(std::size_t section, std::uint64_t value) {
    put(entry(section) + (layout_.wide ? 40 : 24), 4, value);
  }

 private:
  std::size_t entrySize() const { return layout_.wide ? 64 : 40; }
  std::size_t entry(std::size_t section) const { return table_ + section * entrySize(); }
  void putWord(std::size_t offset, std::uint64_t value) {
    put(offset, layout_.wide ? 8 : 4, value);
  }

  Layout layout_;
  std::string bytes_;
  std::size_t table_{0};
  std::vector<std::size_t> nameOffsets_;
  std::vector<std::size_t> dataOffsets_;
};

}  // namespace IntrospectionTest
