#include <string>

#include "runtime/model/EthPhyIntfStatus.h"

#include "bench/cases/LinkWatcher.h"
#include "bench/harness/Subject.h"
#include "bench/peers/BoostSignals.h"
#include "bench/peers/SigcSignals.h"
#include "bench/peers/SignalObjects.h"

// Case 1: one change told to 1 watcher; to 1,000. Each watcher counts what it is told.

namespace Bench {

namespace {

constexpr std::size_t kChanges{1000};

/// Changes the value `changes` times.
template <typename Change>
void alternate(std::size_t changes, Change change) {
  for (std::size_t i = 0; i < changes; ++i)
    change(i % 2 == 0 ? Link::up : Link::down);
}

class OurWatcher final : public Interface::EthPhyIntfStatus::NotifieeConst {
 public:
  OurWatcher() : NotifieeConst{overriddenBy<OurWatcher>()} {}
  void onRawLinkStatus() override { ++told_; }

 private:
  ~OurWatcher() override = default;
  std::size_t told_{0};
};

struct Ours {
  explicit Ours(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      watchers.push_back(Vek::make<OurWatcher>());
      watchers.back()->notifierIs(status);
      watchers.back()->isRegisteredNotifieeIs(true);
    }
  }
  void linkIs(Link link) { status->rawLinkStatusIs(static_cast<Interface::RawLinkStatus>(link)); }

  Vek::Ptr<Interface::EthPhyIntfStatus> status{
      Vek::make<Interface::EthPhyIntfStatus>(Tarn::IntfId{"Ethernet1"})};
  std::vector<Vek::Ptr<OurWatcher>> watchers;
};

/// The least that tells anybody anything: not safe when a watcher comes or goes meanwhile.
struct Vector {
  explicit Vector(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      owned.push_back(newCountingWatcher());
      watchers.push_back(owned.back().get());
    }
  }
  void linkIs(Link link) {
    if (held == link) return;
    held = link;
    for (LinkWatcher* const watcher : watchers)
      watcher->onLink();
  }

  Link held{Link::unknown};
  std::vector<LinkWatcher*> watchers;
  std::vector<std::unique_ptr<LinkWatcher>> owned;
};

template <typename Signals>
struct OnSignals {
  class Receiver final : public Signals::Receiver {
   public:
    void onLink() { ++told_; }

   private:
    std::size_t told_{0};
  };

  explicit OnSignals(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      receivers.push_back(std::make_unique<Receiver>());
      Signals::connect(link.changed, *receivers.back(), &Receiver::onLink);
    }
  }
  void linkIs(Link value) { link.is(value); }

  Attribute<Signals, Link> link{Link::unknown};
  std::vector<std::unique_ptr<Receiver>> receivers;
};

template <typename Side>
void add(Registry& registry, std::string const& side) {
  for (std::size_t const watchers : {1U, 1000U}) {
    std::size_t const changes = kChanges / watchers + 10;
    registry.add("1/" + std::to_string(watchers) + '/' + side, [watchers, changes] {
      return subject(changes, std::make_unique<Side>(watchers), [changes](Side& state) {
        alternate(changes, [&](Link link) { state.linkIs(link); });
      });
    });
  }
}

}  // namespace

void addNotification(Registry& registry) {
  add<Ours>(registry, "ours");
  add<Vector>(registry, "vector");
  add<OnSignals<SigcSignals>>(registry, "sigc");
  add<OnSignals<BoostSignals>>(registry, "boost");
  add<OnSignals<UnlockedBoostSignals>>(registry, "boost-unlocked");
}

}  // namespace Bench
