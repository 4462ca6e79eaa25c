#include "kernel_parameters.h"

#include <algorithm>

#include <norvi/host/log.h>

#include "texture_type.h"
#include "type_names.h"

namespace norvi {

namespace {

/// Most that Metal binds to a kernel.
constexpr Int32 MostBuffers = 30, MostWritableTextures = 8;

void CountBuffer(ShaderPieces& shader) {
    if (shader.bufferCount++ >= MostBuffers)
        Log(LogLevel::Critical,
            "Assertion failed: Too many buffers bound to kernel(>30). Metal compile will fail.");
}

void CountWritableTexture(ShaderPieces& shader) {
    if (shader.uavTextureCount++ >= MostWritableTextures)
        Log(LogLevel::Critical,
            "Assertion failed: Too many UAV textures bound to kernel(>8). Metal compile will fail.");
}

/// The T of "BaseArray<T>" and "Block<T>"; null for anything else.
std::optional<String> ReadBufferElement(std::string_view typeName) {
    String text(typeName);
    std::replace(text.begin(), text.end(), '>', '<');
    const Words parts = SplitAt(text, "<");
    if (parts.size() < 2 || (parts[0] != "BaseArray" && parts[0] != "Block"))
        return std::nullopt;
    return String(parts[1]);
}

/// A word of the line, or null behind its end.
const std::string_view* WordAt(const Words& words, size_t index) {
    return index < words.size() ? &words[index] : nullptr;
}

/// Cuts the comma and the line continuation off a name.
std::string_view WithoutTrailer(std::string_view name) {
    return Without(name, 0, name.ends_with('\\') ? 2 : name.ends_with(',') ? 1 : 0);
}

struct StorageKeyword {
    std::string_view text;
    UInt32 qualifier;
};

constexpr StorageKeyword storageKeywords[] = {{"attribute", KernelParameterEntry::Attribute},
                                              {"varying", KernelParameterEntry::Varying},
                                              {"out", KernelParameterEntry::Out}};

/// Reads one line of a KERNELINPUTS list.
class KernelInputsLine {
  public:
    KernelInputsLine(ShaderPieces& shader, const Words& words, LineOrigin origin, KernelInputs& inputs,
                     const MacroList& globalMacros)
        : shader_(shader), words_(words), inputs_(inputs), globalMacros_(globalMacros) {
        parameter_.origin = origin;
    }

    Result<void> Read() {
        if (words_.size() < 2)
            return IllegalArgumentError("struct entry is not conforming to '(type) name' structure");
        if (words_[0].find("IGNORE_VARIABLE_GPU") != std::string_view::npos)
            return OK;
        for (const StorageKeyword& keyword : storageKeywords)
            if (parameter_.qualifier == 0 && words_[0].find(keyword.text) != std::string_view::npos)
                parameter_.qualifier = keyword.qualifier;
        const size_t typeIndex = parameter_.qualifier != 0 ? 1 : 0;
        typeWord_ = Without(words_[typeIndex], typeIndex == 0 ? 1 : 0, 1);
        NORVI_TRY(globalMacros_.Apply(typeWord_));
        parameter_.type = MapTypeName(typeWord_);
        if (parameter_.type) {
            Append(WordAt(words_, typeIndex + 1));
            return OK;
        }
        const String candidate = FindCandidate();
        if (candidate.find("TextureSampler") != String::npos)
            return ReadTexture(candidate);
        return ReadBuffer(candidate);
    }

  private:
    /// The text that may name a buffer or a texture. Only these can be read-only parameters.
    String FindCandidate() {
        String candidate = typeWord_;
        if (words_[0] == "(const") {
            MarkReadOnly();
            current_ = 1;
            candidate = words_[1];
        }
        const std::string_view word = words_[current_];
        if (word.ends_with("const")) { // "(Block<const" "Float32>)"
            MarkReadOnly();
            ++current_;
            const std::string_view* next = WordAt(words_, current_);
            candidate = String(Without(word, 1, 0).substr(0, Without(typeWord_, 0, 4).size()))
                            .append(next ? *next : "");
        }
        return candidate;
    }

    void MarkReadOnly() {
        parameter_.qualifier = KernelParameterEntry::Const;
        isReadOnly_ = true;
    }

    Result<void> ReadBuffer(const String& candidate) {
        auto element = ReadBufferElement(candidate);
        if (!element)
            return OK;
        NORVI_TRY(globalMacros_.Apply(*element));
        parameter_.elementTypeName = std::move(*element);
        CountBuffer(shader_);
        Append(WordAt(words_, current_ + 1));
        return OK;
    }

    Result<void> ReadTexture(const String& candidate) {
        NORVI_TRY_VALUE(texture, ReadTextureType(candidate));
        const std::string_view* name = WordAt(words_, current_ + 1);
        if (!texture || !name)
            return OK;
        texture->name = WithoutTrailer(*name);
        texture->isConst = isReadOnly_;
        texture->origin = parameter_.origin;
        inputs_.textures.push_back(std::move(*texture));
        if (!isReadOnly_)
            CountWritableTexture(shader_);
        return OK;
    }

    void Append(const std::string_view* name) {
        if (!name)
            return;
        parameter_.name = WithoutTrailer(*name);
        inputs_.parameters.push_back(std::move(parameter_));
    }

    ShaderPieces& shader_;
    const Words& words_;
    KernelInputs& inputs_;
    const MacroList& globalMacros_;
    KernelParameterEntry parameter_;
    String typeWord_;
    size_t current_ = 0; ///< index of the word that ends the type
    bool isReadOnly_ = false;
};

} // namespace

void ReadStructKernelInputLine(ShaderPieces& shader, const Words& words, LineOrigin origin,
                               KernelInputs& inputs) {
    KernelParameterEntry parameter;
    parameter.origin = origin;
    parameter.type = MapTypeName(words[0]);
    size_t typeIndex = 0;
    if (!parameter.type) {
        typeIndex = words[0] == "const" ? 1 : 0;
        const std::string_view* typeWord = WordAt(words, typeIndex);
        const auto element = typeWord ? ReadBufferElement(*typeWord) : std::nullopt;
        if (!element)
            return;
        CountBuffer(shader);
        parameter.elementTypeName = *element;
        parameter.qualifier = typeIndex == 1 ? KernelParameterEntry::Const : 0;
    }
    const std::string_view* name = WordAt(words, typeIndex + 1);
    if (!name)
        return;
    parameter.name = Without(*name, 0, 1);
    inputs.parameters.push_back(std::move(parameter));
}

Result<void> ReadKernelInputsLine(ShaderPieces& shader, const Words& words, LineOrigin origin,
                                  KernelInputs& inputs, const MacroList& globalMacros) {
    return KernelInputsLine(shader, words, origin, inputs, globalMacros).Read();
}

} // namespace norvi
