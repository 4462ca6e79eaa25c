// Finds the header texts that go with a kernel file.
#pragma once

#include <unordered_set>

#include "shader_pieces.h"
#include "source_files.h"

namespace norvi {

/// A header, with the text that was read for it.
struct IncludeFileEntry {
    Url url;
    IncludeTextRef text;
    UInt32 sourceFile = 0; ///< index into the table of source files
};

/// The file in which the header text of `file` stands, beside it: "PNanoVDB.h" for names that hold PNanoVDB,
/// the suffix "inc" for files whose suffix holds "vert" or "frag", and else "name_header" for "name.suffix".
Url GetCompanionUrl(const Url& file);

/// Follows the includes of one parse. A header counts by its guard, once; includes that lead back to a header
/// that is being read end there, and count like any other.
class IncludeReader {
  public:
    /// Headers may include each other so deep, and there may be so many of them.
    static constexpr size_t MostNested = 64, MostFiles = 1024;

    IncludeReader(ShaderPieces& shader, SourceAccess sources) : shader_(shader), sources_(sources) {}

    /// The companion of `file` behind the headers that it includes, directly or not. Appends the defines that
    /// go with each file to the global blocks. A missing companion is no failure, and neither is one that
    /// cannot be read; the log tells of the latter.
    Result<BaseArray<IncludeFileEntry>> ReadIncludes(const Url& file);

  private:
    class FileScan;

    /// @param from what asks for the file.
    Result<BaseArray<IncludeFileEntry>> Read(const Url& file, const TextPlace& from);
    void AppendPrologue(const Url& file);
    bool IsOpen(const Url& url) const;
    UInt32 AddSourceFile(const Url& url, const IncludeTextRef& text);
    bool IsEncodedFileOpen() const;
    String Shown(const Url& url) const;
    void LogUnreadable(const TextPlace& from, const String& reason) const;
    Result<void> CountFile(const Url& url, size_t bytes);

    ShaderPieces& shader_;
    SourceAccess sources_;
    std::unordered_set<String> onceSet_; ///< guards that were met
    BaseArray<UInt32> openFiles_;        ///< source files, from the outermost to the one being read
    size_t fileCount_ = 0;
    size_t byteCount_ = 0;
};

} // namespace norvi
