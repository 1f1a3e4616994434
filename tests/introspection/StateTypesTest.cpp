#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/model/StateTypes.h"

#include "tests/introspection/support/Operations.h"
#include "tests/introspection/support/Records.h"

namespace {

using IntrospectionTest::lines;
using IntrospectionTest::operations;
using testing::ElementsAre;

Vek::VekType const& record(std::string_view name) {
  Vek::VekType const* const type = Vek::IntrospectionReactor::global().typeNode(name);
  if (type == nullptr) throw std::runtime_error{"no such type: " + std::string{name}};
  return *type;
}

TEST(StateTypes, TheirTablesTypedByHand) {
  EXPECT_THAT(lines(record("LinkFlap::Config")),
              ElementsAre("maxFlaps 260 state unsigned int", "interval 261 state double",
                          "intfConfig 262 collection LinkFlap::IntfConfig by Tarn::IntfId",
                          "profileConfig 263 collection LinkFlap::ProfileConfig by Vek::String",
                          "defaultProfileList 264 collection bool by Vek::String"));
  EXPECT_THAT(
      lines(record("LinkFlap::IntfConfig")),
      ElementsAre("enabled 258 state bool", "profileList 259 collection bool by Vek::String"));
  EXPECT_THAT(
      lines(record("LinkFlap::ProfileConfig")),
      ElementsAre("maxFlaps 258 state unsigned int", "interval 259 state double",
                  "violations 260 state unsigned int", "trackedIntervals 261 state unsigned int"));
  EXPECT_THAT(lines(record("Interface::AllEthPhyIntfConfigDir")),
              ElementsAre("intfConfig 386 collection Interface::EthPhyIntfConfig by Tarn::IntfId"));
  EXPECT_THAT(lines(record("Interface::AllEthPhyIntfStatusDir")),
              ElementsAre("intfStatus 386 collection Interface::EthPhyIntfStatus by Tarn::IntfId"));
  EXPECT_THAT(lines(record("Interface::EthPhyIntfStatus")),
              ElementsAre("intfId 258 state Tarn::IntfId",
                          "rawLinkStatus 259 state Interface::RawLinkStatus"));
  EXPECT_THAT(lines(record("Interface::EthPhyIntfConfig")),
              ElementsAre("intfId 258 state Tarn::IntfId",
                          "phyConfigState 259 state Interface::PhyConfigState"));
  EXPECT_THAT(lines(record("Errdisable::Config")),
              ElementsAre("recoveryInterval 260 state double",
                          "disabled 261 collection bool by Vek::String",
                          "timerRecoveryEnabled 262 collection bool by Vek::String"));
  EXPECT_THAT(lines(record("Errdisable::CauseStatus")),
              ElementsAre("intfStatus 258 collection double by Tarn::IntfId"));
}

template <typename T>
class StateType : public testing::Test {
 protected:
  Vek::VekType const& type{record(T::vekTypeName)};
};

using All = testing::Types<LinkFlap::Config, LinkFlap::IntfConfig, LinkFlap::ProfileConfig,
                           Interface::AllEthPhyIntfConfigDir, Interface::AllEthPhyIntfStatusDir,
                           Interface::EthPhyIntfStatus, Interface::EthPhyIntfConfig,
                           Errdisable::Config, Errdisable::CauseStatus>;
TYPED_TEST_SUITE(StateType, All);

/// What a descriptor says of the operations that its attribute supports.
template <typename Owner, typename Value, typename Watcher>
std::string supported(Vek::Scalar<Owner, Value, Watcher> const& /*attribute*/) {
  return " get set";
}
template <typename Owner, typename Value>
std::string supported(Vek::Derived<Owner, Value> const& /*attribute*/) {
  return " get";
}
template <typename Owner, typename Key, typename Value, typename Watcher>
std::string supported(Vek::Keyed<Owner, Key, Value, Watcher> const& /*attribute*/) {
  return " size get[] set[] del[] iterate";
}

template <typename Owner, typename Value>
constexpr bool watchable(Vek::Derived<Owner, Value> const& /*attribute*/) {
  return false;
}
template <typename Attribute>
constexpr bool watchable(Attribute const& /*attribute*/) {
  return true;
}

TYPED_TEST(StateType, HasTheAttributesOfItsDescriptorsAndNoOthers) {
  std::vector<std::string> described;
  std::vector<std::string> registered;
  std::apply(
      [&](auto const&... attribute) {
        (described.push_back(std::to_string(attribute.id) + ' ' + std::string{attribute.name} +
                             supported(attribute) + (watchable(attribute) ? " told" : "")),
         ...);
      },
      TypeParam::vekAttributes);
  for (auto const& attr : this->type.attrs())
    registered.push_back(std::to_string(attr->id) + ' ' + operations(*attr) +
                         (attr->notifying ? " told" : ""));
  EXPECT_EQ(registered, described);
}

TYPED_TEST(StateType, IsAnEntityThatViewsCanBeMadeOf) {
  EXPECT_EQ(this->type.base(), &Vek::entityType());
  EXPECT_TRUE(this->type.hasGenericIfSupport());
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode(this->type.fullName()), &this->type);
}

