#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Bench {

/// One thing to be measured: some operations of one side (ours or a peer), as one batch.
class Subject {
 public:
  Subject() = default;
  Subject(Subject const&) = delete;
  Subject& operator=(Subject const&) = delete;
  virtual ~Subject() = default;

  /// Not measured: brings everything to where the batch starts.
  virtual void prepare() {}
  /// Measured: the batch. A loop of calls that the compiler sees, not one virtual call for each.
  virtual void run() = 0;
  /// How many operations one batch is.
  virtual std::size_t operations() const = 0;
};

/// A subject from its parts; `State` is held and handed to both.
template <typename State, typename Run, typename Prepare>
class SubjectOf final : public Subject {
 public:
  SubjectOf(std::size_t operations, std::unique_ptr<State> state, Run run, Prepare prepare)
      : operations_{operations},
        state_{std::move(state)},
        run_{std::move(run)},
        prepare_{std::move(prepare)} {}

  void prepare() override { prepare_(*state_); }
  void run() override { run_(*state_); }
  std::size_t operations() const override { return operations_; }

 private:
  std::size_t operations_;
  std::unique_ptr<State> state_;
  Run run_;
  Prepare prepare_;
};

/// `prepare(state)` and `run(state)` on a state of its own.
template <typename State, typename Run, typename Prepare>
std::unique_ptr<Subject> subject(std::size_t operations, std::unique_ptr<State> state, Run run,
                                 Prepare prepare) {
  return std::make_unique<SubjectOf<State, Run, Prepare>>(operations, std::move(state),
                                                          std::move(run), std::move(prepare));
}
template <typename State, typename Run>
std::unique_ptr<Subject> subject(std::size_t operations, std::unique_ptr<State> state, Run run) {
  return subject(operations, std::move(state), std::move(run), [](State&) {});
}

/// Every subject by its name, CASE/ROW/SIDE; made when it is measured.
class Registry {
 public:
  using Make = std::function<std::unique_ptr<Subject>()>;
  struct Entry {
    std::string name;
    Make make;
  };

  void add(std::string name, Make make) { entries_.push_back({std::move(name), std::move(make)}); }
  std::vector<Entry> const& entries() const { return entries_; }

 private:
  std::vector<Entry> entries_;
};

// One for each file of cases.
void addNotification(Registry& registry);
void addAttachment(Registry& registry);
void addFlaps(Registry& registry);
void addErrDisables(Registry& registry);
void addAgeing(Registry& registry);
void addAdmission(Registry& registry);
void addConfiguration(Registry& registry);
void addCollections(Registry& registry);
void addPointers(Registry& registry);
void addTracing(Registry& registry);
void addDeferral(Registry& registry);
void addProperties(Registry& registry);

}  // namespace Bench
