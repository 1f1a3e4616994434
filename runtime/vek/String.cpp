#include "runtime/vek/String.h"

#include <atomic>
#include <cstring>
#include <limits>
#include <new>
#include <ostream>

#include "runtime/vek/Exception.h"
#include "runtime/vek/Pool.h"
#include "runtime/vek/Wrap.h"

namespace Vek {

// FNV-1a: its low bits, which the keyed collections use first, differ between names that differ
// only in a trailing number.
std::uint32_t textHash(std::string_view text) noexcept {
  std::uint32_t hash = 2166136261U;
  for (char const c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash = wrappingProduct(hash, 16777619U);
  }
  return hash;
}

constinit String::Empty String::empty_{{1, bitReverse(2166136261U), 0}, '\0'};

String::Block* String::newBlock(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max()) throwRangeException("string too long");
  void* const memory = Pool::allocate(sizeof(Block) + size + 1);
  auto* const block = new (memory) Block{1, 0, static_cast<std::uint32_t>(size)};
  block->text()[size] = '\0';
  return block;
}

String::String(std::string_view text) : block_{emptyBlock()} {
  if (text.empty()) {
    addReference();
    return;
  }
  block_ = newBlock(text.size());
  std::memcpy(block_->text(), text.data(), text.size());
  block_->reversedHash = bitReverse(textHash(text));
}

String String::concatenated(std::string_view a, std::string_view b) {
  if (a.empty()) return String{b};
  if (b.empty()) return String{a};
  Block* const block = newBlock(a.size() + b.size());
  std::memcpy(block->text(), a.data(), a.size());
  std::memcpy(block->text() + a.size(), b.data(), b.size());
  block->reversedHash = bitReverse(textHash({block->text(), block->size}));
  String result;
  result.dropReference();
  result.block_ = block;
  return result;
}

void String::addReferenceAtomic() const noexcept {
  std::atomic_ref<std::uint32_t>{block_->references}.fetch_add(1, std::memory_order_relaxed);
}

void String::dropReferenceAtomic() const noexcept {
  std::atomic_ref<std::uint32_t> const references{block_->references};
  if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) freeBlock();
}

void String::freeBlock() const noexcept {
  Pool::release(block_, sizeof(Block) + block_->size + 1);
}

std::ostream& operator<<(std::ostream& out, String const& string) {
  return out << string.view();
}

std::ostream& operator<<(std::ostream& out, Name const& name) {
  return out << name.string();
}

}  // namespace Vek