TYPED_TEST(StateType, AnObjectTellsTheRecord) {
  Vek::Ptr<TypeParam> object;
  if constexpr (std::is_constructible_v<TypeParam, Tarn::IntfId>) {
    object = Vek::make<TypeParam>(Tarn::IntfId{"Ethernet1"});
  } else {
    object = Vek::make<TypeParam>();
  }
  EXPECT_EQ(object->fwkType(), &this->type);
}

/// Writes down what it is told.
class ConfigWatcher final : public LinkFlap::Config::NotifieeConst {
 public:
  explicit ConfigWatcher(Vek::Ptr<LinkFlap::Config> const& config) {
    notifierIs(config);
    hasNotificationActiveIs(true);
  }
  void onMaxFlaps() override { told.emplace_back("maxFlaps"); }
  void onInterval() override { told.emplace_back("interval"); }
  void onProfileConfig(Vek::String name) override {
    told.push_back("profileConfig " + std::string{name.view()});
  }
  void onDefaultProfileList(Vek::String name) override {
    told.push_back("defaultProfileList " + std::string{name.view()});
  }

  std::vector<std::string> told;

 private:
  ~ConfigWatcher() override = default;
};

// One description serves accessor, notification and reflection: a write by name is a write.
TEST(StateTypeWrites, ByNameTellTheWatchersAsTheSettersDo) {
  using IntrospectionTest::del;
  using IntrospectionTest::set;
  using IntrospectionTest::setAt;
  using IntrospectionTest::text;
  auto const config = Vek::make<LinkFlap::Config>();
  auto const view = Vek::genericIfOf(config, false);
  auto const watcher = Vek::make<ConfigWatcher>(config);

  set(*view, "maxFlaps", Vek::Value{7U});
  set(*view, "interval", text("2.5"));
  setAt(*view, "defaultProfileList", text("p"), Vek::Value{true});
  EXPECT_EQ(config->maxFlaps(), 7U);
  EXPECT_EQ(config->interval(), 2.5);
  EXPECT_TRUE(config->defaultProfileList("p"));
  auto const profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"p"});
  setAt(*view, "profileConfig", text("p"), Vek::Value{profile});
  EXPECT_EQ(config->profileConfig("p"), profile);
  EXPECT_EQ(del(*view, "defaultProfileList", text("p")), Vek::Value{true});
  EXPECT_FALSE(config->defaultProfileList().has("p"));
  EXPECT_THAT(watcher->told, ElementsAre("maxFlaps", "interval", "defaultProfileList p",
                                         "profileConfig p", "defaultProfileList p"));

  // What is no change by setter is none by name.
  watcher->told.clear();
  set(*view, "maxFlaps", Vek::Value{7U});
  setAt(*view, "profileConfig", text("p"), Vek::Value{profile});
  EXPECT_TRUE(del(*view, "defaultProfileList", text("p")).empty());
  EXPECT_THAT(watcher->told, ElementsAre());
}

}  // namespace
