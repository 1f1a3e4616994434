#pragma once

#include "runtime/model/EthPhyIntfConfig.h"
#include "runtime/model/EthPhyIntfStatus.h"
#include "runtime/tarn/IntfIdValue.h"
#include "runtime/vek/Value.h"

#pragma GCC visibility push(default)

// What the reflection must know of the state types beyond their descriptors.

template <>
struct Vek::EnumName<Interface::RawLinkStatus> {
  static constexpr std::string_view name{"Interface::RawLinkStatus"};
};
template <>
struct Vek::EnumName<Interface::PhyConfigState> {
  static constexpr std::string_view name{"Interface::PhyConfigState"};
};

#pragma GCC visibility pop
