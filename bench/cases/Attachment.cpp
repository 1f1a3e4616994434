#include <string>

#include "runtime/model/EthPhyIntfStatus.h"

#include "bench/harness/Order.h"
#include "bench/harness/Subject.h"

// Case 2: a watcher is detached and attached again while so many are attached; a random one each
// time.

namespace Bench {

namespace {

constexpr std::size_t kTurns{1000};

class Watcher final : public Interface::EthPhyIntfStatus::NotifieeConst {
 public:
  Watcher() : NotifieeConst{overriddenBy<Watcher>()} {}
  void onRawLinkStatus() override {}

 private:
  ~Watcher() override = default;
};

struct Attached {
  explicit Attached(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      watchers.push_back(Vek::make<Watcher>());
      watchers.back()->notifierIs(status);
      watchers.back()->isRegisteredNotifieeIs(true);
    }
    auto const random = randomOrder(count);
    for (std::size_t i = 0; i < kTurns; ++i)
      order.push_back(watchers[random[i % count]].get());
  }

  Vek::Ptr<Interface::EthPhyIntfStatus> status{
      Vek::make<Interface::EthPhyIntfStatus>(Tarn::IntfId{"Ethernet1"})};
  std::vector<Vek::Ptr<Watcher>> watchers;
  std::vector<Watcher*> order;
};

}  // namespace

void addAttachment(Registry& registry) {
  for (std::size_t const watchers : {1U, 1000U, 100000U})
    registry.add("2/turn/" + std::to_string(watchers), [watchers] {
      return subject(kTurns, std::make_unique<Attached>(watchers), [](Attached& state) {
        for (Watcher* const watcher : state.order) {
          watcher->isRegisteredNotifieeIs(false);
          watcher->isRegisteredNotifieeIs(true);
        }
      });
    });
}

}  // namespace Bench
