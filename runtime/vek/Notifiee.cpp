#include "runtime/vek/Notifiee.h"

#include <memory>

#include "runtime/vek/Assertion.h"
#include "runtime/vek/Exception.h"
#include "runtime/vek/Report.h"

namespace Vek {

void PtrInterface::NotifieeConst::hasNotificationActiveIs(bool on) {
  notificationActiveFlagIs(on);
  isRegisteredNotifieeIs(on);
}

void PtrInterface::NotifieeConst::notifierIs(Ptr<PtrInterface const> const& object) {
  if (object == notifier_) return;
  isRegisteredNotifieeIs(false);
  notifier_ = object;
}

void PtrInterface::NotifieeConst::isRegisteredNotifieeIs(bool on) {
  if (on == linked()) return;
  if (on && !notifier_) return;
  auto const& notifier = static_cast<Notifier const&>(*notifier_);
  if (on) {
    notifier.notifieeIs(*this);
  } else {
    notifier.notifieeDel(*this);
  }
}

Name PtrInterface::NotifieeConst::name() const {
  return String{typeText(typeid(*this))};
}

void PtrInterface::NotifieeConst::onZeroReferences() {}

void PtrInterface::NotifieeConst::onNotificationException(AttributeId id) {
  auto const* const entity = dynamic_cast<Entity const*>(notifier().get());
  String const attribute = entity == nullptr ? String{} : entity->attributeString(id);
  reportCallbackException(id, attribute.view(), typeid(*this));
}

void PtrInterface::NotifieeConst::handleNotificationException(AttributeId id) noexcept {
  try {
    onNotificationException(id);
  } catch (...) {
    reportCallbackException(id, "in onNotificationException", typeid(*this));
  }
}

PtrInterface::NotifieeConst::~NotifieeConst() {
  // The base's operation: what a derived class added to registration has been destroyed already.
  if (linked()) NotifieeConst::isRegisteredNotifieeIs(false);
}

Notifier::~Notifier() {
  if (!grouped_) {
    watchers_.all.~ListRaw();
    return;
  }
  for (Group* group = watchers_.groups; group != nullptr;) {
    Group* const gone = group;
    group = group->next;
    delete gone;
  }
}

ListRaw<PtrInterface::NotifieeConst>& Notifier::watchersOf(AttributeMask watching) const {
  if (watching == 0) fatal("Vek: a watcher of nothing was registered");
  if (!grouped_) {
    if (allWatch_ == 0) allWatch_ = watching;
    if (allWatch_ == watching) return watchers_.all;
    groupedBesides(watching);
  }
  // At the end of the chain: kinds of watchers are told in the order in which the first of each
  // came.
  Group** group = &watchers_.groups;
  while (*group != nullptr && (*group)->watching != watching)
    group = &(*group)->next;
  if (*group == nullptr) *group = new Group{watching};
  return (*group)->watchers;
}

/// Makes the watchers that are here a group, to be followed by one that watches `watching`.
void Notifier::groupedBesides(AttributeMask watching) const {
  auto first = std::make_unique<Group>(allWatch_);
  first->next = new Group{watching};
  first->watchers.takeAll(watchers_.all);
  watchers_.all.~ListRaw();
  watchers_.groups = first.release();
  allWatch_ = 0;  // so nobody takes the groups for a list
  grouped_ = true;
}

void Notifier::notifieeIs(NotifieeConst& watcher) const {
  watchersOf(watcher.watching()).append(watcher);
}

void Notifier::notifieeDel(NotifieeConst& watcher) const noexcept {
  if (!grouped_) return watchers_.all.remove(watcher);
  Group* group = watchers_.groups;
  while (group->watching != watcher.watching())
    group = group->next;
  group->watchers.remove(watcher);
}

bool Notifier::hasNotifiees() const noexcept {
  return grouped_ ? nextConcerned(watchers_.groups, kAllAttributes) != nullptr
                  : !watchers_.all.empty();
}

void Notifier::watcherThrew(SnapshotWalk<NotifieeConst>& walk, AttributeId id,
                            std::string_view name, std::type_info const& watcher) noexcept {
  if (NotifieeConst* const current = walk.current()) {
    Ptr<NotifieeConst> const hold{current};
    current->handleNotificationException(id);
    return;
  }
  // The watcher has left, perhaps for good, so the runtime reports in its place.
  reportCallbackException(id, name, watcher);
}

void throwWatchedTypeException(std::type_info const& watched) {
  throwTypeException(typeText(watched).c_str());
}

}  // namespace Vek
