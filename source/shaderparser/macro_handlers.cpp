#include "macro_handlers.h"

#include <norvi/host/text.h>

#include "text_lines.h"

namespace norvi {

namespace {

/// The macro's arguments, which stand between `keyLength` characters from its key on and the ")" at `close`.
Words Arguments(const String& line, size_t position, size_t keyLength, size_t close) {
    return SplitAt(Between(line, position + keyLength, close), ", ");
}

std::string_view Before(const String& line, size_t position) {
    return std::string_view(line).substr(0, position);
}

std::string_view From(const String& line, size_t position) {
    return std::string_view(line).substr(std::min(position, line.size()));
}

String ReplaceEach(std::string_view text, std::string_view old, std::string_view replacement) {
    String result;
    for (size_t found = text.find(old); found != text.npos; found = text.find(old)) {
        result.append(text.substr(0, found)).append(replacement);
        text.remove_prefix(found + old.size());
    }
    return result.append(text);
}

} // namespace

Result<void> ReplaceKey(const MacroEntry& entry, String& line, size_t position) {
    line.replace(position, entry.key.size(), entry.value);
    return OK;
}

Result<void> UnwrapKey(const MacroEntry& entry, String& line, size_t position) {
    line.erase(position, entry.key.size() + 1);
    if (const size_t close = line.find(')', position); close != String::npos)
        line.erase(close, 1);
    return OK;
}

Result<void> PrefixKey(const MacroEntry& entry, String& line, size_t position) {
    NORVI_TRY(UnwrapKey(entry, line, position));
    line.insert(position, entry.value + " ");
    return OK;
}

Result<void> RewriteBlock(const MacroEntry& entry, String& line, size_t position) {
    const size_t close = line.find('>', position);
    if (close == String::npos)
        return OK;
    const Id& language = entry.context->shader.language;
    const size_t constPosition = line.find("const", position < 7 ? 0 : position - 7);
    const bool isConst = constPosition < close;
    const std::string_view element = Between(line, position + entry.key.size(), close);
    std::string_view head;
    String type;
    if (language == shaderlanguage::Hlsl) {
        head = Without(Before(line, position), 0, isConst ? std::string_view("const ").size() : 0);
        type = Format(isConst ? "StructuredBuffer<@>" : "RWStructuredBuffer<@>", element);
    } else if (language == shaderlanguage::Metal) {
        head = Before(line, position);
        type = Format("@*", element);
    }
    line = String(head).append(type).append(From(line, close + 1));
    return OK;
}

Result<void> RewriteMakeLocal(const MacroEntry&, String& line, size_t position) {
    const size_t close = line.find(')', position);
    if (close == String::npos)
        return IllegalStateError("MAKELOCAL missing )");
    const Words arguments = Arguments(line, position, std::string_view("MAKELOCAL(").size(), close);
    if (arguments.size() != 3)
        return IllegalStateError("MAKELOCAL macro needs three parameters");
    line = Format("uint groupIndex = InLocalInvocationID.z * InWorkGroupSize.x * InWorkGroupSize.y + "
                  "InLocalInvocationID.y * InWorkGroupSize.x + InLocalInvocationID.x; \n"
                  "\tif (groupIndex < @) \n"
                  "\t{\n"
                  "\t@[groupIndex] =  UNIFORM_BUFFER(@)[@(InGlobalInvocationID, groupIndex)]; \n"
                  " } \n"
                  "\tgroupSharedBarrier;",
                  arguments[1], arguments[0], arguments[0], arguments[2]);
    return OK;
}

Result<void> RewriteLocalData(const MacroEntry&, String& line, size_t position) {
    const size_t close = line.find(')', position);
    if (close == String::npos)
        return IllegalStateError("LOCALDATA missing )");
    const Words arguments = Arguments(line, position, std::string_view("LOCALDATA(").size(), close);
    if (arguments.size() != 3)
        return IllegalStateError("LOCALDATA macro needs three parameters");
    line.replace(position, close + 1 - position, Format("@[@]", arguments[0], arguments[1]));
    return OK;
}

Result<void> RewriteGroupSharedMemory(const MacroEntry& entry, String& line, size_t position) {
    const size_t close = line.find(')', position);
    if (close == String::npos)
        return IllegalStateError("GROUPSHAREDMEM missing )");
    const Words arguments = Arguments(line, position, std::string_view("GROUPSHAREDMEM(").size(), close);
    if (arguments.size() != 3)
        return IllegalStateError("GROUPSHAREDMEM macro needs two parameters");
    MappedText declaration;
    declaration.AppendLine(Format("groupSharedMemory @ @[@]; ", arguments[0], arguments[1], arguments[2]),
                           entry.context->origin);
    declaration.text += '\n';
    entry.context->shader.groupSharedDeclarations.push_back(std::move(declaration));
    line.clear();
    return OK;
}

Result<void> RewriteAtomic(const MacroEntry& entry, String& line, size_t position) {
    const size_t blank = line.find(' ', position);
    if (blank == String::npos)
        return OK;
    const bool isMetal = entry.context->shader.language == shaderlanguage::Metal;
    line.replace(position, blank + 1 - position, isMetal ? "atomic_" : "");
    return OK;
}

Result<void> RewriteFramebufferTexel(const MacroEntry& entry, String& line, size_t position) {
    static constexpr std::string_view call = "GetFramebufferTexel(", sample = "InSampleID";
    const size_t close = line.rfind(')');
    if (close == String::npos)
        return IllegalStateError("GetFramebufferTexel missing )");
    const bool isMultisampled = entry.context->multisampling > 1;
    const Words arguments = Arguments(line, position, entry.key.size(), close);
    const bool hasSample = arguments.size() == 3 && arguments[2] == sample;
    if (arguments.size() != 2 && !hasSample)
        return IllegalStateError(
            "GetFramebufferTexel function needs two parameters or three with the last being InSampleID");
    if (hasSample == isMultisampled) {
        line = ReplaceEach(line, entry.key, call);
        return OK;
    }
    String text = String(Before(line, position)).append(call);
    text.append(arguments[0]).append(", ").append(arguments[1]);
    if (isMultisampled)
        text.append(", ").append(sample);
    line = text.append(From(line, close));
    return OK;
}

Result<void> RewriteMatrixOffset(const MacroEntry&, String& line, size_t position) {
    String collected;
    Int depth = 0;
    for (char c : From(line, position)) {
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (depth >= 1)
            collected += c;
    }
    line = Format("vec3(@.v0.w, @.v1.w, @.v2.w)", collected, collected, collected);
    return OK;
}

} // namespace norvi
