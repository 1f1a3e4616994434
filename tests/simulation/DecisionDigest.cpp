#include <bit>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/simulation/Random.h"

// A digest of very many decisions, which has to be the same whatever built the library. It needs the
// library alone; its numbers are made of integers, so nothing but the library's own arithmetic can
// make a difference. usage: decision-digest DECISIONS [SEED] [--planted]

namespace {

using Simulation::Digest;
using Simulation::Random;

constexpr double kNan{std::numeric_limits<double>::quiet_NaN()};
constexpr double kInfinity{std::numeric_limits<double>::infinity()};
constexpr int kInterfaces{8};
constexpr int kProfiles{3};

class Decisions {
 public:
  Decisions(std::uint64_t seed, bool planted) : random_{seed}, planted_{planted} {
    for (int p = 0; p < kProfiles; ++p)
      profiles_.push_back(config_->newProfileConfig(("p" + std::to_string(p)).c_str()));
    newValues();
    for (auto const& profile : profiles_)
      config_->defaultProfileListIs(profile->name().string(), true);
    for (int i = 0; i < kInterfaces; ++i) {
      ids_.emplace_back(("Ethernet" + std::to_string(i)).c_str());
      configDir_->intfConfigIs(ids_.back(), Vek::make<Interface::EthPhyIntfConfig>(ids_.back()));
      status_.push_back(statusDir_->newIntfStatus(ids_.back()));
    }
    root_->linkFlapSmIs(activity_, configDir_, statusDir_, errdisableConfig_, config_, causeStatus_,
                        "link-flap");
  }

  std::uint64_t run(std::uint64_t decisions) {
    while (decisions_ < decisions) {
      if (random_.oneIn(2048)) newValues();
      advance();
      auto const which = static_cast<std::size_t>(random_.below(kInterfaces));
      if (random_.oneIn(4)) {
        evaluate(which);
      } else {
        flap(which);
      }
    }
    return digest_.value();
  }
  std::uint64_t recorded() const { return recorded_; }
  std::uint64_t made() const { return decisions_; }

 private:
  static std::uint64_t bits(double value) { return std::bit_cast<std::uint64_t>(value); }

  /// 0 to 1, with all the fraction a double can have.
  double fraction() { return static_cast<double>(random_.next() >> 11U) / 9007199254740992.0; }

  double interval() {
    if (random_.oneIn(12))
      return random_.of(std::array{0.0, 0.5, -3.0, 4294967301.9, 1e18, 1e30, kInfinity, kNan});
    return 1 + 20 * fraction();
  }

  void newValues() {
    config_->maxFlapsIs(random_.below(6));
    config_->intervalIs(interval());
    for (auto const& profile : profiles_) {
      profile->maxFlapsIs(random_.oneIn(16) ? 4294967295U : random_.below(5));
      profile->intervalIs(interval());
      profile->violationsIs(1 + random_.below(3));
      profile->trackedIntervalsIs(random_.oneIn(16) ? 50000 : 1 + random_.below(4));
    }
  }

  void advance() {
    double time = clock_.seconds();
    switch (random_.below(8)) {
      case 0:
        break;
      case 1:
        time += static_cast<double>(random_.below(2000)) / 1000;
        break;
      case 2:
        time = static_cast<double>(static_cast<std::uint64_t>(time)) + 1;
        break;
      case 3:
        time += 0.1 + 0.2;
        break;
      default:
        time += fraction() * 1.5;
    }
    if (random_.oneIn(100000)) time += 365.0 * 86400;
    // A planted difference: one that a machine with more precise registers might make.
    if (planted_ && random_.oneIn(1000000)) time += time * 4e-16;
    clock_.secondsIs(time);
    clock_.stepIs(random_.oneIn(2) ? 0 : fraction() / 8);
  }

  void flap(std::size_t which) {
    status_[which]->rawLinkStatusIs(Interface::RawLinkStatus::down);
    status_[which]->rawLinkStatusIs(Interface::RawLinkStatus::up);
    auto const* const intfSm = root_->linkFlapSm()->linkFlapIntfSm().find(ids_[which]);
    for (auto const& sm : intfSm->linkFlapProfileSm()) {
      ++decisions_;
      add(sm);
    }
    double const* const record = causeStatus_->intfStatus().find(ids_[which]);
    digest_.add(record == nullptr ? 0 : bits(*record));
    if (record == nullptr) return;
    ++recorded_;
    if (random_.oneIn(2)) causeStatus_->intfStatusDel(ids_[which]);
  }

