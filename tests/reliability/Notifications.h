#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "tests/reliability/ListenerOf.h"
#include "tests/statemachines/ReentryWorld.h"

/// A listener and its ears, whatever it listens to.
struct Listener {
  Vek::Ptr<Vek::PtrInterface::NotifieeConst> watcher;
  Ears* ears{nullptr};
};

/// The object that a notification is about.
struct Subject {
  /// Empty for a Root, which its watchers must not keep alive.
  Vek::Ptr<Vek::Entity const> object;
  std::function<Listener(Vek::AttributeMask)> listen;
};

/// One change of one attribute.
struct Notification {
  char const* name;
  Tarn::IntfId id;  ///< the interface that actions from inside are about
  std::function<Subject(ReentryWorld&)> subject;
  /// The attributes of the library's reactor that hears of it: a listener of the same ones stands in
  /// line with it. 0: the library does not listen.
  Vek::AttributeMask library;
  bool keyed;
  /// Before the library is started, and after.
  void (*prepare)(ReentryWorld&);
  void (*ready)(ReentryWorld&);
  void (*raise)(ReentryWorld&);
  /// What raises it once more, from inside.
  void (*raiseAgain)(ReentryWorld&);
  /// The library selects profiles for every interface when it hears of it.
  bool fanOut{false};
  /// It is the installation of the machine itself.
  bool installs{false};
};

/// How many attributes can be watched, by the descriptors of the nine state types and the Root.
std::size_t watchedAttributes();

/// All notifications of all objects: every such attribute, in each way in which it can change. A
/// name begins with type and attribute; a blank ends that.
std::vector<Notification> allNotifications();
