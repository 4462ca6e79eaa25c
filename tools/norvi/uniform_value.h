// Text of the command line as a value of the type that a kernel wants.
#pragma once

#include <norvi/host/data.h>

#include "norvi/element_type.h"

namespace norvi {

/// The value of `type` that `text` gives: a number, or for vectors and matrices (column by column) as many as
/// they have components, with commas between. Integers must be in range and whole; other numbers are rounded
/// to the type's precision but must not overflow it. bool also takes true and false.
Result<Data> ParseUniform(const ElementType& type, const String& text);

} // namespace norvi
