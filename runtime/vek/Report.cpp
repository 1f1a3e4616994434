#include "runtime/vek/Report.h"

#include <cstddef>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

#include "runtime/vek/Exception.h"

namespace Vek {

namespace {

// Never destroyed: a callback may throw while statics are being destroyed.
// In memory of its own: it is needed when there is no other.
ExceptionSink& currentSink() noexcept {
  alignas(ExceptionSink) static std::byte memory[sizeof(ExceptionSink)];
  static auto* const sink = new (memory) ExceptionSink;
  return *sink;
}

void writeToStandardError(CallbackFailure const& failure) {
  std::fprintf(stderr, "Vek: exception in a callback of %s for attribute %s (%u): %s\n",
               failure.watcher.c_str(),
               failure.attributeName.empty() ? "?" : failure.attributeName.c_str(),
               failure.attribute, failure.message.c_str());
}

}  // namespace

ExceptionSink exceptionSinkIs(ExceptionSink sink) {
  return std::exchange(currentSink(), std::move(sink));
}

void reportCallbackException(AttributeId attribute, std::string_view attributeName,
                             std::type_info const& watcher) noexcept {
  try {
    CallbackFailure failure{attribute, std::string{attributeName}, typeText(watcher), {}};
    try {
      throw;
    } catch (Exception const& exception) {
      if (Expect::expected(exception.ids())) return;
      failure.message = exception.what();
    } catch (std::exception const& exception) {
      failure.message = exception.what();
    } catch (...) {
      failure.message = "not a std::exception";
    }
    if (currentSink()) {
      // Held here, since the sink may replace itself.
      ExceptionSink const sink = currentSink();
      try {
        sink(failure);
        return;
      } catch (...) {
        std::fputs("Vek: the exception sink threw; the failure it was given:\n", stderr);
      }
    }
    writeToStandardError(failure);
  } catch (...) {
    std::fprintf(stderr, "Vek: exception in a callback for attribute %u; no memory to say more\n",
                 attribute);
  }
}

}  // namespace Vek
