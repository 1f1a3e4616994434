// The code of docs/introspection.md, as it stands there (check-code.sh compares), and what it says
// that comes of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

#include "runtime/vek/Exception.h"
#include "runtime/vek/GenericIf.h"
#include "runtime/vek/ObjectPath.h"

#include "tests/support/Switch.h"

namespace {

void publish(LinkFlap::Root::Ptr const& root, Vek::Ptr<LinkFlap::Config> const& config) {
  Vek::PathRoots::global().rootIs("linkFlap", root);
  Vek::PathRoots::global().rootIs("config", config);
}

/// Prints every attribute of the object at `path` that can be read.
void print(std::string const& path, std::ostream& out) {
  auto const target = Vek::pathTarget(path, true);
  auto const view = Vek::genericIfOf(target.object, true);  // read-only
  for (auto const& attr : view->type().attrs()) {
    if (attr->read == nullptr) continue;
    Vek::Value value;
    view->attributeOp({attr->id, Vek::GenericIf::OpCode::get, {}}, {}, value);
    out << attr->name << " = " << value.text() << '\n';
  }
}

void readmit(std::string const& interface) {
  auto const target = Vek::pathTarget("linkFlap/linkFlapSm", true);
  auto const view = Vek::genericIfOf(target.object, false);
  Vek::Value none;
  view->attributeOp({view->attributeId("handleIntf"), Vek::GenericIf::OpCode::call, {}},
                    {Vek::Value{Vek::String{Vek::quotedText(interface)}}}, none);
}

TEST(DocumentedUse, IsWhatThePageSays) {
  Switch sw{{.maxFlaps = 2, .interval = 10}};
  publish(sw.root, sw.config);
  sw.addInterface(Tarn::IntfId{"Ethernet1"});
  sw.addInterface(Tarn::IntfId{"Ethernet 1/1"});
  sw.start();

  std::ostringstream out;
  print("config", out);
  EXPECT_EQ(out.str(), "maxFlaps = 2\ninterval = 10\n");

  (void)sw.takeTraces();
  readmit("Ethernet 1/1");
  EXPECT_THAT(sw.takeMessages(), testing::Contains("LinkFlapSm::handleIntf(Ethernet 1/1)"));

  Vek::PathRoots::global().rootDel("linkFlap");
  Vek::PathRoots::global().rootDel("config");
}

}  // namespace
