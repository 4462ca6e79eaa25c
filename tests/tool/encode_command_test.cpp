#include "norvi/encode_command.h"

#include <sstream>

#include <norvi/host/text.h>

#include "norvi/whole_file.h"
#include "tool_fixture.h"

namespace norvi {

namespace {

String ReadText(const String& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace

TEST(EncodeCommand, FilesComeBackAsTheyWere) {
    const ScratchFolder folder;
    const String plain = folder.Write("k.kernel", String("secret\n\0text", 12));
    const String encoded = folder.File("encoded.kernel"), decoded = folder.File("decoded.kernel");
    EXPECT_EQ(MessageOf(EncodeFile(plain, encoded)), "");
    const String first = ReadText(encoded);
    EXPECT_TRUE(first.starts_with("encoded"));
    EXPECT_EQ(first.find("secret"), String::npos);
    EXPECT_EQ(MessageOf(EncodeFile(plain, encoded)), "");
    EXPECT_NE(ReadText(encoded), first) << "two files have the same nonce";
    EXPECT_EQ(MessageOf(DecodeFile(encoded, decoded)), "");
    EXPECT_EQ(ReadText(decoded), ReadText(plain));
    // In place.
    EXPECT_EQ(MessageOf(EncodeFile(plain, plain)), "");
    EXPECT_EQ(ReadText(plain).find("secret"), String::npos);
    EXPECT_EQ(folder.CountFiles(), 3);
}

TEST(EncodeCommand, WhatIsWrittenToKeepsItsKind) {
    namespace fs = std::filesystem;
    const ScratchFolder folder;
    const String target = folder.Write("target", "old"), link = folder.File("link");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("target", link);
    folder.Write(Format("target.@-0.part", Int{getpid()}), "left over from another process");
    EXPECT_EQ(MessageOf(WriteWholeFile(link, "new")), "");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(ReadText(target), "new");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(MessageOf(WriteWholeFile("/dev/null", "new")), "");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(folder.CountFiles(), 3);
}

TEST(EncodeCommand, RefusesWhatItCannotRead) {
    const ScratchFolder folder;
    const String plain = folder.Write("k.kernel", "text");
    const String encoded = folder.File("e.kernel"), output = folder.File("o.kernel");
    ASSERT_EQ(MessageOf(EncodeFile(plain, encoded)), "");
    EXPECT_EQ(MessageOf(EncodeFile(encoded, output)), "\"" + encoded + "\" is encoded already");
    EXPECT_EQ(MessageOf(DecodeFile(plain, output)), "\"" + plain + "\" is not encoded");
    String broken = ReadText(encoded);
    broken.back() = static_cast<char>(broken.back() ^ 1);
    const String file = folder.Write("broken.kernel", broken);
    EXPECT_EQ(MessageOf(DecodeFile(file, output)),
              "\"" + file + "\" was cut off or changed, or is not of this program");
    EXPECT_FALSE(std::filesystem::exists(output));
    EXPECT_EQ(MessageOf(EncodeFile("saxpi", output)),
              "there is no file and no installed kernel 'saxpi'; did you mean 'saxpy'?");
    EXPECT_EQ(folder.CountFiles(), 3);
}

TEST(EncodeCommand, LeavesNothingBehindWhenItCannotWrite) {
    const ScratchFolder folder;
    const String missing = folder.File("no/such/file");
    EXPECT_EQ(MessageOf(WriteWholeFile(missing, "x")),
              "cannot write \"" + missing + "\": No such file or directory");
    // A folder of this name: the text is written, and then cannot get its name.
    std::filesystem::create_directory(folder.File("folder"));
    EXPECT_EQ(MessageOf(WriteWholeFile(folder.File("folder"), "x")),
              "cannot write \"" + folder.File("folder") + "\": Is a directory");
    EXPECT_EQ(folder.CountFiles(), 1);
}

} // namespace norvi
