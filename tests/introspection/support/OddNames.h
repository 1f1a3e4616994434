#pragma once

#include <string>
#include <vector>

namespace IntrospectionTest {

/// Texts that somebody might name an interface or a profile, and that a path or a message might
/// stumble over.
inline std::vector<std::string> oddNames() {
  using namespace std::string_literals;
  return {""s,
          " "s,
          "  two  blanks  "s,
          "Ethernet1/1"s,
          "/"s,
          "//"s,
          "."s,
          ".."s,
          "a[b]"s,
          "["s,
          "]"s,
          "]["s,
          "[\"x\"]"s,
          "\""s,
          "\"\""s,
          "my [old] \"profile\""s,
          "'"s,
          "\\"s,
          "\\\\"s,
          "\\\""s,
          "\\x41"s,
          "a\\"s,
          "tab\there"s,
          "line\nbreak\r\n"s,
          "\0"s,
          "a\0b"s,
          "\0\0\0"s,
          "\x01\x1f\x7f\x1b[31m"s,
          "Lücke-æøå-数"s,
          "\xff\xfe broken \x80"s,
          "null"s,
          "nullable"s,
          "true"s,
          "0"s,
          "-1"s,
          "0x5f00"s,
          "1.5e3"s,
          "root/linkFlapSm"s,
          "%s%n%d"s,
          "a,b;c=d&e|f<g>h"s,
          std::string(5000, 'x'),
          std::string(500, '"'),
          std::string(500, '\\')};
}

}  // namespace IntrospectionTest
