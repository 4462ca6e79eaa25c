#include <sstream>

#include <norvi/host/noise.h>
#include <norvi/host/registry.h>

#include "support/results.h"

namespace norvi {
namespace {

const Vector32 somewhere{3.3f, -7.8f, 12.4f};

NoiseRef Make(const Id& id) {
    auto made = NoiseRef::Create(Registry::Get(registryid::NoiseClasses).FindEntryValue(id));
    EXPECT_TRUE(made) << id.ToString();
    return made ? *made : NoiseRef();
}

TEST(NoiseClass, EveryModeNamesAClassThatBothRegistriesMake) {
    std::istringstream names("perlin turbulence turbulence gaseous electric box blisteredturbulence "
                             "displacedturbulence buya cranal dents hama luka mod naki nutous ober pezo poxo "
                             "sema stupl vl wavyturbulence zada cell");
    UInt32 mode = 0;
    for (String name; names >> name; ++mode) {
        const Id id = NoiseClassIdOfMode(mode);
        EXPECT_EQ(id.ToString(), "net.norvi.render.rendernoiseclass." + name);
        EXPECT_EQ(FindClass(id), Registry::Get(registryid::NoiseClasses).FindEntryValue(id));
        EXPECT_STREQ(FindNoiseInfo(id.ToString())->id, id.ToString().c_str());
        EXPECT_NE(Make(id), nullptr);
    }
    EXPECT_EQ(mode, NoiseModeCount);
    for (UInt32 unknown : {NoiseModeCount, 1000u, 0xffffffffu})
        EXPECT_STREQ(NoiseClassIdOfMode(unknown), noiseclassid::Turbulence);
    EXPECT_EQ(FindNoiseInfo("net.norvi.render.rendernoiseclass"), nullptr);
}

TEST(NoiseClass, PowerOutsideOneToSixteenIsRefusedAndChangesNothing) {
    const NoiseRef fresh = Make(noiseclassid::Perlin), noise = Make(noiseclassid::Perlin);
    ASSERT_OK(noise->Init(0, 10, DataDictionary()));
    for (Int32 power : {0, -1, 17, 32, INT32_MIN, INT32_MAX})
        EXPECT_TRUE(FailsWith(noise->Init(6, power, DataDictionary()), errorkind::IllegalArgument,
                              Format("the permutation table power is @, not 1 to 16", power)));
    EXPECT_EQ(noise->Noise(somewhere, 1.5f), fresh->Noise(somewhere, 1.5f));
    for (Int32 power : {1, 16})
        EXPECT_OK(noise->Init(5, power, DataDictionary()));
}

} // namespace
} // namespace norvi
