#include "includes.h"

#include <algorithm>
#include <filesystem>

#include <norvi/host/log.h>
#include <norvi/host/text.h>

#include "text_lines.h"

namespace norvi {

namespace {

bool Holds(std::string_view text, std::string_view part) {
    return text.find(part) != text.npos;
}

/// A Url cut into "directory/", "name" and "suffix"; the suffix lies behind the last "." of the last
/// component.
struct UrlParts {
    String directory, name, suffix;
};

UrlParts Split(const Url& url) {
    const String& text = url.ToString();
    const String file = url.GetName();
    const size_t dot = file.rfind('.');
    return {text.substr(0, text.size() - file.size()), file.substr(0, dot),
            dot == String::npos ? String() : file.substr(dot + 1)};
}

/// Written in one way, however the path winds, so that the same file has the same Url.
Url Normalized(const Url& url) {
    const String& text = url.ToString();
    const size_t scheme = text.find("://");
    const size_t path = scheme == String::npos ? 0 : scheme + 3;
    return text.substr(0, path) + std::filesystem::path(text.substr(path)).lexically_normal().string();
}

constexpr struct {
    const char* language;
    const char* text;
} nanoVdbPrologues[] = {
    {shaderlanguage::Metal, "#define PNANOVDB_METAL\n\n"},
    {shaderlanguage::Hlsl, "#define PNANOVDB_HLSL\n\n"},
    {shaderlanguage::Glsl, "#define PNANOVDB_GLSL\n\n"},
};

/// Whether a line consists of these two words, at least.
bool BeginsWith(const Words& words, std::string_view first, std::string_view second) {
    return words.size() >= 2 && words[0] == first && words[1] == second;
}

} // namespace

Url GetCompanionUrl(const Url& file) {
    const UrlParts parts = Split(file);
    if (Holds(file.GetName(), "PNanoVDB"))
        return parts.directory + parts.name + ".h";
    if (Holds(parts.suffix, "vert") || Holds(parts.suffix, "frag"))
        return parts.directory + parts.name + ".inc";
    return parts.directory + parts.name + "_header";
}

/// Goes through the lines of one header for guards and includes.
class IncludeReader::FileScan {
  public:
    FileScan(IncludeReader& reader, const Url& url, std::string_view text)
        : reader_(reader), url_(url), lines_(text) {}

    /// False if a guard tells that the file was read before.
    Result<bool> Run(BaseArray<IncludeFileEntry>& entries) {
        while (lines_.Next()) {
            const std::string_view line = lines_.GetLine();
            if (line.starts_with("#ifndef ")) {
                if (!PassGuard(SplitWords(line)))
                    return false;
            } else if (line.starts_with("// ") &&
                       BeginsWith(SplitWords(line), "//", "INCLUDE_STRUCTS_BEGIN")) {
                NORVI_TRY(ReadRegion(entries));
            }
        }
        return true;
    }

  private:
    /// Takes "#define NAME" behind "#ifndef NAME". False if the name is known.
    bool PassGuard(const Words& words) {
        if (!lines_.Next())
            return true;
        const String name(words[1]);
        if (!BeginsWith(SplitWords(lines_.GetLine()), "#define", name)) {
            lines_.StepBack();
            return true;
        }
        return reader_.onceSet_.insert(name).second;
    }

    Result<void> ReadRegion(BaseArray<IncludeFileEntry>& entries) {
        while (lines_.Next()) {
            const std::string_view line = lines_.GetLine();
            if (!line.starts_with("#include ") && !line.starts_with("// "))
                continue;
            const Words words = SplitWords(line);
            if (BeginsWith(words, "//", "INCLUDE_STRUCTS_END"))
                return OK;
            if (words[0] == "#include")
                NORVI_TRY(Follow(Split(url_).directory.append(Without(words[1], 1, 1)), entries));
        }
        return OK;
    }

    Result<void> Follow(const Url& file, BaseArray<IncludeFileEntry>& entries) {
        auto included = reader_.Read(file, {url_.ToString(), lines_.GetFileLine()});
        if (!included)
            return AtPlace(Failure(included.TakeError()), url_.ToString(), lines_.GetFileLine());
        std::move(included->begin(), included->end(), std::back_inserter(entries));
        return OK;
    }

