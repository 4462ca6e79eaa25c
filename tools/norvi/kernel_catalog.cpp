#include "norvi/kernel_catalog.h"

#include <algorithm>
#include <functional>

#include <norvi/formula_data.h>
#include <norvi/host/noise.h>
#include <norvi/host/registry.h>

#include "norvi/argument_text.h"
#include "norvi/element_type.h"
#include "norvi/texture_kind.h"

namespace norvi {

namespace {

struct RoleWords {
    const char* name;
    const char* option;
};

constexpr RoleWords roleWords[] = {
    {"buffer", "--buffer"},   {"texture", "--texture"}, {"uniform", "--uniform"}, {"formula", "--formula"},
    {"counter", "--counter"}, {"noise", "--noise"},     {"other", nullptr},
};
static_assert(std::size(roleWords) == static_cast<std::size_t>(ParameterRole::Unsupported) + 1);

ParameterRole RoleOf(DataType type) {
    if (type == DataType::Of<FormulaData*>())
        return ParameterRole::Formula;
    if (type == DataType::Of<AtomicUInt32*>())
        return ParameterRole::Counter;
    if (type == DataType::Of<Block<NoiseRef>>())
        return ParameterRole::Noise;
    if (type->kind == DataTypeKind::Block && type.GetElementType()->isTrivial)
        return ParameterRole::Buffer;
    if (FindTextureKind(type))
        return ParameterRole::Texture;
    return FindElementType(type) ? ParameterRole::Uniform : ParameterRole::Unsupported;
}

String WithoutSuffix(const String& name) {
    return name.substr(0, name.rfind('.'));
}

} // namespace

const char* RoleName(ParameterRole role) {
    return roleWords[static_cast<std::size_t>(role)].name;
}

const char* RoleOption(ParameterRole role) {
    return roleWords[static_cast<std::size_t>(role)].option;
}

String KernelParameterInfo::GetTypeText() const {
    if (role == ParameterRole::Buffer)
        return "buffer of " + ElementTypeName(type.GetElementType());
    if (role == ParameterRole::Texture)
        return String("texture ") + FindTextureKind(type)->name;
    return role == ParameterRole::Uniform ? ElementTypeName(type) : RoleName(role);
}

const KernelParameterInfo* KernelInfo::FindParameter(const String& parameter) const {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const KernelParameterInfo& info) { return info.name == parameter; });
    return found == parameters.end() ? nullptr : &*found;
}

BaseArray<String> KernelInfo::GetParameterNames() const {
    BaseArray<String> names;
    for (const KernelParameterInfo& parameter : parameters)
        names.push_back(parameter.name);
    return names;
}

BaseArray<String> KernelNames() {
    BaseArray<String> names;
    for (const Id& id : Registry::Get(registryid::KernelClasses).GetIds())
        names.push_back(id.ToString());
    return names;
}

Result<String> ResolveKernelName(const String& text) {
    BaseArray<String> matches;
    const BaseArray<String> names = KernelNames();
    for (const String& name : names) {
        if (name == text)
            return name;
        if (WithoutSuffix(name) == text)
            matches.push_back(name);
    }
    if (matches.size() == 1)
        return matches.front();
    if (!matches.empty())
        return IllegalArgumentError(
            Format("several kernels are called '@'@", text, SuggestText({}, matches)));
    // The suffix would make names look near that have nothing else in common.
    BaseArray<String> candidates;
    for (const String& name : names)
        candidates.push_back(text.find('.') == text.npos ? WithoutSuffix(name) : name);
    return NotFoundError(Format("there is no kernel '@'@", text, SuggestText(text, candidates)));
}

Result<KernelInfo> DescribeKernel(const String& name) {
    const Class* kernelClass = Registry::Get(registryid::KernelClasses).FindEntryValue(name);
    NORVI_TRY_VALUE(kernel, Kernel::KernelRef::Create(kernelClass));
    NORVI_TRY(kernel->Init());
    const KernelParameterMap& map = kernel->GetKernelParameterMap();
    BaseArray<const KernelParameterMap::value_type*> entries;
    for (const auto& entry : map)
        entries.push_back(&entry);
    // Members stand in memory in the order of declaration.
    std::sort(entries.begin(), entries.end(), [](const auto* a, const auto* b) {
        return std::less<>()(a->second.address, b->second.address);
    });
    KernelInfo info{name,
                    {},
                    kernel->GetKernelWorkGroupSize(),
                    kernel->GetGranularity(),
                    kernel->GetSingleThreadedThreshold()};
    for (const auto* entry : entries)
        info.parameters.push_back({entry->first, entry->second.type, RoleOf(entry->second.type)});
    return info;
}

} // namespace norvi
