#include "tests/agent/support/Daemon.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr int kLongestSilence{20000};  // milliseconds; generous: a test that passes does not wait

}  // namespace

Daemon::Daemon(std::vector<std::string> const& arguments) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) < 0)
    throw std::system_error(errno, std::generic_category(), "pipe");
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string const& argument : arguments)
    argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    ::execvp(argv[0], argv.data());
    ::_exit(127);
  }
  ::close(ends[1]);
  pipe_ = ends[0];
}

Daemon::~Daemon() {
  ::close(pipe_);
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void Daemon::signal(int number) const {
  ::kill(process_, number);
}

void Daemon::freeze() const {
  ::kill(process_, SIGSTOP);
  int status = 0;
  ::waitpid(process_, &status, WUNTRACED);
}

std::string Daemon::waitFor(std::string const& text) {
  for (;;) {
    while (waitedFor_ < lines_.size()) {
      std::string const& line = lines_[waitedFor_++];
      if (line.find(text) != std::string::npos) return line;
    }
    if (!readMore()) return {};
  }
}

bool Daemon::waitForLines(std::string const& text, std::size_t count) {
  while (linesWith(text) < count)
    if (!readMore()) return false;
  return true;
}

std::size_t Daemon::linesWith(std::string const& text) const {
  return static_cast<std::size_t>(
      std::count_if(lines_.begin(), lines_.end(),
                    [&](auto const& line) { return line.find(text) != std::string::npos; }));
}

std::string Daemon::output() const {
  std::string all;
  for (std::string const& line : lines_)
    all += line + '\n';
  return all;
}

std::optional<int> Daemon::wait() {
  while (readMore()) {
  }
  if (!ended_) return std::nullopt;
  int status = 0;
  ::waitpid(process_, &status, 0);
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Waits for more to read; false when the program closed its output or nothing came in time.
bool Daemon::readMore() {
  pollfd wait{pipe_, POLLIN, 0};
  if (::poll(&wait, 1, kLongestSilence) <= 0) return false;
  std::array<char, 65536> buffer{};
  ssize_t const size = ::read(pipe_, buffer.data(), buffer.size());
  if (size <= 0) {
    ended_ = true;
    return false;
  }
  rest_.append(buffer.data(), static_cast<std::size_t>(size));
  std::size_t start = 0;
  for (std::size_t end; (end = rest_.find('\n', start)) != std::string::npos; start = end + 1)
    lines_.push_back(rest_.substr(start, end - start));
  rest_.erase(0, start);
  return true;
}
