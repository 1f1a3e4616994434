#include "tests/reliability/support/StandardError.h"

#include <cstdlib>

StandardError::StandardError() : before_{stderr} {
  cookie_io_functions_t functions{};
  functions.write = &StandardError::write;
  stream_ = fopencookie(this, "w", functions);
  if (stream_ == nullptr) std::abort();
  std::setvbuf(stream_, nullptr, _IONBF, 0);
  stderr = stream_;
}

StandardError::~StandardError() {
  stderr = before_;
  std::fclose(stream_);
}

ssize_t StandardError::write(void* self, char const* text, std::size_t size) {
  auto& error = *static_cast<StandardError*>(self);
  for (std::size_t i = 0; i < size; ++i) {
    if (error.length_ < sizeof error.line_) error.line_[error.length_++] = text[i];
    if (text[i] == '\n') error.lineEnds();
  }
  return static_cast<ssize_t>(size);
}

void StandardError::lineEnds() noexcept {
  std::string_view const line{line_, length_};
  length_ = 0;
  if (line.starts_with(kShortReport)) {
    ++shortReports_;
  } else if (line.starts_with(kLostTrace)) {
    ++lostTraces_;
  } else {
    std::fwrite(line.data(), 1, line.size(), before_);
  }
}
