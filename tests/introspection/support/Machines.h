#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string_view>

#include "runtime/model/StateTypes.h"

#include "statemachines/LinkFlapSm.h"

#include "introspection/GenericIfs.h"

#include "tests/introspection/support/Operations.h"
#include "tests/support/Switch.h"

namespace IntrospectionTest {

inline Tarn::IntfId const kEthernet1{"Ethernet1"};

/// A switch with the machine installed. Ethernet1 has settings of its own, with the profile "fast".
struct Machines {
  Machines() {
    sw.addInterface(kEthernet1);
    sw.profileIs("fast", {.maxFlaps = 2, .interval = 4, .violations = 3, .trackedIntervals = 5});
    sw.settingsIs(kEthernet1, true, {{"fast", true}});
    sw.start();
    (void)sw.takeTraces();
    (void)sw.takeWrites();
  }

  LinkFlap::LinkFlapSm& top() const { return sw.machine(); }
  LinkFlap::LinkFlapIntfSm& intf() const { return *sw.intfSm(kEthernet1); }
  LinkFlap::LinkFlapProfileSm& profile() const { return *sw.profileSm(kEthernet1, "fast"); }

  Switch sw;
};

/// One of the four machine types, with what is needed to look at an object of it.
struct ViewedType {
  std::string_view bareName;
  Vek::VekType const* (*record)();
  std::unique_ptr<Vek::GenericIf> (*view)(Machines const&, bool readOnly);
  Vek::PtrInterface* (*object)(Machines const&);
};

inline std::ostream& operator<<(std::ostream& out, ViewedType const& type) {
  return out << type.bareName;
}

inline auto viewedTypes() {
  using namespace LinkFlap;
  return testing::Values(
      ViewedType{"Root", Root::_fwkType,
                 [](Machines const& m, bool readOnly) -> std::unique_ptr<Vek::GenericIf> {
                   return std::make_unique<Root::GenericIf_>(m.sw.root, readOnly);
                 },
                 [](Machines const& m) -> Vek::PtrInterface* { return m.sw.root.get(); }},
      ViewedType{"LinkFlapSm", LinkFlapSm::_fwkType,
                 [](Machines const& m, bool readOnly) -> std::unique_ptr<Vek::GenericIf> {
                   return std::make_unique<LinkFlapSm::GenericIf_>(&m.top(), readOnly);
                 },
                 [](Machines const& m) -> Vek::PtrInterface* { return &m.top(); }},
      ViewedType{"LinkFlapIntfSm", LinkFlapIntfSm::_fwkType,
                 [](Machines const& m, bool readOnly) -> std::unique_ptr<Vek::GenericIf> {
                   return std::make_unique<LinkFlapIntfSm::GenericIf_>(&m.intf(), readOnly);
                 },
                 [](Machines const& m) -> Vek::PtrInterface* { return &m.intf(); }},
      ViewedType{"LinkFlapProfileSm", LinkFlapProfileSm::_fwkType,
                 [](Machines const& m, bool readOnly) -> std::unique_ptr<Vek::GenericIf> {
                   return std::make_unique<LinkFlapProfileSm::GenericIf_>(&m.profile(), readOnly);
                 },
                 [](Machines const& m) -> Vek::PtrInterface* { return &m.profile(); }});
}

/// A test that runs for each of the four types.
class EachView : public testing::TestWithParam<ViewedType> {
 protected:
  Machines machines;
  Vek::VekType const& record{*GetParam().record()};
  std::unique_ptr<Vek::GenericIf> view{GetParam().view(machines, false)};
  std::unique_ptr<Vek::GenericIf> readOnly{GetParam().view(machines, true)};
  Vek::PtrInterface* object{GetParam().object(machines)};
};

inline std::string bareNameOf(testing::TestParamInfo<ViewedType> const& info) {
  return std::string{info.param.bareName};
}

}  // namespace IntrospectionTest
