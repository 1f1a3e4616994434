#pragma once

#include <map>
#include <string>
#include <string_view>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"
#include "runtime/vek/Value.h"
#include "runtime/vek/VekType.h"

#pragma GCC visibility push(default)

// Objects by path: where a person's text meets the tree of objects.
//
//   path  = name { "/" attribute [ "[" key "]" ] }
//
// The name is that of an object which the host has put into `PathRoots`; each step is an attribute
// whose value is an object, or a member of a collection of objects. Names and keys stand as they
// are when they are plain words, else in double quotes (`quotedText`), so that any name can be said:
//
//   root/linkFlapSm/linkFlapIntfSm[Ethernet1]/linkFlapProfileSm["my [old] \"profile\""]

namespace Vek {

/// The objects at which paths begin. Process-wide; holds a reference on each until it is taken out.
/// Thread: the activity's.
class PathRoots {
 public:
  static PathRoots& global();

  void rootIs(std::string const& name, Ptr<PtrInterface const> object);
  void rootDel(std::string const& name) { roots_.erase(name); }
  Ptr<PtrInterface const> root(std::string const& name) const;
  std::map<std::string, Ptr<PtrInterface const>> const& roots() const noexcept { return roots_; }

 private:
  std::map<std::string, Ptr<PtrInterface const>> roots_;
};

/// What a path names: an object, or an attribute of one, or a member of that.
struct PathTarget {
  Ptr<PtrInterface const> object;
  VekAttr const* attr{nullptr};  ///< null: the path names the object itself
  Value key;                     ///< empty: the attribute as a whole
};

/// Reads a path. Throws `Vek::RangeException` that names the column (from 1) and what was wrong.
/// A path that ends in an attribute whose value is an object names that object when `intoObject`.
PathTarget pathTarget(std::string_view path, bool intoObject);

/// The path of an object; "0x..." with its address for one that no root leads to.
std::string objectPath(PtrInterface const& object);

/// The object of the path that [begin, end) starts with; moves `begin` behind it. Empty, and `begin`
/// untouched, when there is none.
Ptr<PtrInterface const> objectOfPath(char const*& begin, char const* end);

}  // namespace Vek

#pragma GCC visibility pop
