// A colour configuration, and which one is current.
#pragma once

#include <norvi/host/color_profile.h>

#include "ocio.h"

namespace norvi {

/// Immutable; the library's operations on it lock inside where they must.
class ColorConfig {
  public:
    using Ref = std::shared_ptr<const ColorConfig>;

    explicit ColorConfig(OCIO::ConstConfigRcPtr config) : config_(std::move(config)) {}

    static Result<Ref> Builtin() noexcept;
    static Result<Ref> FromFile(const String& path) noexcept;

    const OCIO::ConstConfigRcPtr& Get() const { return config_; }

    /// The space with this name, alias or role; an illegal-argument error with a suggestion if there is none.
    Result<OCIO::ConstColorSpaceRcPtr> FindSpace(std::string_view name) const;

    /// A text that is the same for two spaces if, and as far as one can know only if, they mean the same.
    String DescribeContent(const OCIO::ColorSpace& space) const;

  private:
    OCIO::ConstConfigRcPtr config_;
};

/// The current configuration; reads it at the first call.
Result<ColorConfig::Ref> CurrentColorConfig() noexcept;
void SetCurrentColorConfig(ColorConfig::Ref config) noexcept;

} // namespace norvi
