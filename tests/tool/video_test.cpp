#include "norvi/video.h"

#include <cstdlib>

#include "tool_fixture.h"

namespace norvi {
namespace {

/// Programs are looked for in the scratch folder alone while a test runs.
class VideoTest : public testing::Test {
  protected:
    VideoTest() : oldPath_(std::getenv("PATH")) { setenv("PATH", folder_.File(".").c_str(), 1); }
    ~VideoTest() override { setenv("PATH", oldPath_.c_str(), 1); }

    /// A stand-in for the encoder.
    String InstallEncoder(const String& script) const {
        const String file = folder_.Write("ffmpeg", "#!/bin/sh\n" + script);
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        return folder_.File("./ffmpeg");
    }
    static String ContentsOf(const String& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    ScratchFolder folder_;
    String oldPath_;
};

TEST_F(VideoTest, NeedsPicturesAndTheEncoder) {
    EXPECT_EQ(MessageOf(CheckVideo(0)), "--video: pictures are needed every so many steps; add --every");
    EXPECT_EQ(MessageOf(CheckVideo(5)), "--video: the program ffmpeg is not installed");
    folder_.Write("ffmpeg", "not executable");
    EXPECT_EQ(MessageOf(CheckVideo(5)), "--video: the program ffmpeg is not installed");
    InstallEncoder("exit 0\n");
    EXPECT_EQ(MessageOf(CheckVideo(5)), "");
}

TEST_F(VideoTest, HandsTheListOfPicturesOverAndRemovesIt) {
    // Copies the list, the argument behind "-i", to the last argument.
    InstallEncoder("while [ $# -gt 1 ]; do [ \"$1\" = -i ] && list=$2; shift; done\n"
                   "while IFS= read -r line; do echo \"$line\"; done < \"$list\" > \"$1\"\n");
    const String video = folder_.File("film.mp4");
    EXPECT_EQ(MessageOf(WriteVideo(video, {"/a b/1.png", "/it's/2.png"})), "");
    EXPECT_EQ(ContentsOf(video), "file '/a b/1.png'\nfile '/it'\\''s/2.png'\n");
    EXPECT_FALSE(std::filesystem::exists(video + ".list"));
}

TEST_F(VideoTest, AFailureOfTheEncoderIsAnError) {
    const String encoder = InstallEncoder("exit 3\n");
    EXPECT_EQ(MessageOf(WriteVideo(folder_.File("film.mp4"), {"1.png"})),
              "\"" + encoder + "\" failed with status 3");
    InstallEncoder("kill -9 $$\n");
    EXPECT_EQ(MessageOf(WriteVideo(folder_.File("film.mp4"), {"1.png"})),
              "\"" + encoder + "\" was ended by signal 9");
}

} // namespace
} // namespace norvi
