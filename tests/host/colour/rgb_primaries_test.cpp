#include "host/colour/rgb_primaries.h"

#include <gtest/gtest.h>

namespace norvi {
namespace {

TEST(RgbPrimaries, GiveTheMatrixOfTheStandard) {
    const Matrix3 matrix = RgbToXyz({{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, {0.3127, 0.3290}});
    // SMPTE RP 177:1993, annex B, as derived there for these primaries.
    const Matrix3 expected{
        {{0.412391, 0.357584, 0.180481}, {0.212639, 0.715169, 0.072192}, {0.019331, 0.119195, 0.950532}}};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(matrix[row][column], expected[row][column], 6e-7) << row << ' ' << column;
}

} // namespace
} // namespace norvi
