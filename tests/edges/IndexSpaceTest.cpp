// Queues of flap times whose indexes begin near 2^32, and queues whose index space is full.

#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "runtime/vek/Exception.h"

#include "tests/edges/IndexModel.h"
#include "tests/support/Switch.h"

namespace {

using LinkFlap::LinkFlapProfileSm;

Tarn::IntfId const ethernet1{"Ethernet1"};

constexpr std::uint32_t kStarts[]{0,           1,           2147483647U, 2147483648U,
                                  4294967000U, 4294967290U, 4294967294U, 4294967295U};

void startAt(LinkFlapProfileSm& sm, std::uint32_t index) {
  sm.linkFlapTimeStampDelAll();
  sm.linkFlapTimeStampMetadataIs({index, index});
}

std::vector<std::uint32_t> indexes(LinkFlapProfileSm const& sm) {
  std::vector<std::uint32_t> all;
  for (auto entry = sm.linkFlapTimeStamp().iterator(); entry; ++entry)
    all.push_back(entry->vek_index());
  return all;
}

/// Whether queue and model hold the same, in the same order, under the same numbers.
bool agree(LinkFlapProfileSm const& sm, IndexModel const& model, std::uint32_t versionBefore) {
  auto const& queue = sm.linkFlapTimeStamp();
  if (queue.metadata().headIndex != model.headIndex() ||
      queue.metadata().nextIndex != model.nextIndex() || queue.count() != model.entries().size() ||
      queue.version() - versionBefore != model.version())
    return false;
  auto entry = queue.iterator();
  for (auto const& expected : model.entries()) {
    if (!entry || entry->vek_index() != expected.index || entry->time() != expected.time ||
        sm.linkFlapTimeStamp(expected.index) != expected.time)
      return false;
    ++entry;
  }
  return !entry;
}

/// Appends and removals of every kind, at random but the same in every run, beside the model.
/// Returns how many steps agreed; stops at the first that does not.
int stepsThatAgree(LinkFlapProfileSm& sm, std::uint32_t start, int steps, bool forgetsTheWrap,
                   int& refused) {
  startAt(sm, start);
  std::uint32_t const version = sm.linkFlapTimeStamp().version();
  IndexModel model{start, forgetsTheWrap};
  std::mt19937 random{start};
  for (int step = 0; step < steps; ++step) {
    std::size_t const place = random() % 12;
    switch (random() % 8) {
      case 0: {
        double const time = sm.linkFlapTimeStampDeq();
        if (time != model.del(0).value_or(0.0)) return step;
        break;
      }
      case 1: {  // by index
        bool const there = place < model.entries().size();
        std::uint32_t const index = there ? model.entries()[place].index : model.nextIndex() + 5;
        if (sm.linkFlapTimeStampDel(index) != model.del(place).value_or(0.0)) return step;
        break;
      }
      case 2: {  // through a walk: every third entry from `place` on
        auto walk = sm.linkFlapTimeStamp().iterator();
        std::size_t at = 0;
        for (std::size_t seen = 0; walk; ++seen) {
          if (seen >= place && (seen - place) % 3 == 0) {
            sm.linkFlapTimeStampDel(walk);
            (void)model.del(at);
          } else {
            ++walk;
            ++at;
          }
        }
        break;
      }
      case 3: {  // full, as 2^32 - 1 entries would make it; then room again
        if (model.entries().empty()) break;
        auto const before = sm.linkFlapTimeStamp().metadata();
        std::uint32_t const full = model.entries().back().index + 2;
        sm.linkFlapTimeStampMetadataIs({full, before.nextIndex});
        model.indexesAre(full, model.nextIndex());
        bool threw = false;
        try {
          sm.linkFlapTimeStampEnq(-1);
        } catch (Vek::RangeException const& refusal) {
          threw = std::string_view{refusal.what()} == "linkqueue index space full";
          ++refused;
        }
        if (threw == model.enq(-1)) return step;
        if (!agree(sm, model, version)) return step;
        sm.linkFlapTimeStampMetadataIs({before.headIndex, model.nextIndex()});
        model.indexesAre(before.headIndex, model.nextIndex());
        break;
      }
      default:
        sm.linkFlapTimeStampEnq(step + 1.0);
        if (!model.enq(step + 1.0)) return step;
    }
    if (!agree(sm, model, version)) return step;
  }
  return steps;
}

class IndexSpace : public testing::Test {
 protected:
  IndexSpace() {
    sw_.addInterface(ethernet1);
    sw_.start();
  }
  LinkFlapProfileSm& sm() { return *sw_.profileSm(ethernet1, "default"); }

