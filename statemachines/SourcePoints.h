#pragma once

#include "runtime/vek/Assertion.h"
#include "runtime/vek/Trace.h"

#pragma GCC visibility push(default)

/// Every trace point and assertion of the library, in the order of its source lines.
///
/// Tools filter and count by level, line and function, so these are part of the library's
/// interface: they stand here as data and do not move when code moves. A test holds a second,
/// independently written table against this one.
namespace LinkFlap {

extern Vek::TraceHandle linkFlapTraceHandle;

/// The library's trace facility "LinkFlap". Its levels: 8 for handler entry and evaluation detail,
/// 2 for the err-disable decision and the flap times behind it.
inline Vek::TraceHandle& traceHandle() {
  return linkFlapTraceHandle;
}

// clang-format off
namespace Trace {
consteval Vek::TracePoint at(int level, int line, char const* function) {
  return {level, line, function, "LinkFlapSm", linkFlapTraceHandle};
}
inline constexpr auto logTimeStampsTitle                 = at(2,  21, "logTimeStamps");
inline constexpr auto logTimeStampsTime                  = at(2,  28, "logTimeStamps");
inline constexpr auto logTimeStampsEllipsis              = at(2,  32, "logTimeStamps");
inline constexpr auto logTimeStampsNewest                = at(2,  33, "logTimeStamps");
inline constexpr auto declareErrDisable                  = at(2,  50, "declareErrDisable");
inline constexpr auto evaluateErrDisable                 = at(8,  76, "evaluateErrDisable");
inline constexpr auto evaluateErrDisableFlapCounted      = at(8,  80, "evaluateErrDisable");
inline constexpr auto evaluateErrDisableNewInterval      = at(8,  87, "evaluateErrDisable");
inline constexpr auto evaluateErrDisableLimit            = at(8,  90, "evaluateErrDisable");
inline constexpr auto handleLinkStatus                   = at(8, 104, "handleLinkStatus");
inline constexpr auto handleProfileValues                = at(8, 176, "handleProfileValues");
inline constexpr auto linkFlapProfileSmHandleInitialized = at(8, 187, "handleInitialized");
inline constexpr auto manageProfileSm                    = at(8, 208, "manageProfileSm");
inline constexpr auto handleLinkFlapValues               = at(8, 283, "handleLinkFlapValues");
inline constexpr auto linkFlapIntfSmHandleInitialized    = at(8, 299, "handleInitialized");
inline constexpr auto handleProfileList                  = at(8, 312, "handleProfileList");
inline constexpr auto handleIntfConfigEnabled            = at(8, 321, "handleIntfConfigEnabled");
inline constexpr auto handleProfileConfig                = at(8, 343, "handleProfileConfig");
inline constexpr auto handleDefaultProfileList           = at(8, 371, "handleDefaultProfileList");
inline constexpr auto deleteLinkFlapIntfSm               = at(8, 387, "deleteLinkFlapIntfSm");
inline constexpr auto handleIntf                         = at(8, 401, "handleIntf");
inline constexpr auto handleDisabled                     = at(8, 444, "handleDisabled");
inline constexpr auto linkFlapSmHandleInitialized        = at(8, 459, "handleInitialized");
}  // namespace Trace

namespace Assert {
consteval Vek::Assertion at(int line, char const* expression, char const* function) {
  return {line, expression, function, "LinkFlapSm"};
}
inline constexpr auto handleLinkStatus                   = at(106, "initialized()",  "void LinkFlap::LinkFlapProfileSm::handleLinkStatus()");
inline constexpr auto handleProfileValues                = at(177, "initialized()",  "void LinkFlap::LinkFlapProfileSm::handleProfileValues(Vek::String, Tarn::IntfId)");
inline constexpr auto linkFlapProfileSmHandleInitialized = at(188, "!initialized()", "void LinkFlap::LinkFlapProfileSm::handleInitialized()");
inline constexpr auto manageProfileSm                    = at(210, "sm",             "void LinkFlap::manageProfileSm(LinkFlap::LinkFlapIntfSm::Ptr)");
inline constexpr auto handleLinkFlapValues               = at(284, "initialized()",  "void LinkFlap::LinkFlapIntfSm::handleLinkFlapValues()");
inline constexpr auto linkFlapIntfSmHandleInitialized    = at(300, "!initialized()", "void LinkFlap::LinkFlapIntfSm::handleInitialized()");
inline constexpr auto handleProfileList                  = at(313, "initialized()",  "void LinkFlap::LinkFlapIntfSm::handleProfileList(Vek::String)");
inline constexpr auto handleIntfConfigEnabled            = at(322, "initialized()",  "void LinkFlap::LinkFlapIntfSm::handleIntfConfigEnabled(Tarn::IntfId)");
// Left open: no line is fixed for the five below; each follows its trace point.
inline constexpr auto handleProfileConfig                = at(344, "initialized()",  "void LinkFlap::LinkFlapSm::handleProfileConfig(Vek::String)");
inline constexpr auto handleDefaultProfileList           = at(372, "initialized()",  "void LinkFlap::LinkFlapSm::handleDefaultProfileList(Vek::String)");
inline constexpr auto handleIntf                         = at(402, "initialized()",  "void LinkFlap::LinkFlapSm::handleIntf(Tarn::IntfId)");
inline constexpr auto handleDisabled                     = at(445, "initialized()",  "void LinkFlap::LinkFlapSm::handleDisabled(Vek::String)");
inline constexpr auto linkFlapSmHandleInitialized        = at(460, "!initialized()", "void LinkFlap::LinkFlapSm::handleInitialized()");
}  // namespace Assert
// clang-format on

}  // namespace LinkFlap

#pragma GCC visibility pop
