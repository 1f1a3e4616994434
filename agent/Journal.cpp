#include "agent/Journal.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <ostream>

namespace LinkFlapd {

void Journal::line(std::string const& text) {
  out_ << stamp(std::chrono::system_clock::now()) << ' ' << text << std::endl;
}

std::string Journal::stamp(Time time) {
  using namespace std::chrono;
  auto const whole = floor<seconds>(time);
  auto const fraction = static_cast<int>(duration_cast<milliseconds>(time - whole).count());
  std::time_t const calendar = system_clock::to_time_t(whole);
  std::tm local{};
  ::localtime_r(&calendar, &local);
  std::array<char, 32> date{};
  std::array<char, 48> text{};
  std::strftime(date.data(), date.size(), "%Y-%m-%d %H:%M:%S", &local);
  std::snprintf(text.data(), text.size(), "%s.%03d", date.data(), fraction);
  return text.data();
}

}  // namespace LinkFlapd
