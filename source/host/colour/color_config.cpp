#include "color_config.h"

#include <cstdlib>
#include <filesystem>
#include <mutex>

#include <norvi/host/log.h>
#include <norvi/host/near_name.h>

#include "builtin_config.h"
#include "transform_size.h"

namespace norvi {

namespace {

constexpr const char* InterchangeRole = "aces_interchange";

struct Current {
    std::mutex mutex;
    ColorConfig::Ref config; ///< null until it is asked for
};

Current& GetCurrent() {
    static Current current;
    return current;
}

/// A broken file must not leave the application without colours, so it is reported and passed over.
Result<ColorConfig::Ref> ReadDefault() {
    const char* path = std::getenv("OCIO");
    if (path && *path) {
        auto config = ColorConfig::FromFile(path);
        if (config.IsOk())
            return config;
        Log(LogLevel::Error, Format("@; the built-in colour configuration is used instead of what OCIO names",
                                    config.GetError().GetMessage()));
    }
    return ColorConfig::Builtin();
}

/// A key of the steps from one space to another, or what hinders them.
String DescribeSteps(const OCIO::Config& config, const char* from, const char* to) {
    try {
        return config.getProcessor(from, to)->getCacheID();
    } catch (const OCIO::Exception& exception) {
        return exception.what();
    }
}

} // namespace

Result<ColorConfig::Ref> ColorConfig::Builtin() noexcept {
    return CatchColorErrors("the built-in colour configuration", []() -> Result<Ref> {
        return Ref(std::make_shared<ColorConfig>(MakeBuiltinConfig()));
    });
}

Result<ColorConfig::Ref> ColorConfig::FromFile(const String& path) noexcept {
    return CatchColorErrors("a colour configuration", [&]() -> Result<Ref> {
        const String what = Format("the colour configuration '@' cannot be used", path);
        // Devices and pipes might never end.
        if (std::error_code ignored; !std::filesystem::is_regular_file(path, ignored))
            return IllegalArgumentError(Format("@: there is no such file", what));
        return CatchColorErrors(what, [&]() -> Result<Ref> {
            const auto config = OCIO::Config::CreateFromFile(path.c_str());
            config->validate();
            if (auto checked = CheckTransformSizes(*config); !checked.IsOk())
                return IllegalArgumentError(Format("@: @", what, checked.GetError().GetMessage()));
            return Ref(std::make_shared<ColorConfig>(config));
        });
    });
}

Result<OCIO::ConstColorSpaceRcPtr> ColorConfig::FindSpace(std::string_view name) const {
    // The library's names end at the first zero byte.
    if (name.find('\0') == name.npos)
        if (auto space = config_->getColorSpace(String(name).c_str()))
            return space;
    BaseArray<std::string_view> candidates;
    const auto all = OCIO::SEARCH_REFERENCE_SPACE_ALL;
    for (int i = 0; i < config_->getNumColorSpaces(all, OCIO::COLORSPACE_ALL); ++i) {
        candidates.push_back(config_->getColorSpaceNameByIndex(all, OCIO::COLORSPACE_ALL, i));
        const auto space = config_->getColorSpace(String(candidates.back()).c_str());
        for (size_t alias = 0; alias < space->getNumAliases(); ++alias)
            candidates.push_back(space->getAlias(alias));
    }
    for (int i = 0; i < config_->getNumRoles(); ++i)
        candidates.push_back(config_->getRoleName(i));
    const String near = SuggestNearName(name, candidates);
    return IllegalArgumentError(near.empty() ? Format("no colour space '@'", name)
                                             : Format("no colour space '@'; did you mean '@'?", name, near));
}

String ColorConfig::DescribeContent(const OCIO::ColorSpace& space) const {
    if (space.isData())
        return "data";
    const auto interchange = config_->getColorSpace(InterchangeRole);
    // Without a role that says what the numbers of the reference mean, nothing outside of the file compares.
    if (!interchange)
        return Format("@ in @", space.getName(), config_->getCacheID());
    return Format("@ / @", DescribeSteps(*config_, space.getName(), interchange->getName()),
                  DescribeSteps(*config_, interchange->getName(), space.getName()));
}

Result<ColorConfig::Ref> CurrentColorConfig() noexcept {
    return CatchOutOfMemory([]() -> Result<ColorConfig::Ref> {
        Current& current = GetCurrent();
        {
            const std::lock_guard lock(current.mutex);
            if (current.config)
                return current.config;
        }
        // Outside of the lock, since reading logs and a listener may ask for colours. Of several readers the
        // first one's configuration stays.
        NORVI_TRY_VALUE(config, ReadDefault());
        const std::lock_guard lock(current.mutex);
        if (!current.config)
            current.config = config;
        return current.config;
    });
}

void SetCurrentColorConfig(ColorConfig::Ref config) noexcept {
    Current& current = GetCurrent();
    const std::lock_guard lock(current.mutex);
    // The old configuration ends outside of the lock, if it ends here.
    current.config.swap(config);
}

} // namespace norvi
