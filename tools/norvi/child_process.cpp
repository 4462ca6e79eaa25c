#include "norvi/child_process.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <norvi/host/text.h>

extern char** environ;

namespace norvi {

namespace {

class Descriptor {
  public:
    explicit Descriptor(int value = -1) : value_(value) {}
    Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Descriptor() {
        if (value_ >= 0)
            close(value_);
    }
    int Get() const { return value_; }

  private:
    int value_;
};

/// A file in memory that stands at its beginning.
Result<Descriptor> InMemory(std::string_view bytes) {
    Descriptor file(memfd_create("norvi", MFD_CLOEXEC));
    while (file.Get() >= 0 && !bytes.empty()) {
        const ssize_t count = write(file.Get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return SystemError("cannot write to memory", errno);
        bytes.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    if (file.Get() < 0 || lseek(file.Get(), 0, SEEK_SET) != 0)
        return SystemError("cannot make a file in memory", errno);
    return file;
}

/// Starts the program with these descriptors as its standard input, output and error.
int Start(const BaseArray<String>& command, int input, int output, pid_t& child) {
    BaseArray<char*> pointers;
    for (const String& argument : command)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    const int error = posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

/// The program may be given text that takes it forever, or all memory.
void Limit(pid_t child) {
    constexpr rlimit seconds{60, 60}, bytes{rlim_t{4} << 30, rlim_t{4} << 30};
    prlimit(child, RLIMIT_CPU, &seconds, nullptr);
    prlimit(child, RLIMIT_AS, &bytes, nullptr);
}

constexpr size_t MostOutput = size_t{1} << 20;

String ReadToEnd(int descriptor) {
    String text;
    std::array<char, 4096> buffer;
    for (ssize_t count; (count = read(descriptor, buffer.data(), buffer.size())) != 0;) {
        if (count < 0 && errno != EINTR)
            break;
        if (text.size() < MostOutput)
            text.append(buffer.data(), count > 0 ? static_cast<size_t>(count) : 0);
    }
    return text;
}

} // namespace

Result<ChildResult> RunWithInput(const BaseArray<String>& command, std::string_view input) {
    NORVI_TRY_VALUE(file, InMemory(input));
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return SystemError("cannot make a pipe", errno);
    const Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);
    pid_t child = 0;
    const int error = Start(command, file.Get(), writeEnd.Get(), child);
    if (error == ENOENT)
        return NotFoundError(Format("there is no program @", command.front()));
    if (error != 0)
        return SystemError(Format("cannot run @", command.front()), error);
    Limit(child);
    writeEnd = Descriptor();
    ChildResult result;
    result.output = ReadToEnd(readEnd.Get());
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return SystemError(Format("cannot wait for @", command.front()), errno);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

} // namespace norvi
