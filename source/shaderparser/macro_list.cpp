#include "macro_list.h"

#include <algorithm>

#include <norvi/host/text.h>

#include "macro_handlers.h"

namespace norvi {

namespace {

/// What a macro puts in its place depends on the parse.
enum class MacroValue { Fixed, TemplateArgument, FirstSampleGuard };

/// When a macro is in the list at all.
enum class MacroCondition { Always, TemplateArgument, Multisampling };

struct MacroRow {
    std::string_view key;
    MacroHandler handler;
    std::string_view value = {};
    MacroValue valueKind = MacroValue::Fixed;
    MacroCondition condition = MacroCondition::Always;
};

constexpr MacroRow templateType = {
    "TYPE", ReplaceKey, {}, MacroValue::TemplateArgument, MacroCondition::TemplateArgument};

constexpr MacroRow signatureRows[] = {
    {"CPU_CONSTREF", UnwrapKey},
    {"NORVI_WARN_MUTE_FUNCTION_LENGTH ", UnwrapKey},
    templateType,
    {"INOUT", PrefixKey, "inout"},
    {"Block<", RewriteBlock},
};

constexpr MacroRow globalRows[] = {templateType};

// clang-format off
constexpr MacroRow textRows[] = {
    templateType,
    {"NORVI_WARN_MUTE_FUNCTION_LENGTH ", UnwrapKey},
    {"CPU_CONSTREF", UnwrapKey},
    {"CPU_PASS_BUFFER", UnwrapKey},
    {"GetAtomicCounter", ReplaceKey},
    {"Sqrt", ReplaceKey, "sqrt"},
    {"sqmat", ReplaceKey, "mat3"},
    {"NORVI_SWITCH_FALLTHROUGH", ReplaceKey},
    {"KERNEL_RETURN_NO_ERROR", ReplaceKey},
    {"MAKELOCAL", RewriteMakeLocal},
    {"FORMULAPARSE", RewriteFormula},
    {"ONLY_USE_FIRST_MSAA_SAMPLE", ReplaceKey, "if (InSampleID > 0) discard;", MacroValue::FirstSampleGuard},
    {" GetFramebufferTexel(", RewriteFramebufferTexel, {}, MacroValue::Fixed, MacroCondition::Multisampling},
    {"LOCALDATA", RewriteLocalData},
    {"ATOMIC", RewriteAtomic},
    {"GROUPSHAREDMEM", RewriteGroupSharedMemory},
    {"matoff", RewriteMatrixOffset},
};
// clang-format on

bool IsListed(MacroCondition condition, const MacroContext& context) {
    switch (condition) {
    case MacroCondition::TemplateArgument:
        return !context.templateArgument.empty();
    case MacroCondition::Multisampling:
        return context.multisampling >= 0;
    case MacroCondition::Always:
        break;
    }
    return true;
}

String ValueOf(const MacroRow& row, const MacroContext& context) {
    switch (row.valueKind) {
    case MacroValue::TemplateArgument:
        return context.templateArgument;
    case MacroValue::FirstSampleGuard:
        return context.multisampling >= 2 ? String(row.value) : String();
    case MacroValue::Fixed:
        break;
    }
    return String(row.value);
}

template <size_t count>
MacroList BuildList(const MacroRow (&rows)[count], MacroContext& context) {
    BaseArray<MacroEntry> entries;
    for (const MacroRow& row : rows)
        if (IsListed(row.condition, context))
            entries.push_back({row.key, row.handler, ValueOf(row, context), &context});
    return MacroList(std::move(entries));
}

BaseArray<std::string_view> KeysOf(const BaseArray<MacroEntry>& entries) {
    BaseArray<std::string_view> keys;
    for (const MacroEntry& entry : entries)
        keys.push_back(entry.key);
    return keys;
}

// A rewriting that comes no nearer to the end of its line in so many steps, or makes the line so much longer,
// is taken for endless.
constexpr size_t MostStepsInPlace = 1000, LeastGrowth = 1 << 20, GrowthPerByte = 16;
// Each key moves what stands behind it. This much takes a fraction of a second.
constexpr size_t MostMovedBytes = size_t{1} << 30;
constexpr size_t MostRewrittenBytes = 64 << 20;

Result<void> ApplyEntry(const MacroEntry& entry, String& line) {
    const size_t mostSize = LeastGrowth + GrowthPerByte * line.size();
    size_t nearest = String::npos, stepsInPlace = 0, movedBytes = 0;
    size_t position = line.find(entry.key);
    while (position != String::npos) {
        const size_t rest = line.size() - position;
        stepsInPlace = rest < nearest ? 0 : stepsInPlace + 1;
        nearest = std::min(nearest, rest);
        movedBytes += rest;
        if (stepsInPlace > MostStepsInPlace || line.size() > mostSize)
            return IllegalStateError(Format("the rewriting of @ does not end", entry.key));
        if (movedBytes > MostMovedBytes)
            return IllegalStateError(Format("a line holds @ too many times", entry.key));
        NORVI_TRY(entry.handler(entry, line, position));
        position = line.find(entry.key, position);
    }
    return OK;
}

} // namespace

MacroList::MacroList(BaseArray<MacroEntry> entries)
    : entries_(std::move(entries)), finder_(KeysOf(entries_)) {}

Result<void> MacroList::Apply(String& line) const {
    if (!Concerns(line))
        return OK;
    for (const MacroEntry& entry : entries_)
        NORVI_TRY(ApplyEntry(entry, line));
    MacroContext& context = *entries_.front().context;
    context.rewrittenBytes += line.size();
    if (context.rewrittenBytes > MostRewrittenBytes)
        return IllegalStateError(Format("macros yield more than @ bytes", MostRewrittenBytes));
    return OK;
}

MacroLists::MacroLists(MacroContext& context)
    : signature(BuildList(signatureRows, context)),
      global(BuildList(globalRows, context)),
      text(BuildList(textRows, context)) {}

} // namespace norvi
