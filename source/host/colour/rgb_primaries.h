// From the chromaticities of a display's primaries to its matrix.
#pragma once

#include <array>

namespace norvi {

/// CIE 1931 chromaticity coordinates.
struct Chromaticity {
    double x, y;
};

struct RgbPrimaries {
    Chromaticity red, green, blue, white;
};

/// Row by row.
using Matrix3 = std::array<std::array<double, 3>, 3>;

/// The matrix that turns linear RGB into CIE XYZ with Y = 1 for white (SMPTE RP 177:1993).
Matrix3 RgbToXyz(const RgbPrimaries& primaries);

} // namespace norvi
