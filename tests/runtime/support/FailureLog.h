#pragma once

#include <string>
#include <utility>
#include <vector>

#include "runtime/vek/Report.h"

namespace RuntimeTest {

/// Keeps the exceptions that leave callbacks while it lives, one line each:
/// "NAME (ID) of WATCHER: MESSAGE".
class FailureLog {
 public:
  FailureLog()
      : previous_{Vek::exceptionSinkIs([this](Vek::CallbackFailure const& failure) {
          lines_.push_back(failure.attributeName + " (" + std::to_string(failure.attribute) +
                           ") of " + failure.watcher + ": " + failure.message);
        })} {}
  ~FailureLog() { Vek::exceptionSinkIs(std::move(previous_)); }
  FailureLog(FailureLog const&) = delete;
  FailureLog& operator=(FailureLog const&) = delete;

  std::vector<std::string> const& lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
  Vek::ExceptionSink previous_;
};

}  // namespace RuntimeTest
