#include "agent/Signals.h"

#include <cerrno>
#include <csignal>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace LinkFlapd {

namespace {

sigset_t signalsOfUse() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGINT);
  ::sigaddset(&signals, SIGTERM);
  ::sigaddset(&signals, SIGUSR1);
  return signals;
}

}  // namespace

Signals::Signals() {
  sigset_t const signals = signalsOfUse();
  ::signal(SIGPIPE, SIG_IGN);
  if (::sigprocmask(SIG_BLOCK, &signals, nullptr) < 0 ||
      (descriptor_ = ::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC)) < 0)
    throw std::system_error(errno, std::generic_category(), "cannot receive signals");
}

Signals::~Signals() {
  ::close(descriptor_);
}

std::optional<int> Signals::arrived() const {
  signalfd_siginfo signal{};
  if (::read(descriptor_, &signal, sizeof signal) != sizeof signal) return std::nullopt;
  return static_cast<int>(signal.ssi_signo);
}

std::string Signals::nameOf(int signal) {
  switch (signal) {
    case SIGINT:
      return "SIGINT";
    case SIGTERM:
      return "SIGTERM";
    default:
      return "SIGUSR1";
  }
}

}  // namespace LinkFlapd
