#pragma once

#include <string>
#include <utility>
#include <vector>

#include "runtime/vek/ObjectPath.h"

#include "tests/support/Switch.h"

namespace IntrospectionTest {

/// Puts objects at the beginnings of paths while it lives.
class Roots {
 public:
  Roots() = default;
  ~Roots() {
    for (std::string const& name : names_)
      Vek::PathRoots::global().rootDel(name);
  }
  Roots(Roots const&) = delete;
  Roots& operator=(Roots const&) = delete;

  void add(std::string name, Vek::Ptr<Vek::PtrInterface const> object) {
    Vek::PathRoots::global().rootIs(name, std::move(object));
    names_.push_back(std::move(name));
  }
  /// As a host does it: the Root under its name, the state objects under those of the arguments.
  void add(Switch const& sw) {
    add("root", sw.root);
    add("activity", sw.activity);
    add("ethPhyIntfConfigDir", sw.configDir);
    add("ethPhyIntfStatusDir", sw.statusDir);
    add("errdisableConfig", sw.errdisableConfig);
    add("config", sw.config);
    add("causeStatus", sw.causeStatus);
  }

 private:
  std::vector<std::string> names_;
};

}  // namespace IntrospectionTest
