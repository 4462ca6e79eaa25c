#include "norvi/whole_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <norvi/host/text.h>

namespace norvi {

namespace {

/// Whether all bytes reached the file.
bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    return fsync(descriptor) == 0 || errno == EINVAL;
}

/// Writes and closes; false, with errno, for a failure.
bool WriteAndClose(int descriptor, std::string_view bytes) {
    const bool isWritten = WriteAll(descriptor, bytes);
    const int error = errno;
    const bool isClosed = close(descriptor) == 0;
    if (!isWritten)
        errno = error;
    return isWritten && isClosed;
}

/// A new file beside `target`; never one that is there, or a link that someone else has laid out.
int OpenBeside(const String& target, String& temporary) {
    int descriptor = -1;
    for (Int attempt = 0; attempt < 1000; ++attempt) {
        temporary = Format("@.@-@.part", target, Int{getpid()}, attempt);
        descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0 || errno != EEXIST)
            break;
    }
    return descriptor;
}

/// Zero, or the system's error number.
int Replace(const String& target, const struct stat* old, std::string_view bytes) {
    String temporary;
    const int descriptor = OpenBeside(target, temporary);
    if (descriptor < 0)
        return errno;
    const bool keepsMode = !old || fchmod(descriptor, old->st_mode & 07777) == 0;
    if (WriteAndClose(descriptor, bytes) && keepsMode && std::rename(temporary.c_str(), target.c_str()) == 0)
        return 0;
    const int error = errno;
    std::remove(temporary.c_str());
    return error;
}

/// The same for what is no regular file, such as a device.
int WriteTo(const String& path, std::string_view bytes) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    return descriptor >= 0 && WriteAndClose(descriptor, bytes) ? 0 : errno;
}

} // namespace

Result<void> WriteWholeFile(const String& path, std::string_view bytes) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        struct stat old {};
        const bool isThere = stat(path.c_str(), &old) == 0;
        int error = 0;
        if (isThere && !S_ISREG(old.st_mode) && !S_ISDIR(old.st_mode)) {
            error = WriteTo(path, bytes);
        } else {
            std::error_code ignored;
            const String target = isThere ? std::filesystem::canonical(path, ignored).string() : path;
            error = Replace(target.empty() ? path : target, isThere ? &old : nullptr, bytes);
        }
        return error == 0 ? Result<void>() : SystemError(Format("cannot write \"@\"", path), error);
    });
}

} // namespace norvi
