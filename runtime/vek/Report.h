#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <typeinfo>

#include "runtime/vek/PtrInterface.h"

#pragma GCC visibility push(default)

namespace Vek {

/// An exception that left a callback. The runtime keeps it: whoever changed the attribute does not
/// see it, the other watchers are told all the same, and this report is what becomes of it.
struct CallbackFailure {
  AttributeId attribute;      ///< the attribute whose change was being told
  std::string attributeName;  ///< empty when unknown; "in onNotificationException" when that threw
  std::string watcher;        ///< the class of the watcher that threw
  std::string message;        ///< `what()` of the exception
};

using ExceptionSink = std::function<void(CallbackFailure const&)>;

/// Puts `sink` in place of the present one and returns that; an empty one stands for the default,
/// which writes a line to standard error. Process-wide; call it on the activity thread.
ExceptionSink exceptionSinkIs(ExceptionSink sink);

/// Hands the exception now being handled to the sink, unless a `Vek::Expect` scope expects it. To
/// be called in a catch block. A sink that throws itself is overruled by the default.
void reportCallbackException(AttributeId attribute, std::string_view attributeName,
                             std::type_info const& watcher) noexcept;

}  // namespace Vek

#pragma GCC visibility pop
