// Reads a kernel or shader source file and turns it into pieces that a program factory assembles for a target
// language. It is no compiler: it goes by lines and words, knows a small fixed vocabulary at the start of
// lines, and rewrites everything else by substring search. docs/kernel_text.md describes the rules.
#pragma once

#include <atomic>

#include <norvi/host/dictionary.h>

#include "shader_pieces.h"
#include "source_files.h"

namespace norvi {

/// Keys of the options of a parse; each is an Id.
namespace shaderparseroption {
/// String: the text that replaces `TYPE`; absent or empty leaves it alone.
inline constexpr const char* TemplateArgument = "net.norvi.shaderparser.templateargument";
/// Int32: number of samples; absent for shaders to which it does not matter.
inline constexpr const char* Multisampling = "net.norvi.shaderparser.multisampling";
} // namespace shaderparseroption

/// The pieces of one source file for one language. An object is filled by the first successful ParseFile and
/// immutable from then on, so that it can be shared.
class ShaderParser {
  public:
    explicit ShaderParser(Id language) { pieces_.language = std::move(language); }

    /// Supplies the text of a formula, before the parse. A second text for the same name replaces the first.
    /// Calls of `rnd` with one argument get the kernel's seed as their second. Not synchronised.
    Result<void> AddFormula(const String& name, const String& expression) noexcept;

    /// Reads `file` and the headers that go with it, once: later calls return at once whatever they are
    /// given, and a call during another one waits for it. After a failure the next call tries again, and adds
    /// to what the failed one has left. Any thread.
    ///
    /// A failure names the file and line that it is about. Any bytes give a result or an error in a time
    /// proportional to the size of the files.
    Result<void> ParseFile(const Url& file, const DataDictionary& options) noexcept;
    /// The same with files from elsewhere.
    Result<void> ParseFile(const Url& file, const DataDictionary& options, SourceAccess sources) noexcept;

    const Id& GetLanguage() const { return pieces_.language; }
    const BaseArray<InlineFunctionEntry>& GetInlineFunctions() const { return pieces_.inlineFunctions; }
    const BaseArray<KernelParameterEntry>& GetParameters() const { return pieces_.parameters; }
    const BaseArray<KernelTextureEntry>& GetTextures() const { return pieces_.textures; }
    const BaseArray<StructEntry>& GetStructs() const { return pieces_.structs; }
    const BaseArray<MappedText>& GetDefines() const { return pieces_.defines; }
    const BaseArray<MappedText>& GetGlobalBlocks() const { return pieces_.globalBlocks; }
    const BaseArray<MappedText>& GetGroupSharedDeclarations() const {
        return pieces_.groupSharedDeclarations;
    }
    /// (256, 1, 1) for a source that states none.
    Vec3<UInt32> GetWorkGroupSize() const;
    const MappedText& GetKernelText() const { return pieces_.kernelText; }
    Int GetNoiseCallCount() const { return pieces_.noiseCallCount; }

    /// The files that the origins of lines refer to.
    const BaseArray<SourceFile>& GetSourceFiles() const { return pieces_.sourceFiles; }

  private:
    enum ParseState : UInt32 { NotParsed = 0, Parsing = 1, Parsed = 2 };

    template <typename Operation>
    Result<void> ParseOnce(Operation&& parse);
    Result<void> Parse(const Url& file, const DataDictionary& options, SourceAccess sources);

    ShaderPieces pieces_;
    std::atomic<UInt32> parseOnce_{NotParsed};
};

} // namespace norvi
