#include "runtime/vek/Trace.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string>
#include <utility>

#include "runtime/vek/Exception.h"

namespace Vek {

constinit CoverageStream coverageStream_;

namespace {

constinit TraceHandle::Registration* registrations{nullptr};

// Never destroyed: machines may be torn down, and trace, while statics are being destroyed.
// In memory of its own: it is needed when there is no other.
TraceSink& currentSink() noexcept {
  alignas(TraceSink) static std::byte memory[sizeof(TraceSink)];
  static auto* const sink = new (memory) TraceSink;
  return *sink;
}

void writeToStandardError(TraceRecord const& record) {
  std::fprintf(stderr, "%.*s %d %.*s:%d %.*s: %.*s\n", static_cast<int>(record.facility.size()),
               record.facility.data(), record.level, static_cast<int>(record.source.size()),
               record.source.data(), record.line, static_cast<int>(record.function.size()),
               record.function.data(), static_cast<int>(record.message.size()),
               record.message.data());
}

}  // namespace

CoverageStream& CoverageStream::operator=(std::ostream* stream) noexcept {
  stream_ = stream;
  for (auto* one = registrations; one != nullptr; one = one->next_)
    one->facility_.active_ = one->facility_.enabled_ || stream != nullptr;
  return *this;
}

TraceHandle::Registration::Registration(TraceHandle& facility) noexcept
    : facility_{facility}, next_{registrations} {
  registrations = this;
  if (coverageStream_ != nullptr) facility.active_ = true;
}

TraceHandle::Registration::~Registration() {
  Registration** place = &registrations;
  while (*place != this)
    place = &(*place)->next_;
  *place = next_;
}

void TraceHandle::levelIs(int level, bool on) {
  if (level < 0 || level >= kLevels) throwRangeException("trace level out of range");
  levels_[index(level)] = on;
  enabled_ = std::any_of(levels_.begin(), levels_.end(), [](bool enabled) { return enabled; });
  active_ = enabled_ || coverageStream_ != nullptr;
}

TraceSink traceSinkIs(TraceSink sink) {
  return std::exchange(currentSink(), std::move(sink));
}

void traceHelper(TraceHandle const& facility, char const* file, std::stringstream& message,
                 int level, bool levelFlag, char const* source, int line, char const* function) {
  std::string const text = std::move(message).str();
  TraceRecord const record{facility.name(), file, source, function, text, level, line, levelFlag};
  if (coverageStream_ != nullptr)
    *coverageStream_ << record.facility << ' ' << level << ' ' << source << ':' << line << ' '
                     << function << ' ' << text << '\n';
  if (!levelFlag) return;
  if (currentSink()) {
    // Held here, since the sink may replace itself.
    TraceSink const sink = currentSink();
    sink(record);
  } else {
    writeToStandardError(record);
  }
}

void TracePoint::lost() noexcept {
  std::fputs("Vek: a trace message was lost\n", stderr);
}

}  // namespace Vek
