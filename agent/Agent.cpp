#include "agent/Agent.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ostream>
#include <poll.h>
#include <system_error>

#include "runtime/vek/ObjectPath.h"

#include "statemachines/LinkFlapSm.h"

#include "agent/TreeDump.h"

namespace LinkFlapd {

namespace {

/// Reads from the kernel before signals are looked at again.
constexpr int kReadsAtATime{64};
/// Until a dump is requested again that found no room.
constexpr int kRetryMilliseconds{20};

void write(std::ostream& out, Vek::TraceRecord const& record) {
  out << record.facility << ' ' << record.level << ' ' << record.source << ':' << record.line << ' '
      << record.function << ": " << record.message << std::endl;
}

}  // namespace

Agent::Agent(Options const& options, std::ostream& events, std::ostream& trace)
    : options_{options},
      events_{events},
      journal_{events},
      config_{Vek::make<LinkFlap::Config>()},
      errdisableConfig_{Vek::make<Errdisable::Config>()},
      causeStatus_{Vek::make<Errdisable::CauseStatus>()},
      trace_{options.traceLevel,
             [&trace](Vek::TraceRecord const& record) { write(trace, record); }},
      monitor_{InterfaceFilter{options.patterns}, publisher_},
      reporter_{journal_},
      feed_{monitor_},
      socket_{options.receiveBuffer},
      activity_{Vek::make<Vek::ActivityConfig>()} {
  if (options_.enforce) KernelPortSwitch::checkPermission();
  config_->maxFlapsIs(options_.maxFlaps);
  config_->intervalIs(options_.interval);
  control_.emplace(causeStatus_, config_,
                   PortControl::Surroundings{monitor_, trace_, journal_,
                                             options_.enforce ? &portSwitch_ : nullptr});
  // Order: what happened is told before what is done about it.
  monitor_.listenerAdd(reporter_);
  monitor_.listenerAdd(*control_);
  root_ = LinkFlap::rootFactory(Vek::Name{"linkflapd"});
  root_->linkFlapSmIs(activity_, publisher_.configDir(), publisher_.statusDir(), errdisableConfig_,
                      config_, causeStatus_, "link-flap");
  auto& roots = Vek::PathRoots::global();
  for (auto const& [name, object] : tree())
    roots.rootIs(name, object);
}

std::map<std::string, Vek::Ptr<Vek::PtrInterface const>> Agent::tree() const {
  return {{"linkflapd", root_},
          {"activity", activity_},
          {"causeStatus", causeStatus_},
          {"config", config_},
          {"errdisableConfig", errdisableConfig_},
          {"ethPhyIntfConfigDir", publisher_.configDir()},
          {"ethPhyIntfStatusDir", publisher_.statusDir()}};
}

Agent::~Agent() {
  auto& roots = Vek::PathRoots::global();
  for (auto const& [name, object] : tree())
    roots.rootDel(name);
  root_->linkFlapSmDel();
}

void Agent::run() {
  journal_.line(
      std::string{"linkflapd "} + LINKFLAPD_VERSION + ": more than " +
      std::to_string(options_.maxFlaps) + " flaps in an interval of " +
      std::to_string(static_cast<unsigned>(options_.interval)) + " s err-disable a port, " +
      (options_.enforce ? "which is shut (--enforce)" : "which is left up (--monitor-only)"));
  requestDump();
  for (;;) {
    std::array<pollfd, 2> waits{
        {{signals_.descriptor(), POLLIN, 0}, {socket_.descriptor(), POLLIN, 0}}};
    int const ready =
        ::poll(waits.data(), waits.size(), feed_.dumpWanted() ? kRetryMilliseconds : -1);
    if (ready < 0 && errno != EINTR)
      throw std::system_error(errno, std::generic_category(), "cannot wait for messages");
    if (auto const signal = signals_.arrived()) {
      if (*signal != SIGUSR1) {
        end(Signals::nameOf(*signal));
        return;
      }
      dumpTree(events_, options_.dumpFormat);
    }
    readKernel();
  }
}

/// Order: a dump is requested only when nothing waits to be read, so that it finds room and what
/// it says is newer than what was read before.
void Agent::readKernel() {
  for (int reads = 0; reads < kReadsAtATime; ++reads) {
    switch (socket_.receive()) {
      case NetlinkSocket::Received::messages:
        feed_.received(socket_.data(), socket_.size());
        break;
      case NetlinkSocket::Received::overrun:
        if (feed_.inSync()) journal_.line("link messages were lost; listing all links to catch up");
        feed_.overrun();
        break;
      case NetlinkSocket::Received::nothing:
        if (feed_.dumpWanted()) requestDump();
        if (feed_.inSync() && !ready_) inSync();
        return;
    }
  }
}

void Agent::requestDump() {
  if (auto const sequence = socket_.requestDump()) feed_.dumpRequested(*sequence, socket_.portId());
}

void Agent::inSync() {
  ready_ = true;
  for (std::string const& pattern : options_.patterns)
    if (!monitor_.watchesAny(pattern))
      journal_.line("no Ethernet interface matches '" + pattern + "' yet");
  journal_.line("ready: " + std::to_string(monitor_.size()) +
                (monitor_.size() == 1 ? " port" : " ports") + " watched");
}

void Agent::end(std::string const& signal) {
  std::string names;
  for (std::string const& name : control_->shutPorts())
    names += ' ' + name;
  journal_.line(signal + ": ending; ports stay as they are; " +
                (names.empty() ? "none is shut by linkflapd" : "shut by linkflapd:" + names));
}

}  // namespace LinkFlapd
