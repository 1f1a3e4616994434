#include <benchmark/benchmark.h>
#include <string>
#include <unordered_map>

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/Collection.h"

#include "bench/harness/Order.h"
#include "bench/harness/Subject.h"
#include "bench/peers/Limits.h"

// Case 12: a collection from interface identifiers to times. Keys come in random order; both sides
// have the same keys, whose hashes are known.

namespace Bench {

namespace {

using Key = Tarn::IntfId;

class Ours {
 public:
  void insert(Key const& key, double value) { members_.newMember(Vek::make<Member>(key, value)); }
  void erase(Key const& key) { members_.deleteMember(key); }
  double at(Key const& key) const { return members_.find(key)->value(); }
  double sum() const {
    double all = 0;
    for (Member const& member : members_)
      all += member.value();
    return all;
  }

 private:
  using Member = Vek::CollectionMember<Key, double>;
  Vek::HashMap<Member, Key> members_;
};

class Standard {
 public:
  void insert(Key const& key, double value) { members_.emplace(key, value); }
  void erase(Key const& key) { members_.erase(key); }
  double at(Key const& key) const { return members_.find(key)->second; }
  double sum() const {
    double all = 0;
    for (auto const& [key, value] : members_)
      all += value;
    return all;
  }

 private:
  std::unordered_map<Key, double> members_;
};

template <typename Map>
struct Filled {
  explicit Filled(std::size_t size) {
    for (std::uint32_t const index : randomOrder(size))
      keys.emplace_back(interfaceName(index).c_str());
  }
  void fill() {
    double value = 0;
    for (Key const& key : keys)
      map->insert(key, ++value);
  }
  void empty() { map = std::make_unique<Map>(); }

  std::vector<Key> keys;
  std::unique_ptr<Map> map{std::make_unique<Map>()};
};

template <typename Map, typename Run, typename Prepare>
std::unique_ptr<Subject> onMap(std::size_t size, bool full, Run run, Prepare prepare) {
  auto state = std::make_unique<Filled<Map>>(size);
  if (full) state->fill();
  return subject(size, std::move(state), run, prepare);
}

template <typename Map>
void add(Registry& registry, std::string const& side) {
  using State = Filled<Map>;
  auto const nothing = [](State&) {};
  for (std::size_t const size : {64U, 4096U, 100000U}) {
    std::string const name = '-' + std::to_string(size) + '/' + side;
    registry.add("12/look-up" + name, [=] {
      return onMap<Map>(
          size, true,
          [](State& state) {
            double all = 0;
            for (Key const& key : state.keys)
              all += state.map->at(key);
            benchmark::DoNotOptimize(all);
          },
          nothing);
    });
    registry.add("12/walk" + name, [=] {
      return onMap<Map>(
          size, true, [](State& state) { benchmark::DoNotOptimize(state.map->sum()); }, nothing);
    });
    registry.add("12/insert" + name, [=] {
      return onMap<Map>(
          size, false, [](State& state) { state.fill(); }, [](State& state) { state.empty(); });
    });
    registry.add("12/erase" + name, [=] {
      return onMap<Map>(
          size, false,
          [](State& state) {
            for (Key const& key : state.keys)
              state.map->erase(key);
          },
          [](State& state) {
            state.empty();
            state.fill();
          });
    });
  }
}

}  // namespace

void addCollections(Registry& registry) {
  add<Ours>(registry, "ours");
  add<Standard>(registry, "unordered_map");
}

}  // namespace Bench
