#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/introspection/support/Machines.h"

namespace {

using namespace IntrospectionTest;
using testing::ElementsAre;

/// An attribute with members, and how a test makes and takes away one by its own operations.
struct Walked {
  std::string_view name;
  std::function<std::unique_ptr<Vek::GenericIf>(Machines&)> view;
  std::string_view attribute;
  std::function<void(Machines&, unsigned)> add;
  std::function<Vek::Value(unsigned)> key;
  bool ordered{false};  ///< the walk is in order of making
};

std::ostream& operator<<(std::ostream& out, Walked const& walked) {
  return out << walked.name;
}

std::string numbered(char const* name, unsigned i) {
  return name + std::to_string(i);
}

Walked interfaces() {
  return {
      "linkFlapIntfSm",
      [](Machines& m) -> std::unique_ptr<Vek::GenericIf> {
        return std::make_unique<LinkFlap::LinkFlapSm::GenericIf_>(&m.top(), false);
      },
      "linkFlapIntfSm",
      [](Machines& m, unsigned i) { m.sw.addInterface(Tarn::IntfId{numbered("port", i).c_str()}); },
      [](unsigned i) { return Vek::Value{Tarn::IntfId{numbered("port", i).c_str()}}; }};
}

Walked profiles() {
  return {"linkFlapProfileSm",
          [](Machines& m) -> std::unique_ptr<Vek::GenericIf> {
            return std::make_unique<LinkFlap::LinkFlapIntfSm::GenericIf_>(&m.intf(), false);
          },
          "linkFlapProfileSm",
          [](Machines& m, unsigned i) {
            (void)m.intf().linkFlapProfileSmIs(numbered("p", i).c_str(), nullptr, m.sw.config,
                                               m.sw.phyConfig(kEthernet1), m.sw.status(kEthernet1),
                                               m.sw.causeStatus);
          },
          [](unsigned i) { return text(numbered("p", i)); }};
}

Walked times() {
  return {"linkFlapTimeStamp",
          [](Machines& m) -> std::unique_ptr<Vek::GenericIf> {
            return std::make_unique<LinkFlap::LinkFlapProfileSm::GenericIf_>(&m.profile(), false);
          },
          "linkFlapTimeStamp",
          [](Machines& m, unsigned i) { m.profile().linkFlapTimeStampIs(i, i); },
          [](unsigned i) { return Vek::Value{i}; },
          true};
}

Walked stateMembers() {
  return {"defaultProfileList", [](Machines& m) { return Vek::genericIfOf(m.sw.config, false); },
          "defaultProfileList",
          [](Machines& m, unsigned i) {
            m.sw.config->defaultProfileListIs(numbered("p", i).c_str(), true);
          },
          [](unsigned i) { return text(numbered("p", i)); }};
}

class Walk : public testing::TestWithParam<Walked> {
 protected:
  Walk() {
    // Only the members that the test makes.
    for (auto it = begin(); it->nonNull();)
      view->attributeIterator_iterDel(*it);
  }

  std::unique_ptr<Vek::AttributeIterator> begin() const {
    return view->attributeIteratorConst(view->attributeId(GetParam().attribute));
  }
  std::unique_ptr<Vek::AttributeIterator> from(Vek::Value const& key) const {
    return view->attributeIteratorKeyConst(view->attributeId(GetParam().attribute), key);
  }
  void add(unsigned first, unsigned last) {
    for (unsigned i = first; i <= last; ++i)
      GetParam().add(machines, i);
  }
  Vek::Value key(unsigned i) const { return GetParam().key(i); }
  void remove(Vek::Value const& memberKey) { (void)del(*view, GetParam().attribute, memberKey); }
  std::uint32_t count() const { return size(*view, GetParam().attribute); }

  static std::vector<std::string> rest(Vek::AttributeIterator& it) {
    std::vector<std::string> keys;
    for (; Vek::GenericIf::attributeIterator_nonNull(it);
         Vek::GenericIf::attributeIterator_iterInc(it))
      keys.push_back(Vek::GenericIf::attributeIterator_iterKey(it).text());
    return keys;
  }
  std::vector<std::string> all() const { return rest(*begin()); }
  std::set<std::string> keys(unsigned first, unsigned last) const {
    std::set<std::string> expected;
    for (unsigned i = first; i <= last; ++i)
      expected.insert(key(i).text());
    return expected;
  }

