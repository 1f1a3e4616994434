#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>

#include "runtime/vek/BitReverse.h"
#include "runtime/vek/PtrInterface.h"

#pragma GCC visibility push(default)

namespace Vek {

/// Counted string whose text never changes; copying it shares the text.
///
/// The text is a sequence of bytes of at most 2^32 - 1; it may hold any byte, NUL included (which
/// `charPtr()` cannot show, `view()` can). All empty strings share one block of the process.
class String {
 public:
  String() noexcept : block_{emptyBlock()} { addReference(); }
  /// A null pointer gives the empty string.
  String(char const* text)
      : String(text == nullptr ? std::string_view{} : std::string_view{text}) {}
  explicit String(std::string_view text);
  String(String const& other) noexcept : block_{other.block_} { addReference(); }
  String(String&& other) noexcept : String{} { swap(other); }
  ~String() { dropReference(); }
  String& operator=(String const& other) noexcept {
    String{other}.swap(*this);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    swap(other);
    return *this;
  }

  /// The text, NUL-terminated; valid as long as a String of this text lives.
  char const* charPtr() const noexcept { return block_->text(); }
  std::string_view view() const noexcept { return {block_->text(), block_->size}; }
  std::uint32_t size() const noexcept { return block_->size; }
  bool empty() const noexcept { return block_->size == 0; }
  /// A function of the text alone, the same in every process.
  std::uint32_t hash() const noexcept { return bitReverse(block_->reversedHash); }
  /// Its bits in reverse order, which is what collections ask for: computed once, at construction.
  std::uint32_t reversedHash() const noexcept { return block_->reversedHash; }
  /// Whether both are copies of one string, so that no byte need be compared to know them equal.
  bool sharesText(String const& other) const noexcept { return block_ == other.block_; }

  void swap(String& other) noexcept { std::swap(block_, other.block_); }

  friend bool operator==(String const& a, String const& b) noexcept {
    return a.block_ == b.block_ || (a.reversedHash() == b.reversedHash() && a.view() == b.view());
  }
  friend bool operator==(String const& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(String const& a, char const* b) noexcept { return a.view() == viewOf(b); }
  /// Byte order, bytes taken as unsigned; a prefix comes first.
  friend std::strong_ordering operator<=>(String const& a, String const& b) noexcept {
    return a.view() <=> b.view();
  }
  friend String operator+(String const& a, String const& b) {
    return concatenated(a.view(), b.view());
  }
  friend String operator+(String const& a, char const* b) {
    return concatenated(a.view(), viewOf(b));
  }
  friend String operator+(char const* a, String const& b) {
    return concatenated(viewOf(a), b.view());
  }

 private:
  struct Block {
    std::uint32_t references;
    std::uint32_t reversedHash;
    std::uint32_t size;
    // The text follows, then a NUL.
    char* text() noexcept { return reinterpret_cast<char*>(this + 1); }
  };

  static std::string_view viewOf(char const* text) noexcept {
    return text == nullptr ? std::string_view{} : std::string_view{text};
  }
  /// What all empty strings share. The one reference that stands here is never dropped.
  struct Empty {
    Block block;
    char terminator;
  };
  static Empty empty_;
  static Block* emptyBlock() noexcept { return &empty_.block; }

  static Block* newBlock(std::size_t size);
  static String concatenated(std::string_view a, std::string_view b);

  void addReference() const noexcept {
    if (VFPtrInterface::enableThreadSafePointers) [[unlikely]] {
      addReferenceAtomic();
    } else {
      ++block_->references;
    }
  }
  void dropReference() const noexcept {
    if (VFPtrInterface::enableThreadSafePointers) [[unlikely]] {
      dropReferenceAtomic();
    } else if (--block_->references == 0) {
      freeBlock();
    }
  }
  void addReferenceAtomic() const noexcept;
  void dropReferenceAtomic() const noexcept;
  void freeBlock() const noexcept;

  Block* block_;
};

std::ostream& operator<<(std::ostream& out, String const& string);

/// The name of an entity: a string of a type of its own, so that signatures tell the two apart.
class Name {
 public:
  Name() = default;
  Name(char const* text) : text_{text} {}
  Name(String text) noexcept : text_{std::move(text)} {}

  String const& string() const noexcept { return text_; }
  operator String const&() const noexcept { return text_; }
  char const* charPtr() const noexcept { return text_.charPtr(); }

  friend bool operator==(Name const& a, Name const& b) noexcept { return a.text_ == b.text_; }

 private:
  String text_;
};

std::ostream& operator<<(std::ostream& out, Name const& name);

/// The hash of keyed collections: 32 bits, a function of the text alone.
std::uint32_t textHash(std::string_view text) noexcept;

}  // namespace Vek

/// A table that places by remainder is served as well by either order of the bits; this one is at hand.
template <>
struct std::hash<Vek::String> {
  std::size_t operator()(Vek::String const& string) const noexcept { return string.reversedHash(); }
};

#pragma GCC visibility pop