    IncludeReader& reader_;
    const Url& url_;
    LineReader lines_;
};

void IncludeReader::AppendPrologue(const Url& file) {
    const auto append = [this](const char* text) {
        shader_.globalBlocks.emplace_back().AppendLines(text, LineOrigin());
    };
    if (Holds(file.GetName(), "PNanoVDB")) {
        const auto row =
            std::find_if(std::begin(nanoVdbPrologues), std::end(nanoVdbPrologues),
                         [&](const auto& prologue) { return shader_.language == prologue.language; });
        append(row == std::end(nanoVdbPrologues) ? "" : row->text);
    }
    append("#define NORVI_WARN_MUTE_FUNCTION_LENGTH \n\n");
}

Result<void> IncludeReader::CountFile(const Url& url, size_t bytes) {
    byteCount_ += bytes;
    if (++fileCount_ > MostFiles || byteCount_ > SourceFiles::MostBytes)
        return IllegalStateError(Format("too many or too large includes: @ files of @ bytes with @",
                                        UInt64{fileCount_}, UInt64{byteCount_}, Shown(url)));
    return OK;
}

bool IncludeReader::IsOpen(const Url& url) const {
    return std::any_of(openFiles_.begin(), openFiles_.end(),
                       [&](UInt32 file) { return shader_.sourceFiles[file].url == url; });
}

UInt32 IncludeReader::AddSourceFile(const Url& url, const IncludeTextRef& text) {
    // The pointer to the bytes keeps the whole text alive.
    shader_.sourceFiles.push_back(
        {url, text->isEncoded,
         text->isEncoded ? nullptr : std::shared_ptr<const String>(text, &text->bytes)});
    return static_cast<UInt32>(shader_.sourceFiles.size() - 1);
}

bool IncludeReader::IsEncodedFileOpen() const {
    return !openFiles_.empty() && shader_.sourceFiles[openFiles_.back()].isEncoded;
}

/// The name of an included file, which must not be shown if it stands in an encoded one.
String IncludeReader::Shown(const Url& url) const {
    return IsEncodedFileOpen() ? "a header" : url.ToString();
}

/// The reason holds the name of the file.
void IncludeReader::LogUnreadable(const TextPlace& from, const String& reason) const {
    Log(LogLevel::Error, Format("@(@): a header is left out@", from.file, from.line,
                                IsEncodedFileOpen() ? "" : ": " + reason));
}

Result<BaseArray<IncludeFileEntry>> IncludeReader::ReadIncludes(const Url& file) {
    return Read(file, {file.ToString(), 1});
}

Result<BaseArray<IncludeFileEntry>> IncludeReader::Read(const Url& file, const TextPlace& from) {
    BaseArray<IncludeFileEntry> entries;
    AppendPrologue(file);
    const Url url = Normalized(GetCompanionUrl(file));
    const bool isCircle = IsOpen(url);
    if (!isCircle && openFiles_.size() >= MostNested)
        return IllegalStateError(
            Format("includes are nested more than @ deep at @", UInt64{MostNested}, Shown(url)));
    const IncludeTextRef text = isCircle ? nullptr : sources_.includeTextCache.Get(url, sources_.files);
    NORVI_TRY(CountFile(url, text ? text->bytes.size() : 0));
    if (!text)
        return entries;
    if (!text->error.empty()) {
        LogUnreadable(from, text->error);
        return entries;
    }
    const UInt32 sourceFile = AddSourceFile(url, text);
    openFiles_.push_back(sourceFile);
    const DecodedText decoded(text->bytes);
    auto isNew = FileScan(*this, url, decoded.Get()).Run(entries);
    openFiles_.pop_back();
    NORVI_TRY_VALUE(isFirst, std::move(isNew));
    if (!isFirst)
        entries.clear();
    else
        entries.push_back({url, text, sourceFile});
    return entries;
}

} // namespace norvi
