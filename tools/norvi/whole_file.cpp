#include "norvi/whole_file.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
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

} // namespace

Result<void> WriteWholeFile(const String& path, std::string_view bytes) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        const String temporary = Format("@.@.part", path, Int{getpid()});
        // Never through a link that someone else has laid out under this name.
        const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0)
            return SystemError(Format("cannot write \"@\"", path), errno);
        bool isWritten = WriteAll(descriptor, bytes);
        isWritten = close(descriptor) == 0 && isWritten;
        if (isWritten && std::rename(temporary.c_str(), path.c_str()) == 0)
            return OK;
        const int error = errno;
        std::remove(temporary.c_str());
        return SystemError(Format("cannot write \"@\"", path), error);
    });
}

} // namespace norvi
