#pragma once

#include <functional>
#include <map>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "tools/scenario/Words.h"
#include "tools/scenario/World.h"

namespace Scenario {

/// The commands, by name.
///
/// A command is a function of the World and of its arguments. The types of its parameters say what
/// the arguments are and how they are read (`Argument`); it is called only when all of them are
/// right, so a command is carried out whole or not at all.
///
///     table.add("clock", "T", [](World& world, double time) { world.clock().secondsIs(time); });
class CommandTable {
 public:
  using Run = std::function<void(World&, Words&)>;

  struct Command {
    std::string_view usage;  ///< the arguments, as the reference writes them
    Run run;                 ///< throws `BadArguments` before anything was done
  };

  /// Null when there is no such command.
  Command const* find(std::string_view name) const;

  template <typename Body>
  void add(std::string_view name, std::string_view usage, Body body) {
    insert(name, usage, whole(body, &Body::operator()));
  }

  /// A command on the top-level machine: body(world, LinkFlapSm&, arguments...). Without one it
  /// prints "V none".
  template <typename Body>
  void addForTopSm(std::string_view name, std::string_view usage, Body body) {
    insert(name, usage, forTopSm(body, &Body::operator()));
  }

  /// A command whose first argument names an interface: body(world, LinkFlapIntfSm::Ptr,
  /// arguments...). Without a machine of it the command prints "V none".
  template <typename Body>
  void addForIntfSm(std::string_view name, std::string_view usage, Body body) {
    insert(name, usage, forIntfSm(body, &Body::operator()));
  }

  /// A command whose first arguments name an interface and a profile: body(world,
  /// LinkFlapProfileSm::Ptr, arguments...). Without a machine of both it prints "V none".
  template <typename Body>
  void addForProfileSm(std::string_view name, std::string_view usage, Body body) {
    insert(name, usage, forProfileSm(body, &Body::operator()));
  }

 private:
  void insert(std::string_view name, std::string_view usage, Run run);

  template <typename... Args>
  static std::tuple<std::decay_t<Args>...> read(Words& words) {
    // In braces, the arguments are read from left to right.
    std::tuple<std::decay_t<Args>...> arguments{Argument<std::decay_t<Args>>::read(words)...};
    words.end();
    return arguments;
  }

  // The parameters of a body are taken from the type of its call operator.

  template <typename Body, typename... Args>
  static Run whole(Body body, void (Body::*)(World&, Args...) const) {
    return [body](World& world, Words& words) {
      std::apply([&](auto const&... args) { body(world, args...); }, read<Args...>(words));
    };
  }

  template <typename Body, typename... Args>
  static Run forTopSm(Body body, void (Body::*)(World&, LinkFlap::LinkFlapSm&, Args...) const) {
    return [body](World& world, Words& words) {
      auto const arguments = read<Args...>(words);
      LinkFlap::LinkFlapSm* const top = world.machine();
      if (top == nullptr) return world.out().line("V none");
      std::apply([&](auto const&... args) { body(world, *top, args...); }, arguments);
    };
  }

  template <typename Body, typename... Args>
  static Run forIntfSm(Body body, void (Body::*)(World&, LinkFlap::LinkFlapIntfSm::Ptr const&,
                                                 Args...) const) {
    return [body](World& world, Words& words) {
      auto const arguments = read<Tarn::IntfId, Args...>(words);
      auto const sm = world.intfSm(std::get<0>(arguments));
      if (!sm) return world.out().line("V none");
      std::apply(
          [&](Tarn::IntfId const& /*intf*/, auto const&... args) { body(world, sm, args...); },
          arguments);
    };
  }

  template <typename Body, typename... Args>
  static Run forProfileSm(Body body, void (Body::*)(World&, LinkFlap::LinkFlapProfileSm::Ptr const&,
                                                    Args...) const) {
    return [body](World& world, Words& words) {
      auto const arguments = read<Tarn::IntfId, Vek::String, Args...>(words);
      auto const sm = world.profileSm(std::get<0>(arguments), std::get<1>(arguments));
      if (!sm) return world.out().line("V none");
      std::apply([&](Tarn::IntfId const& /*intf*/, Vek::String const& /*profile*/,
                     auto const&... args) { body(world, sm, args...); },
                 arguments);
    };
  }

  std::map<std::string_view, Command> commands_;
};

}  // namespace Scenario
