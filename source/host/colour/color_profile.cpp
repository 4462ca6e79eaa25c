#include <norvi/host/color_profile.h>

#include "color_config.h"

namespace norvi {

namespace {

/// FNV-1a, 64 bits.
UInt64 HashText(std::string_view text) {
    UInt64 hash = 0xcbf29ce484222325;
    for (const char c : text)
        hash = (hash ^ static_cast<UChar>(c)) * 0x100000001b3;
    return hash;
}

ColorSpaceInfo DescribeSpace(const OCIO::ColorSpace& space) {
    ColorSpaceInfo info{space.getName(), {}, space.getDescription()};
    for (size_t i = 0; i < space.getNumAliases(); ++i)
        info.aliases.push_back(space.getAlias(i));
    return info;
}

} // namespace

Result<ColorProfileRef> ColorProfile::FromName(std::string_view name) noexcept {
    return CatchColorErrors("a colour space", [&]() -> Result<ColorProfileRef> {
        NORVI_TRY_VALUE(config, CurrentColorConfig());
        NORVI_TRY_VALUE(space, config->FindSpace(name));
        auto profile = std::make_shared<ColorProfile>();
        profile->name_ = space->getName();
        profile->description_ = space->getDescription();
        profile->content_ = config->DescribeContent(*space);
        profile->hash_ = HashText(profile->content_);
        profile->config_ = config;
        return ColorProfileRef(std::move(profile));
    });
}

Result<BaseArray<ColorSpaceInfo>> ListColorSpaces() noexcept {
    return CatchColorErrors("the list of colour spaces", []() -> Result<BaseArray<ColorSpaceInfo>> {
        NORVI_TRY_VALUE(current, CurrentColorConfig());
        const OCIO::Config& config = *current->Get();
        const auto all = OCIO::SEARCH_REFERENCE_SPACE_ALL;
        BaseArray<ColorSpaceInfo> spaces;
        for (int i = 0; i < config.getNumColorSpaces(all, OCIO::COLORSPACE_ACTIVE); ++i) {
            const char* name = config.getColorSpaceNameByIndex(all, OCIO::COLORSPACE_ACTIVE, i);
            spaces.push_back(DescribeSpace(*config.getColorSpace(name)));
        }
        return spaces;
    });
}

Result<void> LoadColorConfig(const Url& url) noexcept {
    NORVI_TRY_VALUE(config, ColorConfig::FromFile(url.ToString()));
    SetCurrentColorConfig(std::move(config));
    return OK;
}

Result<void> UseBuiltinColorConfig() noexcept {
    NORVI_TRY_VALUE(config, ColorConfig::Builtin());
    SetCurrentColorConfig(std::move(config));
    return OK;
}

} // namespace norvi
