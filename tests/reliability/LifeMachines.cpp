// What a host does with the machines themselves, its own and those it holds on to.

#include "runtime/vek/Activity.h"

#include "tests/reliability/Life.h"
#include "tests/reliability/LifeParts.h"

void Life::changeMachine() {
  auto const root = root_;
  if (!root || !root->linkFlapSm()) return install();
  auto const sm = root->linkFlapSm();
  switch (below(selecting_ ? 2 : 8)) {
    case 0:
      if (auto const removed = root->linkFlapSmDel(); removed && below(2) == 0)
        heldMachines_.push_back(removed);
      break;
    case 1:
      root_ = nullptr;
      break;
    case 2:
      for (bool const on : {false, true})
        sm->hasNotificationActiveIs(on);
      break;
    case 3:
      for (bool const on : {true, false})
        sm->vekDoZombieReactors(on);
      break;
    case 4:
      sm->linkFlapIntfSmDelAll();
      break;
    case 5: {
      Tarn::IntfId const id = anyId();
      if (auto const removed = sm->linkFlapIntfSmDel(id)) heldIntfSms_.push_back(removed);
      break;
    }
    case 6:
      (void)Vek::vekActivitySmFor(activity_)->deliver();
      break;
    default:
      // A machine that lacks an input must not be asked to admit.
      if (sm->ethPhyIntfConfigDir() && sm->config() && sm->errdisableConfig())
        sm->handleIntf(anyId());
  }
}

LinkFlap::LinkFlapIntfSm::Ptr Life::anyIntfSm() {
  if (below(2) == 0 && !heldIntfSms_.empty()) return oneOf(heldIntfSms_, below(100));
  return root_ && root_->linkFlapSm() ? root_->linkFlapSm()->linkFlapIntfSm(anyId()) : nullptr;
}

LinkFlap::LinkFlapProfileSm::Ptr Life::anyProfileSm() {
  if (below(2) == 0 && !heldProfileSms_.empty()) return oneOf(heldProfileSms_, below(100));
  auto const sm = anyIntfSm();
  if (!sm) return nullptr;
  return LinkFlap::LinkFlapProfileSm::Ptr{sm->linkFlapProfileSm().iterator().member()};
}

/// What the host holds beyond the library's own references.
void Life::changeHeld() {
  switch (below(10)) {
    case 0:
    case 1:
      if (auto const sm = anyIntfSm()) heldIntfSms_.push_back(sm);
      break;
    case 2:
    case 3:
      if (auto const sm = anyProfileSm()) heldProfileSms_.push_back(sm);
      break;
    case 4:
      if (auto const sm = anyProfileSm())
        if (auto* const flap = sm->linkFlapTimeStamp().head()) heldFlaps_.emplace_back(flap);
      break;
    case 5:
      dropOne(heldMachines_, below(100));
      break;
    case 6:
      dropOne(heldIntfSms_, below(100));
      break;
    case 7:
      dropOne(heldProfileSms_, below(100));
      break;
    case 8:
      if (root_) views_.push_back(std::make_unique<RootView>(root_));
      break;
    default:
      dropOne(views_, below(100));
      dropOne(settings_, below(100));
      dropOne(statuses_, below(100));
  }
}

/// Machines are pointed at other objects, or deprived of them.
void Life::repoint() {
  auto const profileSm = anyProfileSm();
  auto const intfSm = anyIntfSm();
  switch (below(8)) {
    case 0:
      if (profileSm) profileSm->profileConfigIs(oneOf(profileConfigs_, below(100)));
      break;
    case 1:
      if (profileSm) profileSm->ethPhyIntfStatusIs(oneOf(statuses_, below(100)));
      break;
    case 2:
      if (profileSm) (void)profileSm->ethPhyIntfStatusDel();
      break;
    case 3:
      if (profileSm) {
        profileSm->linkFlapTimeStampEnq(clock_.seconds());
        profileSm->linkFlapTimeStampIs(below(9), clock_.seconds());
      }
      break;
    case 4:
      if (profileSm) (void)profileSm->linkFlapTimeStampDeq();
      break;
    case 5:
      if (intfSm) intfSm->intfConfigIs(oneOf(settings_, below(100)));
      break;
    case 6:
      if (intfSm) intfSm->linkFlapProfileSmDelAll();
      break;
    default:
      if (profileSm) profileSm->clearHistory();
  }
}
