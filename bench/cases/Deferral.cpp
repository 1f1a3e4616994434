#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <string>

#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/vek/Activity.h"
#include "runtime/vek/Reactor.h"

#include "bench/harness/Subject.h"

// Case 15: 64 watchers are notified, whose handlers wait for the event loop; then all handlers run.
// Once more with what comes before: 64 attributes change, and each has a watcher.

namespace Bench {

namespace {

constexpr std::size_t kPending{64};

struct Owner {
  void handle(Tarn::IntfId /*id*/) { ++handled; }
  std::size_t handled{0};
};

class Waiting final : public Vek::ActivityReactor<Waiting, Owner, Errdisable::CauseStatus> {
 public:
  using ActivityReactor::ActivityReactor;
  void onIntfStatus(Tarn::IntfId id) override {
    react(Errdisable::CauseStatus::intfStatusAttr, id, &Owner::handle);
  }

 private:
  ~Waiting() override = default;
};

struct Ours {
  Ours() {
    activity->deferredIs(true);
    for (std::size_t i = 0; i < kPending; ++i) {
      objects.push_back(Vek::make<Errdisable::CauseStatus>());
      objects.back()->intfStatusIs(id, 0);
      reactors.push_back(Vek::make<Waiting>(activity, objects.back(), &owner));
    }
  }

  Tarn::IntfId id{"Ethernet1"};
  Owner owner;
  double time{0};
  Vek::Ptr<Vek::ActivityConfig> activity{Vek::make<Vek::ActivityConfig>()};
  Vek::Ptr<Vek::ActivitySm> loop{Vek::vekActivitySmFor(activity)};
  std::vector<Vek::Ptr<Errdisable::CauseStatus>> objects;
  std::vector<Vek::Ptr<Waiting>> reactors;
};

/// `SingleThreaded`: that one thread alone uses the context is told to it.
template <bool SingleThreaded>
struct Asio {
  asio::io_context context{SingleThreaded ? 1 : ASIO_CONCURRENCY_HINT_DEFAULT};
  Owner owner;
};

template <bool SingleThreaded>
std::unique_ptr<Subject> posts() {
  using State = Asio<SingleThreaded>;
  return subject(kPending, std::make_unique<State>(), [](State& state) {
    for (std::size_t i = 0; i < kPending; ++i)
      asio::post(state.context, [&owner = state.owner] { ++owner.handled; });
    state.context.restart();
    state.context.poll();
  });
}

}  // namespace

void addDeferral(Registry& registry) {
  registry.add("15/deferred/ours", [] {
    return subject(kPending, std::make_unique<Ours>(), [](Ours& state) {
      for (auto const& reactor : state.reactors)
        reactor->onIntfStatus(state.id);
      state.loop->deliver();
    });
  });
  registry.add("15/changes/ours", [] {
    return subject(kPending, std::make_unique<Ours>(), [](Ours& state) {
      ++state.time;
      for (auto const& object : state.objects)
        object->intfStatusIs(state.id, state.time);
      state.loop->deliver();
    });
  });
  for (std::string const row : {"15/deferred/", "15/changes/"}) {
    registry.add(row + "asio", posts<false>);
    registry.add(row + "asio-single", posts<true>);
  }
}

}  // namespace Bench
