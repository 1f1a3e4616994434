#pragma once

#include "runtime/vek/VekType.h"

#include "statemachines/LinkFlapSm.h"

#pragma GCC visibility push(default)

// The type records of the four machines. Each table is filled in by a function of its own file.

namespace LinkFlap {

class Root::_Type final : public Vek::VekType {
 public:
  _Type() : VekType{Root::vekTypeName, &Vek::entityType()} {}
};

class LinkFlapSm::_Type final : public Vek::VekType {
 public:
  _Type() : VekType{LinkFlapSm::vekTypeName, &Vek::ptrInterfaceType()} {}
};

class LinkFlapIntfSm::_Type final : public Vek::VekType {
 public:
  _Type() : VekType{LinkFlapIntfSm::vekTypeName, &Vek::ptrInterfaceType()} {}
};

class LinkFlapProfileSm::_Type final : public Vek::VekType {
 public:
  _Type() : VekType{LinkFlapProfileSm::vekTypeName, &Vek::ptrInterfaceType()} {}
};

void defineRoot(Vek::IntrospectionReactor& reactor, Root::_Type& type);
void defineLinkFlapSm(Vek::IntrospectionReactor& reactor, LinkFlapSm::_Type& type);
void defineLinkFlapIntfSm(Vek::IntrospectionReactor& reactor, LinkFlapIntfSm::_Type& type);
void defineLinkFlapProfileSm(Vek::IntrospectionReactor& reactor, LinkFlapProfileSm::_Type& type);

/// Builds all four records; does nothing when that was done. Runs when the library is loaded, or
/// when a record is first asked for before that.
void vekInitLinkFlapSm();

}  // namespace LinkFlap

#pragma GCC visibility pop