  Switch sw_{{.maxFlaps = 3, .interval = 10}};
};

TEST_F(IndexSpace, KeepsTheOrderAcrossTheWrap) {
  constexpr int kSteps{3000};
  int refused = 0;
  int steps = 0;
  for (std::uint32_t const start : kStarts) {
    int const agreed = stepsThatAgree(sm(), start, kSteps, false, refused);
    EXPECT_EQ(agreed, kSteps) << "from index " << start;
    steps += agreed;
  }
  EXPECT_GT(refused, 500);
  std::printf("%d steps from %zu first indexes, %d appends refused, 0 differences\n", steps,
              std::size(kStarts), refused);
}

/// The planted fault.
TEST_F(IndexSpace, SeesAQueueThatForgetsTheWrap) {
  int refused = 0;
  EXPECT_LT(stepsThatAgree(sm(), 4294967290U, 3000, true, refused), 100);
}

/// Links that flap: whatever the first index, the same decisions, times and counters.
TEST(IndexSpaceOfLinks, DecidesTheSameFromEveryFirstIndex) {
  for (std::uint32_t const start : kStarts) {
    Switch sw{{.maxFlaps = 3, .interval = 10}};
    sw.addInterface(ethernet1);
    sw.start();
    auto& machine = *sw.profileSm(ethernet1, "default");
    startAt(machine, start);
    // The flaps at 0 and 1 are too old at 11.5; then one more in the window err-disables.
    sw.flap(ethernet1, {0, 1, 9, 11.5});
    EXPECT_EQ(times(machine), (std::vector<double>{9, 11.5}));
    EXPECT_EQ(indexes(machine), (std::vector<std::uint32_t>{start + 2, start + 3}));
    EXPECT_EQ(counters(machine), (Counters{2, 0, 0}));
    EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
    sw.flap(ethernet1, {12, 13});
    EXPECT_EQ(sw.errdisabledAt(ethernet1), 13.0);
    // All gone, and the indexes go on where they were.
    EXPECT_EQ(machine.linkFlapTimeStamp().count(), 0U);
    EXPECT_EQ(machine.linkFlapTimeStamp().metadata(),
              (LinkFlapProfileSm::LinkFlapTimeStampMetadata{start + 6, start + 6}));
    sw.flap(ethernet1, {14});
    EXPECT_EQ(indexes(machine), (std::vector<std::uint32_t>{start + 6}));
  }
}

/// A flap that finds the space full stays in the runtime, is not counted, and err-disables nothing;
/// the interface's other profile counts it. The history's next reset makes room.
TEST(FullIndexSpace, RefusesAFlapAndLeavesTheMachineAsItWas) {
  for (std::uint32_t const start : kStarts) {
    Switch sw{{.maxFlaps = 1, .interval = 10}};
    for (char const* const name : {"p1", "p2"}) {
      sw.profileIs(name, {.maxFlaps = 5, .interval = 100});
      sw.config->defaultProfileListIs(name, true);
    }
    sw.addInterface(ethernet1);
    sw.start();
    auto& full = *sw.profileSm(ethernet1, "p1");
    auto& other = *sw.profileSm(ethernet1, "p2");
    startAt(full, start);
    sw.flap(ethernet1, {0, 1});
    full.linkFlapTimeStampMetadataIs({start + 3, start + 2});
    auto const before = counters(full);
    for (int again = 0; again < 2; ++again) {
      sw.flap(ethernet1, {2.0 + again});
      auto const failures = sw.takeFailures();
      ASSERT_EQ(failures.size(), 1U) << "from index " << start;
      EXPECT_EQ(failures.front().message, "linkqueue index space full");
      EXPECT_EQ(times(full), (std::vector<double>{0, 1}));
      EXPECT_EQ(indexes(full), (std::vector<std::uint32_t>{start, start + 1}));
      EXPECT_EQ(counters(full), before);
    }
    EXPECT_EQ(times(other), (std::vector<double>{0, 1, 2, 3}));
    EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);

    full.handleProfileValues("p1", ethernet1);
    sw.flap(ethernet1, {4});
    EXPECT_EQ(times(full), (std::vector<double>{4}));
    EXPECT_EQ(indexes(full), (std::vector<std::uint32_t>{start + 2}));
  }
}

/// No entry is left behind by any of this.
TEST(IndexSpaceObjects, AreAllReleased) {
  Vek::ptrifTrackOn_ = true;
  std::size_t const before = Vek::PtrTrack::live();
  {
    Switch sw;
    sw.addInterface(ethernet1);
    sw.start();
    auto& sm = *sw.profileSm(ethernet1, "default");
    int refused = 0;
    EXPECT_EQ(stepsThatAgree(sm, 4294967290U, 500, false, refused), 500);
    EXPECT_GT(Vek::PtrTrack::live(), before);
  }
  EXPECT_EQ(Vek::PtrTrack::live(), before);
  Vek::ptrifTrackOn_ = false;
}

}  // namespace