  Machines machines;
  std::unique_ptr<Vek::GenericIf> view{GetParam().view(machines)};
};

INSTANTIATE_TEST_SUITE_P(Over, Walk,
                         testing::Values(interfaces(), profiles(), times(), stateMembers()),
                         [](auto const& param) { return std::string{param.param.name}; });

TEST_P(Walk, OverNothingIsAtItsEnd) {
  EXPECT_EQ(count(), 0U);
  auto const it = begin();
  EXPECT_FALSE(Vek::GenericIf::attributeIterator_nonNull(*it));
  Vek::GenericIf::attributeIterator_iterInc(*it);  // stays there
  EXPECT_FALSE(it->nonNull());
}

TEST_P(Walk, VisitsEveryMemberOnceWithItsKeyAndItsValue) {
  add(1, 40);
  EXPECT_EQ(count(), 40U);
  std::set<std::string> visited;
  for (auto it = begin(); it->nonNull(); it->inc()) {
    Vek::Value const memberKey = Vek::GenericIf::attributeIterator_iterKey(*it);
    EXPECT_TRUE(visited.insert(memberKey.text()).second);
    EXPECT_EQ(Vek::GenericIf::attributeIterator_iterObj(*it),
              get(*view, GetParam().attribute, memberKey));
  }
  EXPECT_EQ(visited, keys(1, 40));
}

TEST_P(Walk, IsInTheSameOrderEveryTime) {
  add(1, 40);
  auto const order = all();
  EXPECT_EQ(all(), order);
  if (!GetParam().ordered) return;
  for (unsigned i = 0; i < 40; ++i)
    EXPECT_EQ(order[i], key(i + 1).text());
}

TEST_P(Walk, FromAKeyVisitsThatMemberAndWhatFollows) {
  add(1, 40);
  auto const order = all();
  for (unsigned i = 1; i <= 40; ++i) {
    auto const place = std::find(order.begin(), order.end(), key(i).text());
    EXPECT_EQ(rest(*from(key(i))), (std::vector<std::string>{place, order.end()}));
    EXPECT_EQ(rest(*from(text(key(i).text()))), (std::vector<std::string>{place, order.end()}));
  }
}

TEST_P(Walk, FromAWrongKeyIsRefused) {
  std::string const bareName{view->type().bareName()};
  EXPECT_EQ(thrownBy([&] { (void)from(Vek::Value{1.5}); }), "Vek::TypeException 3: " + bareName);
  EXPECT_EQ(thrownBy([&] { (void)from({}); }), "Vek::TypeException 3: " + bareName);
}

TEST_P(Walk, ACopyGoesItsOwnWay) {
  add(1, 10);
  auto const order = all();
  auto const it = begin();
  it->inc();
  auto const copy = Vek::GenericIf::attributeIterator_iterClone(*it);
  EXPECT_EQ(copy->key(), it->key());
  EXPECT_EQ(rest(*it), (std::vector<std::string>{order.begin() + 1, order.end()}));
  EXPECT_EQ(copy->key().text(), order[1]);
  EXPECT_EQ(rest(*copy), (std::vector<std::string>{order.begin() + 1, order.end()}));
}

TEST_P(Walk, SurvivesTheRemovalOfEveryMemberThroughIt) {
  add(1, 40);
  auto const order = all();
  std::vector<std::string> removed;
  for (auto it = begin(); it->nonNull();) {
    removed.push_back(it->key().text());
    view->attributeIterator_iterDel(*it);
    EXPECT_EQ(count(), 40U - removed.size());
  }
  EXPECT_EQ(removed, order);
  EXPECT_EQ(count(), 0U);
}

TEST_P(Walk, SurvivesTheRemovalOfEverySecondMemberThroughIt) {
  add(1, 40);
  auto const order = all();
  std::vector<std::string> kept;
  std::vector<std::string> expected;
  for (std::size_t i = 0; i < 40; i += 2)
    expected.push_back(order[i]);
  for (auto it = begin(); it->nonNull();) {
    kept.push_back(it->key().text());
    it->inc();
    if (it->nonNull()) view->attributeIterator_iterDel(*it);
  }
  EXPECT_EQ(kept, expected);
  EXPECT_EQ(all(), expected);
}

TEST_P(Walk, SurvivesTheRemovalOfTheMemberItStandsOnByAnother) {
  add(1, 20);
  auto const order = all();
  std::vector<std::string> visited;
  for (auto it = begin(); it->nonNull(); it->inc()) {
    visited.push_back(it->key().text());
    Vek::Value const held = it->obj();
    remove(it->key());
    EXPECT_EQ(it->obj(), held);  // still to be had
  }
  EXPECT_EQ(visited, order);
  EXPECT_EQ(count(), 0U);
}

TEST_P(Walk, SurvivesTheRemovalOfWhatFollows) {
  add(1, 20);
  auto const order = all();
  auto const it = begin();
  for (std::size_t i = 1; i < 20; ++i)
    remove(from(text(order[i]))->key());
  EXPECT_EQ(rest(*it), (std::vector<std::string>{order[0]}));
}

TEST_P(Walk, SurvivesTheRemovalOfAll) {
  add(1, 20);
  auto const it = begin();
  for (auto other = begin(); other->nonNull();)
    view->attributeIterator_iterDel(*other);
  it->inc();
  EXPECT_FALSE(it->nonNull());
}

// Those that were there all along are visited once, however many come meanwhile.
TEST_P(Walk, SurvivesInsertionAndGrowth) {
  add(1, 10);
  std::vector<std::string> visited;
  unsigned next = 11;
  for (auto it = begin(); it->nonNull(); it->inc()) {
    visited.push_back(it->key().text());
    if (next <= 100) {
      add(next, next + 9);
      next += 10;
    }
  }
  std::set<std::string> const once{visited.begin(), visited.end()};
  EXPECT_EQ(once.size(), visited.size());
  for (std::string const& memberKey : keys(1, 10))
    EXPECT_TRUE(once.contains(memberKey)) << memberKey;
}

TEST_P(Walk, ThroughWhichTheMemberThatHasGoneIsRemovedGoesOnToo) {
  add(1, 10);
  auto const order = all();
  auto const it = begin();
  remove(it->key());
  view->attributeIterator_iterDel(*it);
  EXPECT_EQ(rest(*it), (std::vector<std::string>{order.begin() + 1, order.end()}));
  EXPECT_EQ(count(), 9U);
}

TEST_P(Walk, HoldsWhatItWalksAndOutlivesTheView) {
  add(1, 5);
  auto const order = all();
  std::uint32_t const before = view->object()->referenceCount();
  auto const it = begin();
  EXPECT_EQ(view->object()->referenceCount(), before + 1);
  view = nullptr;
  EXPECT_EQ(rest(*it), order);
}

TEST_P(Walk, OfAReadOnlyViewRemovesNothing) {
  add(1, 5);
  auto const readOnly = Vek::genericIfOf(view->object(), true);
  auto const it = readOnly->attributeIteratorConst(view->attributeId(GetParam().attribute));
  EXPECT_EQ(thrownBy([&] { readOnly->attributeIterator_iterDel(*it); }), kConst);
  EXPECT_EQ(rest(*it).size(), 5U);
}

// The one thing that a queue's order shows which a collection's does not.
TEST(QueueWalk, FollowsTheQueueAcrossTheWrapOfItsIndexes) {
  Machines machines;
  auto& sm = machines.profile();
  sm.linkFlapTimeStampMetadataIs({4294967294U, 4294967294U});
  for (double const time : {1.0, 2.0, 3.0, 4.0})
    sm.linkFlapTimeStampEnq(time);
  LinkFlap::LinkFlapProfileSm::GenericIf_ view{&sm, false};
  std::vector<std::string> visited;
  for (auto it = view.attributeIteratorConst(140); it->nonNull(); it->inc())
    visited.push_back(it->key().text() + " " + it->obj().text());
  EXPECT_THAT(visited, ElementsAre("4294967294 1", "4294967295 2", "0 3", "1 4"));
}

// The machine that a walk's owner loses lives on in the walk.
TEST(MachineWalk, KeepsTheMachineWhoseMembersItWalks) {
  auto machines = std::make_unique<Machines>();
  machines->sw.addInterface(Tarn::IntfId{"Ethernet2"});
  auto it = LinkFlap::LinkFlapSm::GenericIf_{&machines->top(), true}.attributeIteratorConst(136);
  machines = nullptr;
  unsigned visited = 0;
  for (; it->nonNull(); it->inc())
    ++visited;
  EXPECT_EQ(visited, 2U);
}

TEST(QueueWalk, FromBeyondTheTailIsAtItsEnd) {
  Machines machines;
  auto& sm = machines.profile();
  sm.linkFlapTimeStampMetadataIs({1, 1});
  for (double const time : {1.0, 2.0, 3.0})
    sm.linkFlapTimeStampEnq(time);
  LinkFlap::LinkFlapProfileSm::GenericIf_ view{&sm, false};
  auto const at = view.attributeIteratorKeyConst(140, Vek::Value{3U});
  ASSERT_TRUE(at->nonNull());
  EXPECT_EQ(at->obj().text(), "3");
  EXPECT_FALSE(view.attributeIteratorKeyConst(140, Vek::Value{4U})->nonNull());
}

// Also where the walk is asked itself, and not the view it came from.
TEST(Walks, OfAReadOnlyViewRefuseToRemove) {
  Machines machines;
  LinkFlap::LinkFlapSm::GenericIf_ const readOnly{&machines.top(), true};
  auto const it = readOnly.attributeIteratorConst(136);
  EXPECT_EQ(thrownBy([&] { it->del(); }), kConst);
  EXPECT_NE(machines.sw.intfSm(kEthernet1), nullptr);
}

}  // namespace
