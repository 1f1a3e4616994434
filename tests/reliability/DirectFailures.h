#pragma once

#include <string>

/// What a scenario does not reach: registering watchers, re-pointing reactors, changing the
/// activity, delivering, tracking, the first readings of a process. Returns what is wrong, or
/// nothing; `cases` is the number of failed allocations. To be called before anything else.
std::string directFailures(unsigned& cases);
