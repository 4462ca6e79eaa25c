// Configuration variables: switches that modules publish and that the application, the tool or the
// environment sets.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

struct ConfigurationVariable {
    String name;
    String help;
    Bool defaultValue = false;
    Bool* address = nullptr;
};

/// Publishes a variable. A value that was set for this name before, by SetConfiguration or else by the
/// environment variable NORVI_<NAME> (the name in capitals, without "g_"; 0, 1, false, true), is written to
/// it at once. A name that is published already is an illegal-argument error.
Result<void> ConfigurationRegister(const String& name, const String& help, Bool* address) noexcept;
void ConfigurationUnregister(const String& name) noexcept;

/// Sets a variable, now if it is published, else when it will be. `value` is one of 0, 1, false, true, off,
/// on.
Result<void> SetConfiguration(const String& name, const String& value) noexcept;

/// The published variables, sorted by name.
BaseArray<ConfigurationVariable> GetConfigurationVariables();

} // namespace norvi
