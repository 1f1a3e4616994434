#include "agent/ErrDisableTrace.h"

#include <charconv>
#include <utility>

#include "statemachines/SourcePoints.h"

namespace LinkFlapd {

namespace {

constexpr int kDecisionLevel{2};
constexpr int kDetailLevel{8};

/// The text between two others, or nothing when the message is not of that form. The last
/// occurrence of `after` counts, as the text itself may contain it.
std::optional<std::string_view> between(std::string_view message, std::string_view before,
                                        std::string_view after) {
  if (!message.starts_with(before)) return std::nullopt;
  message.remove_prefix(before.size());
  auto const end = message.rfind(after);
  if (end == std::string_view::npos) return std::nullopt;
  return message.substr(0, end);
}

}  // namespace

ErrDisableTrace::ErrDisableTrace(int userLevel,
                                 std::function<void(Vek::TraceRecord const&)> userSink)
    : userLevel_{userLevel},
      userSink_{std::move(userSink)},
      previous_{Vek::traceSinkIs([this](Vek::TraceRecord const& message) { record(message); })} {
  LinkFlap::traceHandle().levelIs(kDecisionLevel, true);
  LinkFlap::traceHandle().levelIs(kDetailLevel, userLevel_ >= kDetailLevel);
}

ErrDisableTrace::~ErrDisableTrace() {
  LinkFlap::traceHandle().levelIs(kDecisionLevel, false);
  LinkFlap::traceHandle().levelIs(kDetailLevel, false);
  Vek::traceSinkIs(std::move(previous_));
}

std::optional<ErrDisableReason> ErrDisableTrace::take() {
  return std::exchange(reason_, std::nullopt);
}

void ErrDisableTrace::record(Vek::TraceRecord const& record) {
  if (record.level == kDecisionLevel) decision(record.message);
  if (record.level <= userLevel_) userSink_(record);
}

void ErrDisableTrace::decision(std::string_view message) {
  if (auto const counts = between(message, "Interface exceeded ", " flaps; errdisabling it")) {
    reason_.emplace();
    auto const number = counts->substr(counts->rfind(' ') + 1);
    std::from_chars(number.data(), number.data() + number.size(), reason_->maxFlaps);
    return;
  }
  if (!reason_) return;
  if (auto const profile =
          between(message, "Flaps occurred as per ", " in the following time frame : ")) {
    reason_->profile = *profile;
  } else {
    // A time of a flap: the oldest come first, the newest last, "..." between them.
    if (reason_->firstFlap.empty()) reason_->firstFlap = message;
    reason_->lastFlap = message;
  }
}

}  // namespace LinkFlapd
