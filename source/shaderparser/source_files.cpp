#include "source_files.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <norvi/host/text.h>

#include "encoded_file.h"

namespace norvi {

namespace {

/// The path of a Url; none, which is no file's, for one that the system would take for a shorter one.
String PathOf(const Url& url) {
    static constexpr std::string_view scheme = "file://";
    const String& text = url.ToString();
    if (text.find('\0') != String::npos)
        return {};
    return text.starts_with(scheme) ? text.substr(scheme.size()) : text;
}

class OpenFile {
  public:
    /// Does not wait for the other end of a pipe.
    explicit OpenFile(const String& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int Get() const { return descriptor_; }

  private:
    int descriptor_;
};

IncludeTextRef ReadInclude(const Url& url, SourceFiles& files) {
    auto bytes = files.Read(url);
    if (!bytes && !files.IsFile(url))
        return nullptr;
    auto text = std::make_shared<IncludeText>();
    if (!bytes) {
        text->error = bytes.GetError().GetMessage();
        return text;
    }
    text->isEncoded = HasEncodedMagic(*bytes);
    text->bytes = std::move(*bytes);
    // What cannot be decoded is taken as it stands.
    (void)DecodeShaderFile(text->bytes);
    return text;
}

Failure ReadError(const Url& url, int code) {
    return SystemError(Format("cannot read @", url), code);
}

} // namespace

Bool DiskFiles::IsFile(const Url& url) {
    struct stat status;
    return stat(PathOf(url).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

Result<String> DiskFiles::Read(const Url& url) {
    const OpenFile file(PathOf(url));
    struct stat status;
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0)
        return ReadError(url, errno);
    if (!S_ISREG(status.st_mode))
        return IllegalArgumentError(Format("@ is no regular file", url));
    if (static_cast<size_t>(status.st_size) > MostBytes)
        return IllegalArgumentError(
            Format("@ has @ bytes; more than @ are not read", url, Int{status.st_size}, UInt64{MostBytes}));
    String bytes(static_cast<size_t>(status.st_size), '\0');
    size_t length = 0;
    while (length < bytes.size()) {
        const ssize_t count = read(file.Get(), bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno != EINTR)
            return ReadError(url, errno);
        if (count == 0)
            break;
        length += count > 0 ? static_cast<size_t>(count) : 0;
    }
    bytes.resize(length);
    return bytes;
}

IncludeTextRef IncludeTextCache::Get(const Url& url, SourceFiles& files) {
    std::lock_guard lock(mutex_);
    if (const auto found = texts_.find(url.ToString()); found != texts_.end())
        return found->second;
    const IncludeTextRef text = ReadInclude(url, files);
    texts_.emplace(url.ToString(), text);
    return text;
}

SourceAccess GetProcessSources() {
    // Never destroyed: threads may still parse while the process ends.
    static auto* files = new DiskFiles;
    static auto* cache = new IncludeTextCache;
    return {*files, *cache};
}

} // namespace norvi
