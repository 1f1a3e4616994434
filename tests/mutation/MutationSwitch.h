#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Mutation {

/// Which mutant of those built in is in force: the one of the number in LINKFLAP_MUTANT, else none.
/// Where LINKFLAP_MUTANTS_REACHED names a file, the byte of every mutant whose place is reached is
/// set there; the file is shared, so that it tells also what a child did that was ended.
class Switch {
 public:
  Switch() noexcept {
    if (char const* const number = std::getenv("LINKFLAP_MUTANT"))
      active_ = std::strtoul(number, nullptr, 10);
    char const* const path = std::getenv("LINKFLAP_MUTANTS_REACHED");
    if (path == nullptr) return;
    int const file = open(path, O_RDWR);
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0) std::abort();
    size_ = static_cast<unsigned long>(status.st_size);
    void* const map = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (map == MAP_FAILED) std::abort();
    close(file);
    reached_ = static_cast<unsigned char*>(map);
  }

  bool on(unsigned long number) const noexcept {
    if (reached_ != nullptr && number < size_) reached_[number] = 1;
    return number == active_;
  }
  unsigned char* reached() const noexcept { return reached_; }
  unsigned long size() const noexcept { return size_; }

  static Switch const& instance() noexcept {
    static Switch const it;
    return it;
  }

 private:
  unsigned long active_{0};
  unsigned char* reached_{nullptr};
  unsigned long size_{0};
};

inline bool on(unsigned long number) noexcept {
  return Switch::instance().on(number);
}

}  // namespace Mutation
