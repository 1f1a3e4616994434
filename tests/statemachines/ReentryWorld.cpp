#include "tests/statemachines/ReentryWorld.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <utility>

namespace {

/// The profiles that the inputs select for an interface with these settings (or none).
std::vector<std::string> demandedProfiles(LinkFlap::Config const& config,
                                          LinkFlap::IntfConfig const* settings) {
  std::vector<std::string> names;
  if (settings != nullptr && !settings->enabled()) return names;
  auto const& list = settings != nullptr && !settings->profileList().empty()
                         ? settings->profileList()
                         : config.defaultProfileList();
  for (auto const& member : list)
    names.emplace_back(member.key().view());
  if (names.empty()) names.emplace_back("default");
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

ReentryWorld::ReentryWorld() {
  before_ = CauseWatcher::on(sw.causeStatus, [this](Tarn::IntfId const&) { ++toldBefore_; });
  meddler = CauseWatcher::on(sw.causeStatus, [this](Tarn::IntfId const& id) { meddle(id); });
  after = CauseWatcher::on(sw.causeStatus, [this](Tarn::IntfId const&) { ++toldAfter_; });
  p1 = sw.profileIs("p1", {.maxFlaps = 1, .interval = 100});
  for (Tarn::IntfId const& id : {ethernet1, ethernet2, ethernet3})
    sw.addInterface(id);
  sw.settingsIs(ethernet2, true, {{"p1", true}});
  sw.settingsIs(ethernet3, true);
}

ReentryWorld::~ReentryWorld() {
  act_ = nullptr;
}

void ReentryWorld::meddle(Tarn::IntfId const& id) {
  if (auto const act = std::exchange(act_, nullptr)) {
    acted_ = true;
    act(*this, Tarn::IntfId{id});
  }
}

void ReentryWorld::drop(Tarn::IntfId const& id) {
  sw.statusDir->intfStatusDel(id);
  sw.configDir->intfConfigDel(id);
}

Vek::Ptr<LinkFlap::IntfConfig> ReentryWorld::settingsOf(Tarn::IntfId const& id) const {
  return Vek::Ptr<LinkFlap::IntfConfig>{
      const_cast<LinkFlap::IntfConfig*>(sw.config->intfConfig(id).get())};
}

std::vector<Tarn::IntfId> ReentryWorld::everyInterface() const {
  std::set<Tarn::IntfId> all{ethernet1, ethernet2, ethernet3};
  for (auto const& member : sw.statusDir->intfStatus())
    all.insert(member.key());
  for (auto const& member : sw.configDir->intfConfig())
    all.insert(member.key());
  for (auto const& member : sw.causeStatus->intfStatus())
    all.insert(member.key());
  if (sw.root && sw.root->linkFlapSm())
    for (auto const& child : sw.machine().linkFlapIntfSm())
      all.insert(child.intfId());
  return {all.begin(), all.end()};
}

void ReentryWorld::expectMonitored(Tarn::IntfId const& id) {
  auto const settings = sw.config->intfConfig(id);
  auto const status = sw.statusDir->intfStatus(id);
  auto const phyConfig = sw.configDir->intfConfig(id);
  bool const admitted =
      status && phyConfig && (settings || !sw.errdisableConfig->disabled(sw.causeName));
  auto const* const child = sw.intfSm(id);
  ASSERT_EQ(child != nullptr, admitted);
  bool const enabled = !settings || settings->enabled();
  if (!recordsByHand && (!admitted || !enabled)) {
    EXPECT_EQ(sw.errdisabledAt(id), std::nullopt);
  }
  if (!admitted) return;
  EXPECT_EQ(child->intfConfig(), settings);
  EXPECT_EQ(child->ethPhyIntfStatus(), status);
  EXPECT_EQ(child->ethPhyIntfConfig(), phyConfig);
  EXPECT_EQ(child->causeStatus(), sw.causeStatus);
  EXPECT_EQ(child->enable(), enabled);
  EXPECT_TRUE(child->hasNotificationActive());
  EXPECT_EQ(child->referenceCount(), 1U);
  EXPECT_EQ(sw.profiles(id), demandedProfiles(*sw.config, settings.get()));
  for (auto& profileSm : child->linkFlapProfileSm()) {
    EXPECT_EQ(profileSm.intfSm(), child);
    EXPECT_EQ(profileSm.ethPhyIntfStatus(), status);
    EXPECT_TRUE(profileSm.hasNotificationActive());
  }
}

void ReentryWorld::expectNothingListens() const {
  EXPECT_FALSE(sw.config->hasNotifiees());
  EXPECT_FALSE(sw.configDir->hasNotifiees());
  EXPECT_FALSE(sw.statusDir->hasNotifiees());
  EXPECT_FALSE(sw.errdisableConfig->hasNotifiees());
  EXPECT_FALSE(p1->hasNotifiees());
  for (auto const& member : sw.statusDir->intfStatus())
    EXPECT_FALSE(member.value()->hasNotifiees()) << member.key();
  for (auto const& member : sw.config->intfConfig())
    EXPECT_FALSE(member.value()->hasNotifiees()) << member.key();
}

void ReentryWorld::expectOneFlapMoreReaches(Tarn::IntfId const& id) {
  auto const machines = sw.profiles(id).size();
  sw.linkIs(id, 2);
  sw.takeTraces();
  // So far in the future that nothing of the history counts.
  sw.clock.secondsIs(sw.clock.seconds() + 1e6);
  sw.linkIs(id, 1);
  EXPECT_EQ(sw.traced("handleLinkStatus"), machines);
  if (sw.phyConfig(id)->phyConfigState() == Interface::PhyConfigState::inProgress) return;
  auto const* const child = sw.intfSm(id);
  if (child == nullptr) return;
  for (auto& profileSm : child->linkFlapProfileSm())
    EXPECT_EQ(times(profileSm), std::vector{sw.clock.seconds()}) << profileSm.profileName();
}

void ReentryWorld::expectSettled() {
  act_ = nullptr;
  if (!sw.root || !sw.root->linkFlapSm()) {
    expectNothingListens();
    return;
  }
  EXPECT_EQ(sw.root->linkFlapSm()->referenceCount(), 1U);
  for (Tarn::IntfId const& id : everyInterface()) {
    SCOPED_TRACE(id);
    expectMonitored(id);
    if (sw.statusDir->intfStatus(id)) expectOneFlapMoreReaches(id);
  }
}

void ReentryWorld::expectEachChangeToldOnce() const {
  EXPECT_EQ(toldBefore_, causeStatus_->changes());
  if (!afterLeft) {
    EXPECT_EQ(toldAfter_, causeStatus_->changes());
  }
}
