// The global allocation functions, counted and made to fail.
#pragma once

#include <norvi/host/types.h>

namespace norvi::allocation {

/// Calls of an allocation function so far.
Int GetCalls();
/// Allocations that were not freed yet.
Int GetLiving();
/// Lets the next `count` allocations succeed and the one after them fail, once or from then on.
void FailAfter(Int count, bool forGood);
/// Lets all succeed again; was there one that failed?
bool StopFailing();

} // namespace norvi::allocation
