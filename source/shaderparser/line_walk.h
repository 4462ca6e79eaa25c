// Reads the lines of a kernel file.
#pragma once

#include "kernel_parameters.h"
#include "macro_list.h"
#include "text_lines.h"

namespace norvi {

/// Which part of the file a line belongs to.
enum class ParsedScope { Global, InlineFunction, KernelFunction, StructKernelInput, KernelInputsDefine };

/// Walks once over a kernel file and sorts its lines into `ShaderPieces`. A line is told by its first words;
/// all others go through the macros into the piece that is open. What is unfinished at the end of the file is
/// dropped.
class LineWalk {
  public:
    /// @param text of the file; must outlive the walk.
    /// @param file its index in the table of source files, where its Url stands.
    LineWalk(ShaderPieces& shader, std::string_view text, UInt32 file, const MacroLists& macros,
             MacroContext& context)
        : shader_(shader), lines_(text), file_(file), macros_(macros), context_(context) {}

    /// Failures have the place of the line that they are about.
    Result<void> Run();

  private:
    /// What is left to do with a line once its words have been looked at.
    enum class Rest { CloseScopes, Nothing };
    using Action = Result<Rest> (LineWalk::*)();

    /// A line that begins with `keyword`, as a whole word or as the start of one, and, where they are given,
    /// with `second` as its second word and a third one that starts with `third`.
    struct Rule {
        std::string_view keyword;
        bool isWholeWord;
        Action action;
        std::string_view second = {};
        std::string_view third = {};
    };

    /// Rules in the order in which they are tried.
    class RuleList;

    static const RuleList& GetGlobalRules();
    static const RuleList& GetScopedRules();

    Result<void> ReadLine();
    Result<Rest> Sort();
    void FlushGlobalLines();
    void ScanBraces();
    void CloseScope();

    Result<Rest> EnterStructKernelInput();
    Result<Rest> EnterKernelInputsDefine();
    Result<Rest> EnterKernelMacro();
    Result<Rest> EnterKernelMethod();
    Result<Rest> EnterInlineFunction();
    Result<Rest> ReadGroupSize();
    Result<Rest> SkipWithNext();
    Result<Rest> CountNoiseCall();
    Result<Rest> SkipCpuScope();
    Result<Rest> KeepGlobalLine();

    Result<Rest> EndKernel();
    Result<Rest> CountNoiseCallAndKeep();
    Result<Rest> ReadAgainAsGlobal();
    Result<Rest> KeepScopedLine();

    Result<void> EnterKernel();
    Result<void> AppendRewritten(MappedText& target);
    void StoreKernel();
    void StoreInputs();
    LineOrigin GetOrigin() const { return {file_, lines_.GetFileLine()}; }

    ShaderPieces& shader_;
    LineReader lines_;
    UInt32 file_;
    const MacroLists& macros_;
    MacroContext& context_;

    std::string_view line_; ///< the present line, trimmed
    ParsedScope scope_ = ParsedScope::Global;
    Int braceDepth_ = 0;
    Int scopeDepth_ = 0;
    MappedText bodyLines_;
    MappedText globalLines_;
    size_t lastTextSize_ = 0; ///< of the body without its last entry
    size_t lastLineCount_ = 0;
    KernelInputs inputs_;
    String signature_;
    LineOrigin signatureOrigin_;
    bool kernelStored_ = false;
    String rewritten_; ///< keeps its memory from line to line
};

} // namespace norvi
