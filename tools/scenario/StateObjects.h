#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "runtime/model/EthPhyIntfConfig.h"
#include "runtime/model/EthPhyIntfStatus.h"
#include "runtime/model/LinkFlapConfig.h"

#include "tools/scenario/Words.h"

namespace Scenario {

/// The values of a `LinkFlap::Config`.
struct ConfigValues {
  std::uint32_t maxFlaps{5};
  double interval{10};
};

/// The values of a `LinkFlap::ProfileConfig`.
struct ProfileValues {
  std::uint32_t maxFlaps{0};
  double interval{0};
  std::uint32_t violations{0};
  std::uint32_t trackedIntervals{0};
};

/// A member of a list of profiles, written NAME=0 or NAME=1.
struct ListMember {
  Vek::String name;
  bool on{false};
};

/// The values of a `LinkFlap::IntfConfig`.
struct IntfValues {
  bool enabled{false};
  std::vector<ListMember> profileList;
};

// Objects that have their values before anybody can watch them.
Vek::Ptr<LinkFlap::Config> configOf(ConfigValues const& values);
Vek::Ptr<LinkFlap::IntfConfig> intfConfigOf(Tarn::IntfId const& intf, IntfValues const& values);
Vek::Ptr<LinkFlap::ProfileConfig> profileConfigOf(Vek::String const& name,
                                                  ProfileValues const& values);
Vek::Ptr<Interface::EthPhyIntfConfig> phyConfigOf(Tarn::IntfId const& intf, std::uint32_t state);
Vek::Ptr<Interface::EthPhyIntfStatus> statusOf(Tarn::IntfId const& intf, std::uint32_t rawStatus);

/// The writer's side of a member. Collections hand members out read-only, as the library is to see
/// them; the program made every one of them and, like the agents of a switch, may write its own.
template <typename T>
Vek::Ptr<T> writable(Vek::Ptr<T const> const& member) {
  return Vek::Ptr<T>{const_cast<T*>(member.get())};
}

template <>
struct Argument<ConfigValues> {
  static ConfigValues read(Words& words);
};

template <>
struct Argument<ProfileValues> {
  static ProfileValues read(Words& words);
};

template <>
struct Argument<ListMember> {
  static ListMember read(Words& words);
};

template <>
struct Argument<IntfValues> {
  static IntfValues read(Words& words);
};

/// What a reference is to be pointed at: the object that it holds, none, or a new one.
enum class Target { held, none, fresh };

/// `same`, `null` or `new VALUES`; `MayBeNull` says whether `null` is possible.
template <typename Values, bool MayBeNull>
struct Redirection {
  Target target{Target::held};
  Values values{};  ///< of the new object
};

template <typename Values, bool MayBeNull>
struct Argument<Redirection<Values, MayBeNull>> {
  static Redirection<Values, MayBeNull> read(Words& words) {
    constexpr std::string_view kExpected{MayBeNull ? "one of same, null, new" : "one of same, new"};
    auto const word = words.take(kExpected);
    if (word == "same") return {};
    if (word == "null" && MayBeNull) return {Target::none, {}};
    if (word != "new") words.refuse(kExpected);
    return {Target::fresh, Argument<Values>::read(words)};
  }
};

}  // namespace Scenario
