#include <norvi/host/configuration.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>

#include <norvi/host/log.h>
#include <norvi/host/text.h>

namespace norvi {

namespace {

struct Configuration {
    std::mutex mutex;
    std::map<String, ConfigurationVariable> variables;
    std::map<String, Bool> chosen; ///< values set by the application, kept for variables that come later
};

Configuration& TheConfiguration() {
    static auto* configuration = new Configuration;
    return *configuration;
}

std::optional<Bool> ParseBool(std::string_view text) {
    for (std::string_view yes : {"1", "true", "on"})
        if (text == yes)
            return true;
    for (std::string_view no : {"0", "false", "off"})
        if (text == no)
            return false;
    return std::nullopt;
}

String EnvironmentName(const String& name) {
    String result = "NORVI_";
    for (char c : name.starts_with("g_") ? name.substr(2) : name)
        result += static_cast<char>(std::toupper(static_cast<UChar>(c)));
    return result;
}

std::optional<Bool> ValueFromEnvironment(const String& name) {
    const String variable = EnvironmentName(name);
    const char* text = std::getenv(variable.c_str());
    if (!text)
        return std::nullopt;
    const auto value = ParseBool(text);
    if (!value)
        Log(LogLevel::Warning,
            Format("@='@' is not one of 0, 1, false, true and is ignored", variable, text));
    return value;
}

} // namespace

Result<void> ConfigurationRegister(const String& name, const String& help, Bool* address) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        // Read first: it may log, and a sink may look at the configuration.
        const auto fromEnvironment = ValueFromEnvironment(name);
        Configuration& configuration = TheConfiguration();
        std::lock_guard lock(configuration.mutex);
        if (!configuration.variables.try_emplace(name, ConfigurationVariable{name, help, *address, address})
                 .second)
            return IllegalArgumentError(Format("the configuration variable '@' is published already", name));
        if (const auto found = configuration.chosen.find(name); found != configuration.chosen.end())
            *address = found->second;
        else if (fromEnvironment)
            *address = *fromEnvironment;
        return OK;
    });
}

void ConfigurationUnregister(const String& name) noexcept {
    Configuration& configuration = TheConfiguration();
    std::lock_guard lock(configuration.mutex);
    configuration.variables.erase(name);
}

Result<void> SetConfiguration(const String& name, const String& value) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        const auto parsed = ParseBool(value);
        if (!parsed)
            return IllegalArgumentError(Format(
                "the value '@' of the configuration variable '@' is not one of 0, 1, false, true, off, on",
                value, name));
        Configuration& configuration = TheConfiguration();
        std::lock_guard lock(configuration.mutex);
        configuration.chosen[name] = *parsed;
        if (const auto found = configuration.variables.find(name); found != configuration.variables.end())
            *found->second.address = *parsed;
        return OK;
    });
}

BaseArray<ConfigurationVariable> GetConfigurationVariables() {
    Configuration& configuration = TheConfiguration();
    std::lock_guard lock(configuration.mutex);
    BaseArray<ConfigurationVariable> variables;
    for (const auto& [name, variable] : configuration.variables)
        variables.push_back(variable);
    return variables;
}

} // namespace norvi
