#include <gtest/gtest.h>

#include <set>

#include <norvi/host/noise.h>
#include <norvi/host/registry.h>

namespace norvi {
namespace {

const Vector32 somewhere{3.3f, -7.8f, 12.4f};

NoiseRef Make(const Id& id) {
    auto made = NoiseRef::Create(Registry::Get(registryid::NoiseClasses).FindEntryValue(id));
    EXPECT_TRUE(made) << id.ToString();
    return made ? *made : NoiseRef();
}

TEST(NoiseClass, EveryModeNamesAClassThatBothRegistriesMake) {
    std::set<String> ids;
    for (UInt32 mode = 0; mode < NoiseModeCount; ++mode) {
        const Id id = NoiseClassIdOfMode(mode);
        ids.insert(id.ToString());
        const Class* entered = Registry::Get(registryid::NoiseClasses).FindEntryValue(id);
        ASSERT_NE(entered, nullptr) << mode;
        EXPECT_EQ(entered->GetId(), id);
        EXPECT_EQ(FindClass(id), entered);
        EXPECT_NE(Make(id), nullptr);
    }
    // Only turbulence has two modes.
    EXPECT_EQ(ids.size(), NoiseModeCount - 1);
}

TEST(NoiseClass, ModesOfTheTable) {
    const auto tail = [](UInt32 mode) {
        const String id = NoiseClassIdOfMode(mode);
        const std::string_view prefix = "net.norvi.render.rendernoiseclass.";
        EXPECT_EQ(id.substr(0, prefix.size()), prefix);
        return id.substr(prefix.size());
    };
    const char* expected[] = {"perlin",
                              "turbulence",
                              "turbulence",
                              "gaseous",
                              "electric",
                              "box",
                              "blisteredturbulence",
                              "displacedturbulence",
                              "buya",
                              "cranal",
                              "dents",
                              "hama",
                              "luka",
                              "mod",
                              "naki",
                              "nutous",
                              "ober",
                              "pezo",
                              "poxo",
                              "sema",
                              "stupl",
                              "vl",
                              "wavyturbulence",
                              "zada",
                              "cell"};
    ASSERT_EQ(std::size(expected), NoiseModeCount);
    for (UInt32 mode = 0; mode < NoiseModeCount; ++mode)
        EXPECT_EQ(tail(mode), expected[mode]);
    for (UInt32 unknown : {NoiseModeCount, 1000u, 0xffffffffu})
        EXPECT_EQ(tail(unknown), "turbulence");
}

TEST(NoiseClass, PowerOutsideOneToSixteenIsRefusedAndChangesNothing) {
    const NoiseRef noise = Make(noiseclassid::Perlin);
    ASSERT_TRUE(noise->Init(5, 10, DataDictionary()));
    const Float before = noise->Noise(somewhere, 0);
    for (Int32 power : {0, -1, 17, 32, INT32_MIN, INT32_MAX}) {
        const Result<void> result = noise->Init(6, power, DataDictionary());
        ASSERT_FALSE(result) << power;
        EXPECT_TRUE(result.GetError().Is(errorkind::IllegalArgument));
        EXPECT_EQ(result.GetError().GetMessage(),
                  Format("the permutation table power is @, not 1 to 16", power));
    }
    EXPECT_EQ(noise->Noise(somewhere, 0), before);
    for (Int32 power : {1, 16})
        EXPECT_TRUE(noise->Init(5, power, DataDictionary())) << power;
}

TEST(NoiseClass, BeforeInitSeedIsZeroAndPowerTen) {
    const NoiseRef fresh = Make(noiseclassid::Gaseous), initialised = Make(noiseclassid::Gaseous);
    ASSERT_TRUE(initialised->Init(0, 10, DataDictionary()));
    EXPECT_EQ(fresh->Noise(somewhere, 1.5f), initialised->Noise(somewhere, 1.5f));
}

TEST(NoiseClass, InfoOfKnownAndUnknownIds) {
    const NoiseInfo* info = FindNoiseInfo(noiseclassid::Perlin);
    ASSERT_NE(info, nullptr);
    EXPECT_STREQ(info->id, noiseclassid::Perlin);
    EXPECT_EQ(info->minimum, -1);
    EXPECT_EQ(info->maximum, 1);
    EXPECT_EQ(FindNoiseInfo("net.norvi.render.rendernoiseclass"), nullptr);
    EXPECT_EQ(FindNoiseInfo(""), nullptr);
}

} // namespace
} // namespace norvi
