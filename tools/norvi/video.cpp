#include "norvi/video.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <norvi/host/text.h>

#include "norvi/argument_text.h"

extern char** environ;

namespace norvi {

namespace {

constexpr const char* Encoder = "ffmpeg";

/// The file that a shell would run for `name`; empty if there is none.
String FindProgram(const char* name) {
    const char* searchPath = std::getenv("PATH");
    for (const String& folder : SplitText(searchPath ? searchPath : "", ':')) {
        const String file = (std::filesystem::path(folder) / name).string();
        std::error_code ignored;
        if (!folder.empty() && std::filesystem::is_regular_file(file, ignored) &&
            access(file.c_str(), X_OK) == 0)
            return file;
    }
    return {};
}

/// The list of pictures in the encoder's form, as a file that goes with the object.
class PictureList {
  public:
    explicit PictureList(const String& video) : path_(video + ".list") {}
    PictureList(const PictureList&) = delete;
    PictureList& operator=(const PictureList&) = delete;
    ~PictureList() { unlink(path_.c_str()); }

    const String& GetPath() const { return path_; }
    Result<void> Write(const BaseArray<String>& pictures) const {
        std::ofstream file(path_);
        for (const String& picture : pictures)
            file << "file '" << Quoted(std::filesystem::absolute(picture).string()) << "'\n";
        if (!file.flush())
            return IllegalStateError(Format("cannot write \"@\"", path_));
        return OK;
    }

  private:
    /// For single quotes: a quote ends them, stands escaped, and begins them again.
    static String Quoted(const String& text) {
        String result;
        for (const char c : text)
            result += c == '\'' ? String("'\\''") : String(1, c);
        return result;
    }

    String path_;
};

/// Runs a program with these arguments, without a shell, and waits for it.
Result<void> RunProgram(const BaseArray<String>& arguments) {
    BaseArray<char*> pointers;
    for (const String& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    pid_t child = 0;
    if (const int error = posix_spawn(&child, pointers[0], nullptr, nullptr, pointers.data(), environ))
        return SystemError(Format("cannot run \"@\"", arguments.front()), error);
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return SystemError(Format("cannot wait for \"@\"", arguments.front()), errno);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return OK;
    return IllegalStateError(
        WIFEXITED(status) ? Format("\"@\" failed with status @", arguments.front(), WEXITSTATUS(status))
                          : Format("\"@\" was ended by signal @", arguments.front(), WTERMSIG(status)));
}

} // namespace

Result<void> CheckVideo(Int every) {
    if (every < 1)
        return IllegalArgumentError("--video: pictures are needed every so many steps; add --every");
    if (FindProgram(Encoder).empty())
        return IllegalArgumentError("--video: the program ffmpeg is not installed");
    return OK;
}

Result<void> WriteVideo(const String& path, const BaseArray<String>& pictures) {
    const PictureList list(path);
    NORVI_TRY(list.Write(pictures));
    // Beyond the reach of "-" at the front of a name: paths of options are absolute.
    const String target = std::filesystem::absolute(path).string();
    // Players want an even number of columns and rows and colours at half the resolution.
    return RunProgram({FindProgram(Encoder),
                       "-nostdin",
                       "-y",
                       "-loglevel",
                       "error",
                       "-r",
                       "30",
                       "-f",
                       "concat",
                       "-safe",
                       "0",
                       "-i",
                       std::filesystem::absolute(list.GetPath()).string(),
                       "-vf",
                       "crop=trunc(iw/2)*2:trunc(ih/2)*2,format=yuv420p",
                       "-c:v",
                       "libx264",
                       "-crf",
                       "16",
                       "-r",
                       "30",
                       "-movflags",
                       "+faststart",
                       target});
}

} // namespace norvi
