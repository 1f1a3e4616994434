#include "tools/scenario/Commands.h"
#include "tools/scenario/TreeTool.h"

namespace Scenario {

namespace {

TreeTool toolOf(World& world) {
  return TreeTool{[&world](std::string const& text) { world.out().line(text); }};
}

/// The path, and what follows it.
struct PathAndRest {
  std::string path;
  std::vector<std::string> rest;
};

PathAndRest split(SourceText const& text) {
  auto words = quotedWords(text.text);
  std::string const path = words.empty() ? std::string{} : words.front();
  if (!words.empty()) words.erase(words.begin());
  return {path, std::move(words)};
}

/// A command whose only argument is a path.
template <void (TreeTool::*Operation)(std::string_view) const>
void onPath(World& world, SourceText const& text) {
  (toolOf(world).*Operation)(text.text);
}

/// A command with a path and arguments.
template <void (TreeTool::*Operation)(std::string_view, std::vector<std::string> const&) const>
void withArguments(World& world, SourceText const& text) {
  auto const [path, arguments] = split(text);
  (toolOf(world).*Operation)(path, arguments);
}

}  // namespace

void addTreeCommands(CommandTable& table) {
  table.add("ls", "PATH",
            [](World& world, SourceText const& text) { onPath<&TreeTool::list>(world, text); });
  table.add("get", "PATH",
            [](World& world, SourceText const& text) { onPath<&TreeTool::get>(world, text); });
  table.add("set", "PATH VALUE", [](World& world, SourceText const& text) {
    auto const [path, values] = split(text);
    // One value: it is given as it stands, so that what is wrong with it is said of the whole.
    auto const at = text.text.find(' ', path.size());
    toolOf(world).set(path, at == std::string::npos ? std::string{} : text.text.substr(at + 1));
  });
  table.add("call", "PATH [ARG ...]", [](World& world, SourceText const& text) {
    withArguments<&TreeTool::call>(world, text);
  });
  table.add("new", "PATH [ARG ...]", [](World& world, SourceText const& text) {
    withArguments<&TreeTool::make>(world, text);
  });
  table.add("del", "PATH",
            [](World& world, SourceText const& text) { onPath<&TreeTool::remove>(world, text); });
  table.add("type", "NAME",
            [](World& world, SourceText const& text) { onPath<&TreeTool::type>(world, text); });
}

}  // namespace Scenario