  /// A decision on numbers that `handleLinkStatus` would not give: intervals with fractions, ages
  /// that are negative, huge or no number.
  void evaluate(std::size_t which) {
    auto const* const intfSm = root_->linkFlapSm()->linkFlapIntfSm().find(ids_[which]);
    auto sm = intfSm->linkFlapProfileSm(random_.oneIn(2) ? "p0" : "p1");
    double const first = random_.oneIn(32) ? random_.of(std::array{kNan, kInfinity, -1e300, 1e19})
                                           : clock_.seconds();
    double const time = random_.oneIn(32)
                            ? random_.of(std::array{kNan, -kInfinity, 1e300, 2e19, -5.0})
                            : first + 64 * fraction();
    // Drawn one by one: the order in which a call's arguments are computed is the compiler's.
    std::uint32_t const maxFlaps = random_.below(4);
    double const length = 0.25 + 8 * fraction();
    std::uint32_t const violations = 1 + random_.below(2);
    std::uint32_t const tracked = random_.below(5);
    bool const disabled =
        LinkFlap::evaluateErrDisable(sm, time, first, maxFlaps, length, violations, tracked);
    ++decisions_;
    digest_.add(disabled ? 1 : 2);
    add(*sm);
  }

  void add(LinkFlap::LinkFlapProfileSm const& sm) {
    digest_.add(sm.curFlaps());
    digest_.add(sm.curIntervals());
    digest_.add(sm.curViolations());
    auto const& queue = sm.linkFlapTimeStamp();
    digest_.add(queue.count());
    digest_.add(sm.linkFlapTimeStampMetadata().headIndex);
    digest_.add(sm.linkFlapTimeStampMetadata().nextIndex);
    if (queue.count() == 0) return;
    digest_.add(bits(queue.head()->time()));
    digest_.add(bits(queue.tail()->time()));
  }

  Random random_;
  bool planted_;
  Digest digest_;
  std::uint64_t decisions_{0};
  std::uint64_t recorded_{0};
  Vek::ManualClock clock_;
  Vek::Ptr<Vek::ActivityConfig> activity_{Vek::make<Vek::ActivityConfig>()};
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir_{
      Vek::make<Interface::AllEthPhyIntfConfigDir>()};
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir_{
      Vek::make<Interface::AllEthPhyIntfStatusDir>()};
  Vek::Ptr<Errdisable::Config> errdisableConfig_{Vek::make<Errdisable::Config>()};
  Vek::Ptr<LinkFlap::Config> config_{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_{Vek::make<Errdisable::CauseStatus>()};
  LinkFlap::Root::Ptr root_{LinkFlap::rootFactory(Vek::Name{"digest"})};
  std::vector<Vek::Ptr<LinkFlap::ProfileConfig>> profiles_;
  std::vector<Tarn::IntfId> ids_;
  std::vector<Vek::Ptr<Interface::EthPhyIntfStatus>> status_;
};

}  // namespace

int main(int argc, char** argv) {
  bool const planted = argc > 1 && std::strcmp(argv[argc - 1], "--planted") == 0;
  if (planted) --argc;
  std::uint64_t decisions = 0;
  std::uint64_t seed = 1;
  auto const read = [](char const* text, std::uint64_t& number) {
    char const* const end = text + std::strlen(text);
    auto const result = std::from_chars(text, end, number);
    return result.ec == std::errc{} && result.ptr == end;
  };
  bool const understood = (argc == 2 || argc == 3) && read(argv[1], decisions) && decisions > 0 &&
                          (argc == 2 || read(argv[2], seed));
  if (!understood) {
    std::fputs("usage: decision-digest DECISIONS [SEED] [--planted]\n", stderr);
    return 2;
  }
  Decisions run{seed, planted};
  std::uint64_t const digest = run.run(decisions);
  std::printf("%llu decisions, %llu found err-disabled, digest %016llx\n",
              static_cast<unsigned long long>(run.made()),
              static_cast<unsigned long long>(run.recorded()),
              static_cast<unsigned long long>(digest));
  return 0;
}
