#include "statemachines/SourcePoints.h"

namespace LinkFlap {

// Constant-initialised: a trace point needs no guard, and may be passed before any static is ready.
constinit Vek::TraceHandle linkFlapTraceHandle{"LinkFlap", false};

namespace {
Vek::TraceHandle::Registration const registered{linkFlapTraceHandle};
}  // namespace

}  // namespace LinkFlap
