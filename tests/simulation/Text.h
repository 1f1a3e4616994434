#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace Simulation {

inline std::string number(std::uint32_t value) {
  return std::to_string(value);
}

/// As a stream of precision 12 writes it.
inline std::string number(double value) {
  char text[40];
  (void)std::snprintf(text, sizeof text, "%.12g", value);
  return text;
}

/// Whether writing `b` over `a` is no change; what is not a number equals itself here.
inline bool sameNumber(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

}  // namespace Simulation
