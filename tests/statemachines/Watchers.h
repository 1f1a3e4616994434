#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "runtime/model/ErrdisableCauseStatus.h"

#include "statemachines/Root.h"

/// A watcher of a Root that does what the test says, and keeps the attributes under which it was
/// told that it threw.
class RootWatcher final : public LinkFlap::Root::NotifieeConst {
 public:
  static Vek::Ptr<RootWatcher> on(LinkFlap::Root::Ptr const& root,
                                  std::function<void()> onLinkFlapSm) {
    auto watcher = Vek::make<RootWatcher>();
    watcher->told = std::move(onLinkFlapSm);
    watcher->notifierIs(root);
    watcher->isRegisteredNotifieeIs(true);
    return watcher;
  }

  void onLinkFlapSm() override {
    if (told) told();
  }
  void onZeroReferences() override {
    if (zeroReferences) zeroReferences();
  }
  void onNotificationException(Vek::AttributeId id) override { exceptions.push_back(id); }

  std::function<void()> told;
  std::function<void()> zeroReferences;
  std::function<void()> destroyed;
  std::vector<Vek::AttributeId> exceptions;

 private:
  ~RootWatcher() override {
    if (destroyed) destroyed();
  }
};

/// A watcher of the err-disable record that does what the test says.
class CauseWatcher final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  static Vek::Ptr<CauseWatcher> on(Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
                                   std::function<void(Tarn::IntfId const&)> onIntfStatus) {
    auto watcher = Vek::make<CauseWatcher>();
    watcher->told = std::move(onIntfStatus);
    watcher->notifierIs(causeStatus);
    watcher->isRegisteredNotifieeIs(true);
    return watcher;
  }

  void onIntfStatus(Tarn::IntfId id) override {
    if (told) told(id);
  }

  std::function<void(Tarn::IntfId const&)> told;

 private:
  ~CauseWatcher() override = default;
};
