#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"

namespace RuntimeTest {

using Log = std::vector<std::string>;

/// The bits of the attributes of `LinkFlap::Config`, for watchers of one kind or another.
inline constexpr Vek::AttributeMask kMaxFlaps{Vek::attributeBit(LinkFlap::Config::maxFlapsAttr.id)};
inline constexpr Vek::AttributeMask kInterval{Vek::attributeBit(LinkFlap::Config::intervalAttr.id)};
inline constexpr Vek::AttributeMask kDefaultProfileList{
    Vek::attributeBit(LinkFlap::Config::defaultProfileListAttr.id)};

/// Watches a `LinkFlap::Config` and writes every call it gets into a log: "LABEL ATTRIBUTE" with
/// "[KEY]" behind it for a member, "()" for the unkeyed form and "!" for the immediate hook. It
/// overrides every notification, whatever it asks to be offered: so a call that it did not ask for
/// is seen.
class ConfigWatcher : public LinkFlap::Config::NotifieeConst {
 public:
  ConfigWatcher(std::string label, Log& log, Vek::AttributeMask watching = Vek::kAllAttributes)
      : NotifieeConst{watching}, label_{std::move(label)}, log_{log} {}

  /// Run inside of every notification but the immediate hooks, after it was logged.
  std::function<void()> then;
  /// Run inside of the immediate hooks.
  std::function<void()> thenAtOnce;

  void onMaxFlaps() override { heard("maxFlaps"); }
  void onInterval() override { heard("interval"); }
  void onIntfConfig(Tarn::IntfId id) override { heard("intfConfig", id.name()); }
  void onIntfConfig() override { heard("intfConfig()"); }
  void onIntfConfigvekImmediate() override { atOnce("intfConfig!"); }
  void onProfileConfig(Vek::String name) override { heard("profileConfig", name); }
  void onProfileConfig() override { heard("profileConfig()"); }
  void onProfileConfigvekImmediate() override { atOnce("profileConfig!"); }
  void onDefaultProfileList(Vek::String name) override { heard("defaultProfileList", name); }
  void onDefaultProfileList() override { heard("defaultProfileList()"); }
  void onDefaultProfileListvekImmediate() override { atOnce("defaultProfileList!"); }

 private:
  void heard(std::string const& attribute) { log(attribute, then); }
  void heard(std::string const& attribute, Vek::String const& key) {
    heard(attribute + "[" + std::string{key.view()} + "]");
  }
  void atOnce(std::string const& attribute) { log(attribute, thenAtOnce); }
  // `run` is a copy: it may destroy this watcher, and with it the function it is a copy of.
  void log(std::string const& attribute, std::function<void()> const run) {
    log_.push_back(label_ + " " + attribute);
    if (run) run();
  }

  std::string label_;
  Log& log_;
};

/// A watcher that is registered with `config`.
inline Vek::Ptr<ConfigWatcher> watch(Vek::Ptr<LinkFlap::Config> const& config, std::string label,
                                     Log& log, Vek::AttributeMask watching = Vek::kAllAttributes) {
  auto watcher = Vek::make<ConfigWatcher>(std::move(label), log, watching);
  watcher->notifierIs(config);
  watcher->isRegisteredNotifieeIs(true);
  return watcher;
}

}  // namespace RuntimeTest
