#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <valgrind/callgrind.h>

#include "agent/InterfaceFilter.h"
#include "agent/LinkFeed.h"
#include "agent/LinkMonitor.h"
#include "agent/NetlinkSocket.h"
#include "agent/PortPublisher.h"

#include "bench/netlink/Link.h"
#include "bench/netlink/PlainLoop.h"

// Case 16: link messages of this kernel: taken from the socket, parsed, settled into the table of
// ports and published. No state machine is attached: what a flap costs there is another case.
//
//   linkflap_bench_netlink ROUNDS    in a network namespace of its own, which has a pair of links
//                                    named near and far
//
// Prints for each round "SIDE NANOSECONDS", of one message, for both sides; then "burst N M", when a
// burst of N messages came through without a loss, else "lost N M"; M is what the buffer promises.

namespace {

using namespace Bench;
using namespace LinkFlapd;

/// What the kernel charges to the receive buffer for a link message.
constexpr int kCharge{2304};

class OurLoop {
 public:
  OurLoop() {
    // The replies of the first dump bring the links into the table.
    if (auto const sequence = socket_.requestDump())
      feed_.dumpRequested(*sequence, socket_.portId());
    drain();
    if (!feed_.inSync() || monitor_.size() == 0) throw std::runtime_error{"no links listed"};
  }

  /// Whether nothing was lost.
  bool drain() {
    for (;;) {
      switch (socket_.receive()) {
        case NetlinkSocket::Received::messages:
          feed_.received(socket_.data(), socket_.size());
          break;
        case NetlinkSocket::Received::overrun:
          return false;
        case NetlinkSocket::Received::nothing:
          return true;
      }
    }
  }

  int receiveBuffer() const {
    int size = 0;
    socklen_t length = sizeof size;
    ::getsockopt(socket_.descriptor(), SOL_SOCKET, SO_RCVBUF, &size, &length);
    return size;
  }

 private:
  PortPublisher publisher_;
  LinkMonitor monitor_{InterfaceFilter{{"near", "far"}}, publisher_};
  LinkFeed feed_{monitor_};
  NetlinkSocket socket_;
};

template <typename Drain>
double measured(char const* side, Drain drain) {
  auto const start = std::chrono::steady_clock::now();
  CALLGRIND_START_INSTRUMENTATION;
  drain();
  CALLGRIND_STOP_INSTRUMENTATION;
  CALLGRIND_DUMP_STATS_AT(side);
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

void toggle(Link& far, std::size_t times) {
  for (std::size_t i = 0; i < times; ++i) {
    far.upIs(false);
    far.upIs(true);
  }
}

/// As many messages as the receive buffer promises room for, at once; the plain loop counts them.
void burst(OurLoop& ours, PlainLoop& plain, Link& far) {
  constexpr std::size_t kAtOnce{4};  // at most, of one switching
  auto const promised = static_cast<std::size_t>(ours.receiveBuffer() / kCharge);
  std::size_t messages = 0;
  for (bool up = false; messages + kAtOnce <= promised; up = !up) {
    far.upIs(up);
    messages += plain.drain();
  }
  std::printf("%s %zu %zu\n", ours.drain() ? "burst" : "lost", messages, promised);
}

void run(unsigned rounds) {
  OurLoop ours;
  PlainLoop plain{ours.receiveBuffer()};
  Link far{"far"};
  toggle(far, 8);
  ours.drain();
  std::size_t const perToggle = (plain.drain() + 7) / 8;
  std::size_t const toggles =
      static_cast<std::size_t>(ours.receiveBuffer() / kCharge) / (2 * perToggle);

  for (unsigned round = 0; round < rounds; ++round) {
    toggle(far, toggles);
    std::size_t messages = 0;
    bool whole = true;
    double oursNs = 0;
    auto const drainOurs = [&] { oursNs = measured("ours", [&] { whole = ours.drain(); }); };
    if (round % 2 == 0) drainOurs();
    double const plainNs = measured("libmnl", [&] { messages = plain.drain(); });
    if (round % 2 != 0) drainOurs();
    if (!whole) throw std::runtime_error{"messages were lost"};
    std::printf("messages %zu\nours %.1f\nlibmnl %.1f\n", messages,
                oursNs / static_cast<double>(messages), plainNs / static_cast<double>(messages));
  }

  burst(ours, plain, far);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    run(argc > 1 ? static_cast<unsigned>(std::stoul(argv[1])) : 10);
    return 0;
  } catch (std::exception const& failure) {
    std::fprintf(stderr, "linkflap_bench_netlink: %s\n", failure.what());
    return 1;
  }
}
