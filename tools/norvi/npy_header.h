// The text in front of the elements of a .npy file: a dictionary as Python writes it.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

struct NpyHeader {
    String elementCode; ///< "<f4"
    Bool isFortranOrder = false;
    BaseArray<Int> shape;
};

/// Reads "{'descr': '<f4', 'fortran_order': False, 'shape': (3, 4), }". Each of the three keys must be there
/// once.
Result<NpyHeader> ParseNpyHeader(std::string_view text);
String NpyHeaderText(const NpyHeader& header);

} // namespace norvi
