#include "runtime/vek/Notifiee.h"

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
  for (MoreWatchers* more = first_.next; more != nullptr;) {
    MoreWatchers* const gone = more;
    more = more->next;
    delete gone;
  }
}

Notifier::Group& Notifier::groupOf(AttributeMask watching) const {
  if (watching == 0) fatal("Vek: a watcher of nothing was registered");
  if (firstWatching_ == 0) firstWatching_ = watching;
  if (firstWatching_ == watching) return first_;
  // At the end of the chain: kinds of watchers are told in the order in which the first of each
  // came.
  MoreWatchers** more = &first_.next;
  while (*more != nullptr && (*more)->watching != watching)
    more = &(*more)->next;
  if (*more == nullptr) *more = new MoreWatchers{watching};
  return **more;
}

void Notifier::notifieeIs(NotifieeConst& watcher) const {
  groupOf(watcher.watching()).watchers.append(watcher);
}

void Notifier::notifieeDel(NotifieeConst& watcher) const noexcept {
  Group* group = &first_;
  if (watcher.watching() != firstWatching_) {
    MoreWatchers* more = first_.next;
    while (more->watching != watcher.watching())
      more = more->next;
    group = more;
  }
  group->watchers.remove(watcher);
}

bool Notifier::hasNotifiees() const noexcept {
  for (Group const* group = &first_; group != nullptr; group = group->next)
    if (!group->watchers.empty()) return true;
  return false;
}

void Notifier::watcherThrew(SnapshotIterator<NotifieeConst>& walk, AttributeId id,
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
