#include "line_walk.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include <norvi/host/text.h>

namespace norvi {

class LineWalk::RuleList {
  public:
    RuleList(std::initializer_list<Rule> rules) : rules_(rules) {
        for (const Rule& rule : rules_)
            isFirstCharacter_[static_cast<UChar>(rule.keyword.front())] = true;
    }

    /// The first rule that fits the line, or null.
    const Rule* Find(std::string_view line) const {
        // Most lines begin with a character that no keyword begins with.
        if (!isFirstCharacter_[static_cast<UChar>(line.front())])
            return nullptr;
        for (const Rule& rule : rules_)
            if (Fits(rule, line))
                return &rule;
        return nullptr;
    }

  private:
    static bool Fits(const Rule& rule, std::string_view line) {
        if (!line.starts_with(rule.keyword) || !rule.isWholeWord)
            return line.starts_with(rule.keyword);
        if (rule.second.empty())
            return FirstWord(line) == rule.keyword;
        const Words words = SplitWords(line);
        return words[0] == rule.keyword && words.size() > 1 && words[1] == rule.second &&
               (rule.third.empty() || (words.size() > 2 && words[2].starts_with(rule.third)));
    }

    BaseArray<Rule> rules_;
    std::array<bool, 256> isFirstCharacter_{};
};

const LineWalk::RuleList& LineWalk::GetGlobalRules() {
    static const RuleList rules = {
        {"struct", true, &LineWalk::EnterStructKernelInput, "KernelInput"},
        {"#define", true, &LineWalk::EnterKernelInputsDefine, "KERNELINPUTS"},
        {"NORVI_PARALLEL_KERNEL", false, &LineWalk::EnterKernelMacro},
        {"FP_KERNEL", false, &LineWalk::EnterKernelMacro},
        {"NORVI_TEMPLATED_PARALLEL_KERNEL", false, &LineWalk::EnterKernelMacro},
        {"NORVI_METHOD", true, &LineWalk::EnterKernelMethod, "Result<void>", "Kernel"},
        {"inline", true, &LineWalk::EnterInlineFunction},
        {"GROUPSIZE", false, &LineWalk::ReadGroupSize},
        {"CPU_GRANULARITY", false, &LineWalk::SkipWithNext},
        {"CPU_SINGLETHREADEDTHRESHOLD", false, &LineWalk::SkipWithNext},
        {"ADDNOISECALL", true, &LineWalk::CountNoiseCall},
        {"CPU_SCOPE_START", true, &LineWalk::SkipCpuScope},
        {"namespace", true, &LineWalk::SkipWithNext},
    };
    return rules;
}

/// The ends of kernels begin like their entries, so they go first.
const LineWalk::RuleList& LineWalk::GetScopedRules() {
    static const RuleList rules = {
        {"CPU_SCOPE_START", true, &LineWalk::SkipCpuScope},
        {"NORVI_PARALLEL_KERNEL_END", false, &LineWalk::EndKernel},
        {"FP_KERNEL_END", false, &LineWalk::EndKernel},
        {"NORVI_TEMPLATED_PARALLEL_KERNEL_END", false, &LineWalk::EndKernel},
        {"ADDNOISECALL", true, &LineWalk::CountNoiseCallAndKeep},
        {"NORVI_PARALLEL_KERNEL", false, &LineWalk::ReadAgainAsGlobal},
        {"FP_KERNEL", false, &LineWalk::ReadAgainAsGlobal},
        {"NORVI_TEMPLATED_PARALLEL_KERNEL", false, &LineWalk::ReadAgainAsGlobal},
    };
    return rules;
}

Result<void> LineWalk::Run() {
    while (lines_.Next())
        if (Result<void> result = ReadLine(); !result)
            return AtPlace(Failure(result.TakeError()), shader_.sourceFiles[file_].url.ToString(),
                           context_.origin.line);
    return OK;
}

Result<void> LineWalk::ReadLine() {
    line_ = lines_.GetLine();
    if (line_.empty()) {
        if (scope_ == ParsedScope::KernelInputsDefine) {
            StoreInputs();
            bodyLines_.Clear();
            scope_ = ParsedScope::Global;
        }
        return OK;
    }
    context_.origin = GetOrigin();
    const ParsedScope before = scope_;
    NORVI_TRY_VALUE(rest, Sort());
    if (rest == Rest::Nothing)
        return OK;
    if (scope_ != before)
        FlushGlobalLines();
    if (scope_ != ParsedScope::Global)
        ScanBraces();
    return OK;
}

Result<LineWalk::Rest> LineWalk::Sort() {
    const bool isGlobal = scope_ == ParsedScope::Global;
    const RuleList& rules = isGlobal ? GetGlobalRules() : GetScopedRules();
    if (const Rule* rule = rules.Find(line_))
        return (this->*rule->action)();
    return isGlobal ? KeepGlobalLine() : KeepScopedLine();
}

void LineWalk::FlushGlobalLines() {
    if (globalLines_.IsEmpty())
        return;
    globalLines_.text += '\n';
    shader_.globalBlocks.push_back(std::exchange(globalLines_, {}));
}

/// Counts the braces of the line as its author wrote it.
void LineWalk::ScanBraces() {
    if (line_.find('{') == line_.npos && line_.find('}') == line_.npos)
        return;
    for (const char c : line_) {
        braceDepth_ += c == '{' ? 1 : c == '}' ? -1 : 0;
        if (c == '}' && braceDepth_ <= scopeDepth_)
            return CloseScope();
    }
}

void LineWalk::CloseScope() {
    if (scope_ != ParsedScope::InlineFunction && !bodyLines_.IsEmpty()) {
        bodyLines_.text.resize(lastTextSize_);
        bodyLines_.lines.resize(lastLineCount_);
    }
    if (scope_ == ParsedScope::InlineFunction)
        shader_.inlineFunctions.push_back({signature_, bodyLines_, signatureOrigin_});
    else if (scope_ == ParsedScope::KernelFunction)
        StoreKernel();
    else
        StoreInputs();
    bodyLines_.Clear();
    scope_ = ParsedScope::Global;
}

Result<LineWalk::Rest> LineWalk::EnterStructKernelInput() {
    scope_ = ParsedScope::StructKernelInput;
    inputs_ = {};
    scopeDepth_ = braceDepth_++;
    lines_.Next(); // the opening brace
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::EnterKernelInputsDefine() {
    scope_ = ParsedScope::KernelInputsDefine;
    inputs_ = {};
    return Rest::CloseScopes;
}

Result<void> LineWalk::EnterKernel() {
    if (kernelStored_)
        return IllegalStateError(Format("Illegal state: Parser Error: Second Kernel function at line @ in @",
                                        lines_.GetIndex(), shader_.sourceFiles[file_].url));
    scope_ = ParsedScope::KernelFunction;
    bodyLines_.Clear();
    bodyLines_.text.reserve(lines_.GetRestSize());
    return OK;
}

/// The depth lies below that of the body's braces, so that no closing brace but only the end macro ends the
/// body.
Result<LineWalk::Rest> LineWalk::EnterKernelMacro() {
    NORVI_TRY(EnterKernel());
    scopeDepth_ = braceDepth_ - 1;
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::EnterKernelMethod() {
    NORVI_TRY(EnterKernel());
    scopeDepth_ = braceDepth_++;
    lines_.Next(); // the opening brace
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::EnterInlineFunction() {
    scope_ = ParsedScope::InlineFunction;
    signature_ = Without(line_, std::string_view("inline ").size(), 0);
    signatureOrigin_ = GetOrigin();
    scopeDepth_ = braceDepth_;
    NORVI_TRY(macros_.signature.Apply(signature_));
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::ReadGroupSize() {
    const Words words = SplitWords(line_);
    if (words.size() != 3)
        return IllegalStateError("GROUPSIZE used wrong, please used the format GROUPSIZE(x, y, z) only");
    UInt32* const sizes[] = {&shader_.groupSize.x, &shader_.groupSize.y, &shader_.groupSize.z};
    for (size_t i = 0; i < words.size(); ++i) {
        const size_t front = i == 0 ? std::string_view("GROUPSIZE(").size() : 0;
        const std::string_view number = Without(words[i], front, 1);
        const char* const end = number.data() + number.size();
        const auto [stop, error] = std::from_chars(number.data(), end, *sizes[i]);
        if (error != std::errc() || stop != end)
            return IllegalStateError("GROUPSIZE needs whole numbers");
    }
    return SkipWithNext();
}

Result<LineWalk::Rest> LineWalk::SkipWithNext() {
    lines_.Next();
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::CountNoiseCall() {
    ++shader_.noiseCallCount;
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::SkipCpuScope() {
    while (lines_.Next())
        if (FirstWord(lines_.GetLine()) == "CPU_SCOPE_END")
            break;
    return Rest::Nothing;
}

Result<LineWalk::Rest> LineWalk::KeepGlobalLine() {
    if (line_.front() != '#' && line_.front() != '}')
        NORVI_TRY(AppendRewritten(globalLines_));
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::EndKernel() {
    StoreKernel();
    scope_ = ParsedScope::Global;
    return Rest::Nothing;
}

/// The marker stays in the text.
Result<LineWalk::Rest> LineWalk::CountNoiseCallAndKeep() {
    ++shader_.noiseCallCount;
    return KeepScopedLine();
}

Result<LineWalk::Rest> LineWalk::ReadAgainAsGlobal() {
    if (scope_ == ParsedScope::KernelInputsDefine) {
        StoreInputs();
        bodyLines_.Clear();
    }
    scope_ = ParsedScope::Global;
    lines_.StepBack();
    return Rest::CloseScopes;
}

Result<LineWalk::Rest> LineWalk::KeepScopedLine() {
    if (scope_ == ParsedScope::KernelInputsDefine) {
        NORVI_TRY(ReadKernelInputsLine(shader_, SplitWords(line_), GetOrigin(), inputs_, macros_.global));
    } else if (scope_ == ParsedScope::StructKernelInput) {
        ReadStructKernelInputLine(shader_, SplitWords(line_), GetOrigin(), inputs_);
    } else {
        lastTextSize_ = bodyLines_.text.size();
        lastLineCount_ = bodyLines_.lines.size();
        NORVI_TRY(AppendRewritten(bodyLines_));
    }
    return Rest::CloseScopes;
}

Result<void> LineWalk::AppendRewritten(MappedText& target) {
    if (!macros_.text.Concerns(line_)) {
        target.AppendLine(line_, GetOrigin());
        return OK;
    }
    rewritten_ = line_;
    NORVI_TRY(macros_.text.Apply(rewritten_));
    target.AppendLines(rewritten_, GetOrigin());
    return OK;
}

void LineWalk::StoreKernel() {
    shader_.kernelText = std::exchange(bodyLines_, {});
    kernelStored_ = true;
}

/// Moves what was read into the shader. (A parse that is tried again may find entries there.)
void LineWalk::StoreInputs() {
    std::move(inputs_.parameters.begin(), inputs_.parameters.end(), std::back_inserter(shader_.parameters));
    std::move(inputs_.textures.begin(), inputs_.textures.end(), std::back_inserter(shader_.textures));
    inputs_ = {};
}

} // namespace norvi
