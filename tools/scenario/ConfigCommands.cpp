#include "tools/scenario/Commands.h"
#include "tools/scenario/StateObjects.h"

namespace Scenario {

// In this and the following files a value is compared before it is set, and a member looked up
// before it is deleted: what changes nothing never reaches a setter, so that a history tests the
// library and not how the runtime treats idle writes.

namespace {

enum class ConfigAttribute { maxFlaps, interval };
enum class ProfileAttribute { maxFlaps, violations, trackedIntervals, interval };

/// An attribute, and the value that it is to have: `interval` takes seconds, others take `number`.
template <typename Attribute>
struct Setting {
  Attribute attribute{};
  std::uint32_t number{0};
  double interval{0};
};

}  // namespace

template <>
inline constexpr std::array<std::string_view, 2> kWordsOf<ConfigAttribute>{"maxFlaps", "interval"};

template <>
inline constexpr std::array<std::string_view, 4> kWordsOf<ProfileAttribute>{
    "maxFlaps", "violations", "trackedIntervals", "interval"};

template <typename Attribute>
struct Argument<Setting<Attribute>> {
  static Setting<Attribute> read(Words& words) {
    Setting<Attribute> setting;
    setting.attribute = Argument<Attribute>::read(words);
    if (setting.attribute == Attribute::interval) {
      setting.interval = Argument<double>::read(words);
    } else {
      setting.number = Argument<std::uint32_t>::read(words);
    }
    return setting;
  }
};

namespace {

void profileIs(World& world, Vek::String const& name, std::optional<ProfileValues> const& values) {
  world.config()->profileConfigIs(name, profileConfigOf(name, values.value_or(ProfileValues{})));
}

void intfConfigIs(World& world, Tarn::IntfId const& intf, IntfValues const& values) {
  world.config()->intfConfigIs(intf, intfConfigOf(intf, values));
}

void addGlobalCommands(CommandTable& table) {
  table.add("cfg", "maxFlaps N | cfg interval D",
            [](World& world, Setting<ConfigAttribute> const& setting) {
              auto const config = world.config();
              switch (setting.attribute) {
                case ConfigAttribute::maxFlaps:
                  if (config->maxFlaps() != setting.number) config->maxFlapsIs(setting.number);
                  break;
                case ConfigAttribute::interval:
                  if (!Vek::sameValue(config->interval(), setting.interval))
                    config->intervalIs(setting.interval);
                  break;
              }
            });

  table.add("default", "NAME 0|1", [](World& world, Vek::String const& name, bool on) {
    auto const config = world.config();
    bool const* const present = config->defaultProfileList().find(name);
    if (present == nullptr || *present != on) config->defaultProfileListIs(name, on);
  });

  table.add("default.del", "NAME", [](World& world, Vek::String const& name) {
    auto const config = world.config();
    if (config->defaultProfileList().has(name)) config->defaultProfileListDel(name);
  });
}

void addProfileCommands(CommandTable& table) {
  constexpr std::string_view kUsage{"NAME [MAXFLAPS INTERVAL VIOLATIONS TRACKEDINTERVALS]"};

  table.add("profile.add", kUsage,
            [](World& world, Vek::String const& name, std::optional<ProfileValues> const& values) {
              profileIs(world, name, values);
            });

  table.add("profile.replace", kUsage,
            [](World& world, Vek::String const& name, std::optional<ProfileValues> const& values) {
              if (world.config()->profileConfig().has(name)) profileIs(world, name, values);
            });

  table.add("profile.del", "NAME", [](World& world, Vek::String const& name) {
    auto const config = world.config();
    if (config->profileConfig().has(name)) config->profileConfigDel(name);
  });

  table.add("profile.set",
            "NAME maxFlaps|violations|trackedIntervals N | profile.set NAME interval D",
            [](World& world, Vek::String const& name, Setting<ProfileAttribute> const& setting) {
              auto const profile = writable(world.config()->profileConfig(name));
              if (!profile) return;
              switch (setting.attribute) {
                case ProfileAttribute::maxFlaps:
                  if (profile->maxFlaps() != setting.number) profile->maxFlapsIs(setting.number);
                  break;
                case ProfileAttribute::violations:
                  if (profile->violations() != setting.number)
                    profile->violationsIs(setting.number);
                  break;
                case ProfileAttribute::trackedIntervals:
                  if (profile->trackedIntervals() != setting.number)
                    profile->trackedIntervalsIs(setting.number);
                  break;
                case ProfileAttribute::interval:
                  if (!Vek::sameValue(profile->interval(), setting.interval))
                    profile->intervalIs(setting.interval);
                  break;
              }
            });
}

void addIntfConfigCommands(CommandTable& table) {
  constexpr std::string_view kUsage{"IF 0|1 [NAME=0|1 ...]"};

  table.add("lfintf.add", kUsage,
            [](World& world, Tarn::IntfId const& intf, IntfValues const& values) {
              intfConfigIs(world, intf, values);
            });

  table.add("lfintf.replace", kUsage,
            [](World& world, Tarn::IntfId const& intf, IntfValues const& values) {
              if (world.config()->intfConfig().has(intf)) intfConfigIs(world, intf, values);
            });

  table.add("lfintf.del", "IF", [](World& world, Tarn::IntfId const& intf) {
    auto const config = world.config();
    if (config->intfConfig().has(intf)) config->intfConfigDel(intf);
  });

  table.add("lfintf.enabled", "IF 0|1", [](World& world, Tarn::IntfId const& intf, bool on) {
    auto const settings = writable(world.config()->intfConfig(intf));
    if (settings && settings->enabled() != on) settings->enabledIs(on);
  });

  table.add("lfintf.profile", "IF NAME 0|1",
            [](World& world, Tarn::IntfId const& intf, Vek::String const& name, bool on) {
              auto const settings = writable(world.config()->intfConfig(intf));
              if (!settings) return;
              bool const* const present = settings->profileList().find(name);
              if (present == nullptr || *present != on) settings->profileListIs(name, on);
            });

  table.add("lfintf.profile.del", "IF NAME",
            [](World& world, Tarn::IntfId const& intf, Vek::String const& name) {
              auto const settings = writable(world.config()->intfConfig(intf));
              if (settings && settings->profileList().has(name)) settings->profileListDel(name);
            });
}

}  // namespace

void addConfigCommands(CommandTable& table) {
  addGlobalCommands(table);
  addProfileCommands(table);
  addIntfConfigCommands(table);
}

}  // namespace Scenario
