#include "tests/simulation/Compare.h"

#include <bit>

#include "statemachines/SourcePoints.h"

#include "tests/simulation/Text.h"

namespace Simulation {

namespace {

/// Queues up to this length are compared entry by entry after every event, longer ones by their
/// ends; all of them whole when everything is compared.
constexpr std::size_t kShortQueue{16};

void addText(Digest& digest, std::string_view text) {
  // Addresses differ from run to run.
  for (char const c : text.substr(0, text.find("0x")))
    digest.add(static_cast<unsigned char>(c));
}

}  // namespace

void Comparison::differs(std::string const& text) {
  if (!difference_.empty()) return;
  if (intf_ >= 0) difference_ = world_.names().interfaces[static_cast<std::size_t>(intf_)] + ": ";
  if (name_ >= 0) difference_ += world_.names().profiles[static_cast<std::size_t>(name_)] + ": ";
  difference_ += text;
}

void Comparison::differ(char const* what, std::uint64_t library, std::uint64_t model) {
  differs(std::string{what} + ": library " + std::to_string(library) + ", model " +
          std::to_string(model));
}

void Comparison::sameTime(char const* what, double library, double model) {
  auto const bits = std::bit_cast<std::uint64_t>(library);
  digest_.add(bits);
  ++compared_;
  if (bits != std::bit_cast<std::uint64_t>(model)) [[unlikely]]
    differs(std::string{what} + ": library " + number(library) + ", model " + number(model));
}

void Comparison::sameText(char const* what, std::string const& library, std::string const& model) {
  addText(digest_, library);
  ++compared_;
  if (library != model) [[unlikely]]
    differs(std::string{what} + ": library \"" + library + "\", model \"" + model + "\"");
}

void Comparison::samePeer(char const* what, void const* library, Model::Peer const* model) {
  ++compared_;
  if (library != (model != nullptr ? model->peer : nullptr)) [[unlikely]]
    differs(std::string{what} + ": another object");
}

void Comparison::outcomes() {
  intf_ = name_ = -1;
  Outcome const& lib = world_.outcome;
  Outcome const& mod = model_.outcome;
  same("trace points passed", lib.hits, mod.hits);
  same("clock readings", lib.readings, mod.readings);
  same("Root's watcher told", lib.rootTold, mod.rootTold);
  same("writes", lib.writes.size(), mod.writes.size());
  if (!difference_.empty()) {
    for (auto const& trace : lib.traces)
      difference_ += "\n  library: " + trace.message;
    for (auto const& trace : mod.traces)
      difference_ += "\n  model:   " + trace.message;
  }
  for (std::size_t i = 0; i < lib.writes.size() && i < mod.writes.size(); ++i) {
    Write const& a = lib.writes[i];
    Write const& b = mod.writes[i];
    same("write: record", static_cast<std::uint64_t>(a.record),
         static_cast<std::uint64_t>(b.record));
    same("write: interface", static_cast<std::uint64_t>(a.intf),
         static_cast<std::uint64_t>(b.intf));
    same("write: present", a.present, b.present);
    sameTime("write: time", a.time, b.time);
  }
  if (!lib.traces.empty() || !mod.traces.empty()) {
    same("trace lines", lib.traces.size(), mod.traces.size());
    for (std::size_t i = 0; i < lib.traces.size() && i < mod.traces.size(); ++i) {
      same("trace level", static_cast<unsigned>(lib.traces[i].level),
           static_cast<unsigned>(mod.traces[i].level));
      same("trace line number", static_cast<unsigned>(lib.traces[i].line),
           static_cast<unsigned>(mod.traces[i].line));
      sameText("trace function", lib.traces[i].function, mod.traces[i].function);
      sameText("trace message", lib.traces[i].message, mod.traces[i].message);
    }
  }
  if (!lib.failures.empty() || !mod.failures.empty()) {
    same("failures", lib.failures.size(), mod.failures.size());
    for (std::size_t i = 0; i < lib.failures.size() && i < mod.failures.size(); ++i) {
      sameText("failure: attribute", lib.failures[i].attribute, mod.failures[i].attribute);
      sameText("failure: message", lib.failures[i].message, mod.failures[i].message);
    }
  }
  if (!lib.thrown.empty() || !mod.thrown.empty()) sameText("thrown", lib.thrown, mod.thrown);
}

void Comparison::profileSm(LinkFlap::LinkFlapProfileSm const& library,
                           Model::ProfileSm const& model, Depth depth) {
  same("curFlaps", library.curFlaps(), model.curFlaps);
  same("curIntervals", library.curIntervals(), model.curIntervals);
  same("curViolations", library.curViolations(), model.curViolations);
  auto const& queue = library.linkFlapTimeStamp();
  auto const& flaps = model.queue.flaps;
  same("headIndex", library.linkFlapTimeStampMetadata().headIndex, model.queue.headIndex);
  same("nextIndex", library.linkFlapTimeStampMetadata().nextIndex, model.queue.nextIndex);
  same("queue version", queue.version(), model.queue.version);
  same("queue count", queue.count(), flaps.size());
  if (queue.count() != flaps.size()) return;
  if (flaps.empty()) {
    same("empty queue's ends", queue.head() != nullptr || queue.tail() != nullptr, false);
    return;
  }
  same("head's index", queue.head()->vek_index(), flaps.front().index);
  sameTime("head's time", queue.head()->time(), flaps.front().time);
  same("tail's index", queue.tail()->vek_index(), flaps.back().index);
  sameTime("tail's time", queue.tail()->time(), flaps.back().time);
  if (depth == Depth::ends && flaps.size() > kShortQueue) return;
  std::size_t i = 0;
  for (auto walk = queue.iterator(); walk; ++walk, ++i) {
    if (i == flaps.size()) return differs("queue: more entries than its count");
    same("flap's index", walk->vek_index(), flaps[i].index);
    sameTime("flap's time", walk->time(), flaps[i].time);
  }
  same("entries walked", i, flaps.size());
}

void Comparison::intfSm(LinkFlap::LinkFlapSm const& owner, Model::TopSm& model, int intf,
                        bool deep) {
  intf_ = intf;
  auto const* const library = owner.linkFlapIntfSm().find(world_.id(intf));
  Model::IntfSm const* const expected = model.intf(intf).get();
  same("interface machine", library != nullptr, expected != nullptr);
  if (library == nullptr || expected == nullptr) return;
  same("enable", library->enable(), expected->enable);
  if (deep) heldBy(*library, *expected);
  // In the order of a walk, which is that of the model's numbers.
  auto walk = library->linkFlapProfileSm().iterator();
  for (int name = 0; name < kProfiles; ++name) {
    Model::ProfileSm const* const sm = expected->profiles[static_cast<std::size_t>(name)].get();
    if (sm == nullptr) continue;
    name_ = name;
    bool const there = walk && walk->profileName() == world_.profile(name);
    same("profile machine", there, true);
    if (!there) break;
    profileSm(*walk, *sm, deep ? Depth::whole : Depth::ends);
    if (deep) heldBy(*walk, *sm);
    ++walk;
  }
  name_ = -1;
  same("further profile machines", static_cast<bool>(walk), false);
}

void Comparison::interface(int intf) {
  if (auto const* const machine = world_.installed())
    if (auto* const model = model_.installed()) intfSm(*machine, *model, intf, false);
  if (auto const* const machine = world_.kept())
    if (auto* const model = model_.kept()) intfSm(*machine, *model, intf, false);
}

void Comparison::machine(LinkFlap::LinkFlapSm const* library, Model::TopSm* model, bool deep) {
  same("machine", library != nullptr, model != nullptr);
  if (library == nullptr || model == nullptr) return;
  std::uint32_t members = 0;
  for (int intf = 0; intf < static_cast<int>(world_.names().interfaces.size()); ++intf) {
    intfSm(*library, *model, intf, deep);
    if (model->intf(intf)) ++members;
  }
  intf_ = -1;
  same("interface machines", library->linkFlapIntfSm().members(), members);
  if (deep) heldBy(*library, *model);
}

void Comparison::machines() {
  machine(world_.installed(), model_.installed(), false);
  machine(world_.kept(), model_.kept(), false);
}

void Comparison::everything() {
  machine(world_.installed(), model_.installed(), true);
  machine(world_.kept(), model_.kept(), true);
  intf_ = -1;
  same("Root's changes", world_.root().changes(), model_.rootChanges());
  records();
  inputs();
}

void Comparison::heldBy(LinkFlap::LinkFlapSm const& library, Model::TopSm const& model) {
  same("machine: initialized", library.initialized(), true);
  same("machine: notification active", library.hasNotificationActive(), model.active);
  same("machine: marked", library.vekMarkedForDeletion(), model.marked);
  samePeer("machine: configDir", library.ethPhyIntfConfigDir().get(), model.configDir);
  samePeer("machine: statusDir", library.ethPhyIntfStatusDir().get(), model.statusDir);
  samePeer("machine: errdisable", library.errdisableConfig().get(), model.errdisable);
  samePeer("machine: config", library.config().get(), model.config);
  samePeer("machine: cause", library.causeStatus().get(), model.cause);
  same("machine: cause name", library.causeName() == world_.cause(model.causeName), true);
}

void Comparison::heldBy(LinkFlap::LinkFlapIntfSm const& library, Model::IntfSm const& model) {
  same("interface machine: initialized", library.initialized(), true);
  same("interface machine: notification active", library.hasNotificationActive(), model.active);
  same("interface machine: marked", library.vekMarkedForDeletion(), model.marked);
  samePeer("interface machine: status", library.ethPhyIntfStatus().get(), model.status);
  samePeer("interface machine: config", library.config().get(), model.config);
  samePeer("interface machine: intfConfig", library.intfConfig().get(), model.intfConfig);
  samePeer("interface machine: phyConfig", library.ethPhyIntfConfig().get(), model.phyConfig);
  samePeer("interface machine: cause", library.causeStatus().get(), model.cause);
}

void Comparison::heldBy(LinkFlap::LinkFlapProfileSm const& library, Model::ProfileSm const& model) {
  same("profile machine: initialized", library.initialized(), true);
  same("profile machine: notification active", library.hasNotificationActive(), model.active);
  same("profile machine: marked", library.vekMarkedForDeletion(), model.marked);
  samePeer("profile machine: profileConfig", library.profileConfig().get(), model.profileConfig);
  samePeer("profile machine: config", library.config().get(), model.config);
  samePeer("profile machine: phyConfig", library.ethPhyIntfConfig().get(), model.phyConfig);
  samePeer("profile machine: status", library.ethPhyIntfStatus().get(), model.status);
  samePeer("profile machine: cause", library.causeStatus().get(), model.cause);
  same("profile machine: interface", library.intfId() == world_.id(model.status->intf), true);
}

void Comparison::records() {
  for (auto& twin : world_.causeStatus) {
    std::uint32_t size = 0;
    for (int intf = 0; intf < static_cast<int>(world_.names().interfaces.size()); ++intf) {
      double const* const time = twin.lib->intfStatus().find(world_.id(intf));
      auto const& expected = twin.model.intfStatus[static_cast<std::size_t>(intf)];
      same("record present", time != nullptr, expected.has_value());
      if (time != nullptr && expected) sameTime("record's time", *time, *expected);
      if (expected) ++size;
    }
    same("records", twin.lib->intfStatus().size(), size);
    same("record's changes", twin.lib->changes(), twin.model.changes);
  }
}

/// The simulation wrote them on both sides: this holds the state objects against the model's.
void Comparison::inputs() {
  auto const interfaces = static_cast<int>(world_.names().interfaces.size());
  for (auto& twin : world_.config) {
    same("config: maxFlaps", twin.lib->maxFlaps(), twin.model.maxFlaps);
    for (int intf = 0; intf < interfaces; ++intf)
      samePeer("config: intfConfig", twin.lib->intfConfig(world_.id(intf)).get(),
               twin.model.intfConfig.get(intf));
    for (int name = 0; name < kProfiles; ++name) {
      samePeer("config: profileConfig", twin.lib->profileConfig(world_.profile(name)).get(),
               twin.model.profileConfig.get(name));
      same("config: default list", twin.lib->defaultProfileList().has(world_.profile(name)),
           twin.model.defaultProfileList.has(name));
    }
  }
  for (std::size_t v = 0; v < World::kVariants; ++v)
    for (int intf = 0; intf < interfaces; ++intf) {
      samePeer("status directory", world_.statusDir[v].lib->intfStatus(world_.id(intf)).get(),
               world_.statusDir[v].model.intfStatus.get(intf));
      samePeer("config directory", world_.configDir[v].lib->intfConfig(world_.id(intf)).get(),
               world_.configDir[v].model.intfConfig.get(intf));
    }
}

}  // namespace Simulation
