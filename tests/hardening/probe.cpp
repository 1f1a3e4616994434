// A small program for the planted faults: something for each kind of hardening to work on.

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

[[gnu::format(printf, 1, 2)]] void say(char const* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
}

void line(char const* text, std::size_t size) {
  char buffer[64];
  std::memcpy(buffer, text, size);
  buffer[size < sizeof buffer ? size : 0] = '\0';
  say("%s of %zu\n", buffer, size);
}

}  // namespace

int main(int count, char** words) {
  for (int i = 0; i < count; ++i)
    line(words[i], std::strlen(words[i]));
}
