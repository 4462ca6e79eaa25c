#include "rgb_primaries.h"

namespace norvi {

namespace {

using Column = std::array<double, 3>;

Column ToXyz(const Chromaticity& c) {
    return {c.x / c.y, 1.0, (1.0 - c.x - c.y) / c.y};
}

Column Cross(const Column& a, const Column& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Dot(const Column& a, const Column& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

Matrix3 RgbToXyz(const RgbPrimaries& primaries) {
    const Column red = ToXyz(primaries.red), green = ToXyz(primaries.green), blue = ToXyz(primaries.blue);
    const Column white = ToXyz(primaries.white);
    // How much of each primary makes white: Cramer's rule.
    const double volume = Dot(red, Cross(green, blue));
    const double amounts[3] = {Dot(white, Cross(green, blue)) / volume, Dot(white, Cross(blue, red)) / volume,
                               Dot(white, Cross(red, green)) / volume};
    Matrix3 matrix;
    for (int row = 0; row < 3; ++row)
        matrix[row] = {red[row] * amounts[0], green[row] * amounts[1], blue[row] * amounts[2]};
    return matrix;
}

} // namespace norvi
