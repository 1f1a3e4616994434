#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Scenario {

/// The tree of objects by path and name, as a tool sees it that knows no type of it: everything goes
/// through the generic interface. Paths begin at the objects in `Vek::PathRoots`.
///
/// Each operation prints its result lines through `line`. What it cannot do it reports as a
/// `Vek::Exception`, before anything was changed.
class TreeTool {
 public:
  using Line = std::function<void(std::string const&)>;

  explicit TreeTool(Line line) : line_{std::move(line)} {}

  /// The attributes of an object, its own and those of its bases; or the members of a collection.
  void list(std::string_view path) const;
  /// The value of an attribute or a member; "none" for an absent member.
  void get(std::string_view path) const;
  void set(std::string_view path, std::string_view value) const;
  void call(std::string_view path, std::vector<std::string> const& arguments) const;
  /// Makes a member, or returns the present one; prints the path of it.
  void make(std::string_view path, std::vector<std::string> const& arguments) const;
  /// Removes a member, or what the attribute holds: "some", or "none" when there was none.
  void remove(std::string_view path) const;
  /// The table of a type as it is registered.
  void type(std::string_view name) const;

 private:
  Line line_;
};

/// The words of a line, separated by blanks; a part in double quotes belongs to its word, blanks
/// included. Throws `Vek::RangeException` for a quote that is not closed.
std::vector<std::string> quotedWords(std::string_view text);

}  // namespace Scenario
