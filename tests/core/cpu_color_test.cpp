// Colour conversion in kernels.
#include "support/test_kernels.h"

namespace norvi {
namespace {

class ColorTest : public ProgramTest {
  protected:
    ColorTest() {
        classes.Enter<ColorConverter>("converter");
        AddKernelWithColor("k");
    }
    void AddKernelWithColor(const char* id) {
        Store<Float32>("data", {0.5f, 0.25f, 0, 0, 0, 0, 0, 0, 0});
        EXPECT_OK(program->AddKernel(id, "converter", false, {}));
        EXPECT_OK(program->SetBufferToActiveKernelSameId("data"));
    }
    /// The kernel's colour there and back.
    BaseArray<Float32> Convert() {
        EXPECT_OK(program->UpdateUniforms());
        EXPECT_OK(program->DispatchKernel(1, 1, 1, false));
        return Read<Float32>("data");
    }
    void ExpectConversion(float red, float green) {
        const auto data = Convert();
        EXPECT_NEAR(data[3], red, 1e-5f);
        EXPECT_NEAR(data[4], green, 1e-5f);
        EXPECT_NEAR(data[6], 0.5f, 1e-5f);
        EXPECT_NEAR(data[7], 0.25f, 1e-5f);
    }

    const ColorProfileRef linear = *ColorProfile::FromName("Linear Rec.709");
    const ColorProfileRef encoded = *ColorProfile::FromName("sRGB");
    // 0.5 and 0.25, encoded by the published sRGB curve.
    static constexpr float EncodedRed = 0.735357f, EncodedGreen = 0.537099f;
};

TEST_F(ColorTest, NothingIsConvertedWithoutSpaces) {
    ExpectConversion(0.5f, 0.25f);
    for (const auto& [input, output] : {std::pair<ColorProfileRef, ColorProfileRef>{nullptr, nullptr},
                                        {nullptr, encoded},
                                        {std::make_shared<ColorProfile>(), encoded},
                                        {linear, nullptr}}) {
        EXPECT_OK(program->UpdateColorConversionActiveKernel(input, output, "there", "back"));
        ExpectConversion(0.5f, 0.25f);
    }
    // The render space stands in for a missing input space.
    program->SetRenderSpace(linear);
    EXPECT_OK(program->UpdateColorConversionActiveKernel(nullptr, encoded, "there", "back"));
    ExpectConversion(EncodedRed, EncodedGreen);
}

TEST_F(ColorTest, AFailureNamesTheSideAndLeavesNothing) {
    for (const char* attempt : {"first", "second"})
        EXPECT_TRUE(FailsWith(program->UpdateColorConversionActiveKernel(
                                  linear, std::make_shared<ColorProfile>(), "there", "back"),
                              errorkind::IllegalArgument, "the target colour profile is empty"))
            << attempt;
    ExpectConversion(0.5f, 0.25f);
}

TEST_F(ColorTest, AKernelHasOneConversionAndKeepsTheFirstNames) {
    EXPECT_OK(program->UpdateColorConversionActiveKernel(linear, encoded, "there", "back"));
    EXPECT_OK(program->UpdateColorConversionActiveKernel(linear, encoded, "back", "there"));
    ExpectConversion(EncodedRed, EncodedGreen);
    EXPECT_OK(program->CopyKernel("k", "copy", false, {}));
    program->SetActiveKernel("copy");
    ExpectConversion(EncodedRed, EncodedGreen);
    // Another pair takes the place of the first, in this kernel alone.
    EXPECT_OK(program->UpdateColorConversionActiveKernel(encoded, linear, "there", "back"));
    ExpectConversion(0.214041f, 0.0508761f);
    program->SetActiveKernel("k");
    ExpectConversion(EncodedRed, EncodedGreen);
}

TEST_F(ColorTest, ConversionsWorkAgainAfterReset) {
    EXPECT_OK(program->UpdateColorConversionActiveKernel(linear, encoded, "there", "back"));
    EXPECT_OK(program->Reset());
    EXPECT_TRUE(FailsWith(program->UpdateColorConversionActiveKernel(linear, encoded, "there", "back"),
                          errorkind::IllegalState, "no active kernel set"));
    AddKernelWithColor("again");
    EXPECT_OK(program->UpdateColorConversionActiveKernel(linear, encoded, "there", "back"));
    ExpectConversion(EncodedRed, EncodedGreen);
}

TEST_F(ColorTest, AParameterOfAnotherTypeIsRefused) {
    EXPECT_OK(program->UpdateColorConversionActiveKernel(linear, encoded, "data", "back"));
    EXPECT_TRUE(FailsWith(program->UpdateUniforms(), errorkind::IllegalState,
                          "what is bound to 'data' is of type norvi::ColorConversionFunction, but the "
                          "kernel's parameter is of type Block<float32>"));
}

} // namespace
} // namespace norvi
