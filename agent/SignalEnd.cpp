#include "agent/SignalEnd.h"

#include <cerrno>
#include <csignal>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace LinkFlapd {

namespace {

sigset_t endingSignals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGINT);
  ::sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

SignalEnd::SignalEnd() {
  sigset_t const signals = endingSignals();
  ::signal(SIGPIPE, SIG_IGN);
  if (::sigprocmask(SIG_BLOCK, &signals, nullptr) < 0 ||
      (descriptor_ = ::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC)) < 0)
    throw std::system_error(errno, std::generic_category(), "cannot receive signals");
}

SignalEnd::~SignalEnd() {
  ::close(descriptor_);
}

std::optional<std::string> SignalEnd::arrived() const {
  signalfd_siginfo signal{};
  if (::read(descriptor_, &signal, sizeof signal) != sizeof signal) return std::nullopt;
  return signal.ssi_signo == SIGINT ? "SIGINT" : "SIGTERM";
}

}  // namespace LinkFlapd
