#include "include_file.h"

#include <algorithm>

#include <norvi/host/log.h>
#include <norvi/host/text.h>

namespace norvi {

namespace {

constexpr const char* MissingEnd = "could not find end of a struct. missing }; as single line";
constexpr std::string_view InlinePrefix = "inline ";

LineOrigin OriginOf(const LineReader& lines, UInt32 file) {
    return {file, lines.GetFileLine()};
}

/// The checks that both kinds of block begin with.
Result<void> CheckFirstWord(std::string_view line, std::string_view word) {
    if (line.empty())
        return IllegalStateError("Illegal state: Condition line.IsPopulated() not fulfilled. ");
    if (FirstWord(line) != word)
        return IllegalStateError(
            Format("Illegal state: Condition words[0] == \"@\"_s not fulfilled. ", word));
    return OK;
}

/// With each run of blanks and tabs as a single blank.
String Normalize(std::string_view line) {
    String text(line);
    std::replace(text.begin(), text.end(), '\t', ' ');
    text.erase(std::unique(text.begin(), text.end(), [](char a, char b) { return a == ' ' && b == ' '; }),
               text.end());
    return text;
}

bool IsFallthrough(std::string_view word) {
    return word == "NORVI_SWITCH_FALLTHROUGH;" || word == "NORVI_SWITCH_FALLTHROUGH";
}

/// What one header yields. It reaches the parser only when the whole file was good.
class IncludeFileScan {
  public:
    IncludeFileScan(UInt32 file, const IncludeText& text, std::string_view decoded,
                    const MacroList& signatureMacros, MacroContext& context)
        : file_(file), text_(text), lines_(decoded), signatureMacros_(signatureMacros), context_(context) {}

    Result<void> Run() {
        while (!isFullText_ && lines_.Next()) {
            const std::string_view line = lines_.GetLine();
            const std::string_view word = line.substr(0, line.find_first_of(" \t"));
            if (word != "#define" && word != "struct" && word != "inline")
                continue;
            const String normalized = Normalize(line);
            const Words words = SplitWords(normalized);
            line_ = lines_.GetFileLine();
            if (words.size() >= 2)
                NORVI_TRY(ReadLine(words));
        }
        return OK;
    }

    void MoveTo(ShaderPieces& shader) {
        if (isFullText_)
            shader.globalBlocks.push_back(WholeText());
        std::move(defines_.begin(), defines_.end(), std::back_inserter(shader.defines));
        std::move(structs_.begin(), structs_.end(), std::back_inserter(shader.structs));
        std::move(functions_.begin(), functions_.end(), std::back_inserter(shader.inlineFunctions));
    }

    /// Where what was read last begins.
    UInt32 GetLine() const { return line_; }

  private:
    Result<void> ReadLine(const Words& words) {
        if (words[0] == "struct") {
            NORVI_TRY_VALUE(entry, ReadStruct(lines_, file_));
            structs_.push_back(std::move(entry));
        } else if (words[0] == "inline") {
            NORVI_TRY_VALUE(function, ReadInlineFunction(lines_, file_, signatureMacros_, context_));
            functions_.push_back(std::move(function));
        } else if (words[1] == "NORVI_INCLUDE_AS_FULLTEXT") {
            isFullText_ = true;
        } else if (words.size() >= 3 && words[1].find("_H__") == std::string_view::npos) {
            defines_.emplace_back().AppendLine(lines_.GetRawLine(), OriginOf(lines_, file_));
        }
        return OK;
    }

    MappedText WholeText() const {
        MappedText block;
        block.text = text_.bytes;
        const auto count = static_cast<UInt32>(std::count(block.text.begin(), block.text.end(), '\n')) + 1;
        for (UInt32 line = 1; line <= count; ++line)
            block.lines.push_back({file_, line});
        return block;
    }

    UInt32 file_;
    const IncludeText& text_;
    LineReader lines_;
    const MacroList& signatureMacros_;
    MacroContext& context_;
    UInt32 line_ = 1;
    bool isFullText_ = false;
    BaseArray<MappedText> defines_;
    BaseArray<StructEntry> structs_;
    BaseArray<InlineFunctionEntry> functions_;
};

} // namespace

Result<StructEntry> ReadStruct(LineReader& lines, UInt32 file) {
    const std::string_view line = lines.GetLine();
    NORVI_TRY(CheckFirstWord(line, "struct"));
    const Words words = SplitWords(line);
    StructEntry entry;
    entry.name = words.size() > 1 ? words[1] : "";
    const auto append = [&](std::string_view text) {
        entry.lines.emplace_back(text);
        entry.lineOrigins.push_back(OriginOf(lines, file));
    };
    append("\n");
    lines.Next(); // the opening brace
    while (lines.Next()) {
        const std::string_view member = lines.GetLine();
        if (FirstWord(member) == "};") {
            append("\n");
            return entry;
        }
        if (!member.empty())
            append(member);
    }
    return IllegalStateError(MissingEnd);
}

Result<InlineFunctionEntry> ReadInlineFunction(LineReader& lines, UInt32 file,
                                               const MacroList& signatureMacros, MacroContext& context) {
    const std::string_view line = lines.GetLine();
    NORVI_TRY(CheckFirstWord(line, "inline"));
    InlineFunctionEntry function;
    function.signature = Without(line, InlinePrefix.size(), 0);
    function.origin = context.origin = OriginOf(lines, file);
    NORVI_TRY(signatureMacros.Apply(function.signature));
    for (Int depth = 0; lines.Next();) {
        const std::string_view text = lines.GetLine();
        const std::string_view word = FirstWord(text);
        if (text.empty() && depth < 1)
            return function;
        if (text.empty() || IsFallthrough(word))
            continue;
        if (word == "struct" || word == "inline")
            return IllegalStateError(MissingEnd);
        depth += word == "{" ? 1 : word == "}" ? -1 : 0;
        function.text.AppendLine(text, OriginOf(lines, file));
        if (depth < 1)
            return function;
    }
    return IllegalStateError(MissingEnd);
}

Result<void> ReadIncludeFile(ShaderPieces& shader, const IncludeFileEntry& entry, SourceFiles& files,
                             const MacroList& signatureMacros, MacroContext& context) {
    if (!files.IsFile(entry.url))
        return OK;
    const DecodedText decoded(entry.text->bytes);
    IncludeFileScan scan(entry.sourceFile, *entry.text, decoded.Get(), signatureMacros, context);
    if (Result<void> result = scan.Run(); !result) {
        result = AtPlace(Failure(result.TakeError()), entry.url.ToString(), scan.GetLine());
        Log(LogLevel::Error, Format("Error parsing shader @: @", entry.url, result.GetError()));
        return result;
    }
    scan.MoveTo(shader);
    return OK;
}

} // namespace norvi
