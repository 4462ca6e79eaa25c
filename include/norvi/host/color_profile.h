// Colour spaces by name.
//
// Spaces are those of the current colour configuration. It is, in this order: the file that the application
// has given (LoadColorConfig), the file that the environment variable OCIO names, the built-in one. It is
// read when the first operation of this file needs it. docs/colour.md lists the spaces of the built-in
// configuration.
#pragma once

#include <memory>

#include <norvi/host/result.h>
#include <norvi/host/url.h>

namespace norvi {

class ColorConfig;
class ColorProfile;

/// A counted reference to an immutable profile. Null is allowed where an interface says so.
using ColorProfileRef = std::shared_ptr<const ColorProfile>;

/// One colour space of one configuration; the empty profile stands for none. Immutable, so any number of
/// threads may use it. A profile keeps its configuration: it means the same after another one was loaded.
class ColorProfile {
  public:
    /// The empty profile.
    ColorProfile() = default;

    /// The space of the current configuration that has this name, alias or role; ASCII case counts nothing.
    /// An unknown name is an illegal-argument error that suggests a near one. What hinders a conversion (a
    /// lookup table that is missing, for example) shows in ColorProfileConvert::Init.
    ///
    /// Cost: tens of microseconds to milliseconds; keep the profile.
    static Result<ColorProfileRef> FromName(std::string_view name) noexcept;

    /// The space's own name, also where an alias was asked for. Empty for the empty profile.
    const String& GetName() const { return name_; }
    /// One line or more for people; may be empty.
    const String& GetDescription() const { return description_; }
    Bool IsEmpty() const { return !config_; }

    /// Whether both profiles mean the same colours: the steps from the space to ACES2065-1 and back are the
    /// same, whatever names and configurations they have. Profiles of configurations that do not say what
    /// ACES2065-1 is (the role aces_interchange) are only equal within one configuration. The empty profile
    /// is equal to the empty profile alone.
    Bool IsEqual(const ColorProfile& other) const { return content_ == other.content_; }
    /// The same for equal profiles, in every process. 0 for the empty profile.
    UInt64 GetHashCode() const { return hash_; }

    /// The configuration that the profile is of; null for the empty profile. Opaque.
    const std::shared_ptr<const ColorConfig>& GetConfig() const { return config_; }

  private:
    String name_;
    String description_;
    String content_; ///< what IsEqual compares; see ColorConfig::DescribeContent
    UInt64 hash_ = 0;
    std::shared_ptr<const ColorConfig> config_;
};

/// What a list of spaces shows.
struct ColorSpaceInfo {
    String name;
    BaseArray<String> aliases;
    String description;
};

/// The spaces of the current configuration in its own order, without those that it declares inactive.
Result<BaseArray<ColorSpaceInfo>> ListColorSpaces() noexcept;

/// Makes the OpenColorIO configuration in the file `url` the current one. A file that cannot be read, is no
/// valid configuration, or defines a space by itself is an illegal-argument error, and the current
/// configuration stays. Profiles made before keep theirs. May be called from any thread.
Result<void> LoadColorConfig(const Url& url) noexcept;

/// Makes the built-in configuration the current one, whatever OCIO names.
Result<void> UseBuiltinColorConfig() noexcept;

} // namespace norvi
