#pragma once

#include <cstdint>

#include "runtime/model/ErrdisableCauseStatus.h"

#include "statemachines/LinkFlapProfileSm.h"

namespace LinkFlap {

/// `evaluateErrDisable` for a caller that must not fail halfway: `room`, unless it is empty, is what
/// a record of the machine's interface needs, and then nothing is thrown. An err-disable takes it.
bool evaluateErrDisable(Vek::Ptr<LinkFlapProfileSm> profileSm, double flapTime,
                        double firstFlapTime, std::uint32_t maxFlaps, double interval,
                        std::uint32_t violations, std::uint32_t trackedIntervals,
                        Errdisable::CauseStatus::Room& room);

}  // namespace LinkFlap
