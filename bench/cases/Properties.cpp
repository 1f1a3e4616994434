#include <QObject>
#include <QVariant>
#include <benchmark/benchmark.h>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/GenericIf.h"

#include "bench/harness/Subject.h"

// Case 17: an attribute is set and read by its name; by its identifier, looked up once; directly.

namespace Bench {

/// The same attribute as a property of Qt's; nobody listens to either.
class QtConfig final : public QObject {
  Q_OBJECT
  Q_PROPERTY(unsigned maxFlaps READ maxFlaps WRITE maxFlapsIs NOTIFY maxFlapsChanged)

 public:
  unsigned maxFlaps() const { return maxFlaps_; }
  void maxFlapsIs(unsigned flaps) {
    if (maxFlaps_ == flaps) return;
    maxFlaps_ = flaps;
    emit maxFlapsChanged();
  }

 signals:
  void maxFlapsChanged();

 private:
  unsigned maxFlaps_{5};
};

namespace {

constexpr unsigned kTurns{1000};

using Vek::GenericIf;

struct Ours {
  Vek::Ptr<LinkFlap::Config> config{Vek::make<LinkFlap::Config>()};
  std::unique_ptr<GenericIf> view{Vek::genericIfOf(config, false)};
  Vek::AttributeId id{view->attributeId("maxFlaps")};

  void set(Vek::AttributeId attribute, unsigned flaps) {
    Vek::Value result;
    view->attributeOp({attribute, GenericIf::OpCode::set, {}}, {Vek::Value{flaps}}, result);
  }
  unsigned get(Vek::AttributeId attribute) {
    Vek::Value result;
    view->attributeOp({attribute, GenericIf::OpCode::get, {}}, {}, result);
    return result.as<unsigned>();
  }
};

template <typename State, typename Turn>
void add(Registry& registry, char const* name, Turn turn) {
  registry.add(name, [turn] {
    return subject(kTurns, std::make_unique<State>(), [turn](State& state) {
      for (unsigned i = 0; i < kTurns; ++i)
        turn(state, i);
    });
  });
}

}  // namespace

void addProperties(Registry& registry) {
  add<Ours>(registry, "17/set-by-name/ours",
            [](Ours& state, unsigned i) { state.set(state.view->attributeId("maxFlaps"), i); });
  add<QtConfig>(registry, "17/set-by-name/qt",
                [](QtConfig& config, unsigned i) { config.setProperty("maxFlaps", i); });
  add<Ours>(registry, "17/get-by-name/ours", [](Ours& state, unsigned) {
    benchmark::DoNotOptimize(state.get(state.view->attributeId("maxFlaps")));
  });
  add<QtConfig>(registry, "17/get-by-name/qt", [](QtConfig& config, unsigned) {
    benchmark::DoNotOptimize(config.property("maxFlaps").toUInt());
  });
  add<Ours>(registry, "17/set-by-id/ours", [](Ours& state, unsigned i) { state.set(state.id, i); });
  add<Ours>(registry, "17/set-by-id/direct",
            [](Ours& state, unsigned i) { state.config->maxFlapsIs(i); });
  add<Ours>(registry, "17/get-by-id/ours",
            [](Ours& state, unsigned) { benchmark::DoNotOptimize(state.get(state.id)); });
  add<Ours>(registry, "17/get-by-id/direct", [](Ours& state, unsigned) {
    benchmark::DoNotOptimize(state.config->maxFlaps());
    benchmark::ClobberMemory();
  });
}

}  // namespace Bench

#include "Properties.moc"
