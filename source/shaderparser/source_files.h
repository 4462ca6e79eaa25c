// Where the parser's texts come from.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>

#include <norvi/host/result.h>
#include <norvi/host/url.h>

namespace norvi {

/// The files of the parser's world. Called from any thread.
class SourceFiles {
  public:
    /// Files of more bytes than this are not read.
    static constexpr size_t MostBytes = 64 << 20;

    virtual ~SourceFiles() = default;
    /// Whether `url` denotes a regular file.
    virtual Bool IsFile(const Url& url) = 0;
    /// All bytes of a file.
    virtual Result<String> Read(const Url& url) = 0;
};

/// Files of the file system: a Url is a path here, and may begin with "file://".
class DiskFiles final : public SourceFiles {
  public:
    Bool IsFile(const Url& url) override;
    Result<String> Read(const Url& url) override;
};

/// A header's text, decoded if it was encoded.
struct IncludeText {
    String bytes;
    bool isEncoded = false; ///< the file was
    String error;           ///< why a file that is there cannot be read; it counts as empty then
};

using IncludeTextRef = std::shared_ptr<const IncludeText>;

/// Keeps every header that was ever read, so that a file is read once however many kernels include it. What
/// could not be read stays missing, and a file that changes later is not read again.
class IncludeTextCache {
  public:
    /// The text of `url`, or null if there is no such file. Threads that ask at once wait for one read.
    IncludeTextRef Get(const Url& url, SourceFiles& files);

  private:
    std::mutex mutex_;
    std::unordered_map<String, IncludeTextRef> texts_;
};

/// What a parse reads from.
struct SourceAccess {
    SourceFiles& files;
    IncludeTextCache& includeTextCache;
};

/// The file system with the cache of this process.
SourceAccess GetProcessSources();

} // namespace norvi
