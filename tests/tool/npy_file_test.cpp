#include "norvi/npy_file.h"

#include <cstring>

#include "tool_fixture.h"

namespace norvi {

namespace {

/// A file of the given version with `header` as its text.
String NpyBytes(char version, const String& header, const String& elements) {
    String bytes = "\x93NUMPY";
    bytes += version;
    bytes += '\0';
    bytes += static_cast<char>(header.size() & 0xff);
    bytes += static_cast<char>(header.size() >> 8);
    if (version == 2)
        bytes.append(2, '\0');
    return bytes + header + elements;
}

String HeaderOf(const String& code, const String& order, const String& shape) {
    return Format("{'descr': '@', 'fortran_order': @, 'shape': @, }\n", code, order, shape);
}

const String TwoFloats("\0\0\x80\x3f\0\0\0\x40", 8); // 1 and 2

} // namespace

TEST(NpyFile, WhatIsWrittenReadsBackForEveryTypeAndShape) {
    const ScratchFolder folder;
    BaseArray<std::byte> bytes(8 * 24);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::byte>(i % 2); // also good for bool
    for (const ScalarType& scalar : ScalarTypes())
        for (const BaseArray<Int>& shape : BaseArray<BaseArray<Int>>{{}, {24}, {8, 3}, {2, 3, 4}}) {
            const String path = folder.File("a.npy");
            ASSERT_EQ(MessageOf(WriteNpy(path, scalar, shape, bytes.data())), "");
            const auto array = ReadNpy(path);
            ASSERT_TRUE(array) << MessageOf(array);
            EXPECT_EQ(array->scalar, &scalar);
            EXPECT_EQ(array->shape, shape);
            EXPECT_EQ(array->GetCount(), shape.empty() ? 1 : 24);
            EXPECT_EQ(std::memcmp(array->bytes.data(), bytes.data(), array->bytes.size()), 0);
            // Readers map files and expect aligned elements.
            EXPECT_EQ(std::filesystem::file_size(path), 128 + array->bytes.size());
        }
    EXPECT_EQ(folder.CountFiles(), 1) << "temporary files stay behind";
}

TEST(NpyFile, ReadsWhatOtherWritersMayWrite) {
    const char* headers[] = {
        "{'descr': '<f4', 'fortran_order': False, 'shape': (2,), }\n",
        "{\"shape\": (2,), \"descr\": \"<f4\", \"fortran_order\": False}",
        "  { 'fortran_order' : False , 'shape' : ( 1 , 2 ) , 'descr' : '<f4' }   \n",
    };
    for (const char* header : headers)
        for (char version : {1, 2}) {
            const auto array = ParseNpy(NpyBytes(version, header, TwoFloats));
            ASSERT_TRUE(array) << MessageOf(array);
            ASSERT_EQ(array->GetCount(), 2);
            EXPECT_EQ(array->scalar->load(&array->bytes[4]), 2);
        }
}

TEST(NpyFile, MalformedFilesGiveErrorsThatTellTheReason) {
    const String good = HeaderOf("<f4", "False", "(2,)");
    const struct {
        String bytes;
        const char* message;
    } cases[] = {
        {"", "it is no .npy file"},
        {"PK\x03\x04", "it is no .npy file"},
        {"\x93NUMPY", "it ends inside its header"},
        {"\x93NUMPY\x01", "it ends inside its header"},
        {NpyBytes(1, good, "").substr(0, 30), "it ends inside its header"},
        {NpyBytes(2, good, "").substr(0, 11), "it ends inside its header"},
        {NpyBytes(3, good, TwoFloats), "version 3.0 of the format is not supported"},
        {NpyBytes(1, "", ""), "the header is no dictionary: '{' is missing"},
        {NpyBytes(1, "{", ""), "the header is no dictionary: a text in quotes is missing"},
        {NpyBytes(1, "{'descr", ""), "the header is no dictionary: a text in quotes is missing"},
        {NpyBytes(1, "{'descr' '<f4'}", ""), "the header is no dictionary: ':' is missing"},
        {NpyBytes(1, "{}", ""), "the header lacks one of 'descr', 'fortran_order' and 'shape'"},
        {NpyBytes(1, good + "}", TwoFloats), "there is text behind the header's dictionary"},
        {NpyBytes(1, "{'colour': 'red'}", ""), "the header has an unknown key 'colour'"},
        {NpyBytes(1, "{'descr': '<f4', 'descr': '<f4'}", ""), "the header has the key 'descr' twice"},
        {NpyBytes(1, "{'descr': [('a', '<f4')]}", ""), "structured elements are not supported"},
        {NpyBytes(1, HeaderOf("<f4", "Maybe", "(2,)"), ""),
         "the header's 'fortran_order' is neither True nor False"},
        {NpyBytes(1, HeaderOf("<f4", "True", "(1, 2)"), TwoFloats),
         "its elements are in Fortran order; save it with numpy.ascontiguousarray"},
        {NpyBytes(1, HeaderOf(">f4", "False", "(2,)"), TwoFloats),
         "its numbers are big-endian; save it in the order of this machine"},
        {NpyBytes(1, HeaderOf("<c8", "False", "(1,)"), TwoFloats),
         "elements of type '<c8' are not supported"},
        {NpyBytes(1, HeaderOf("<f4", "False", "(-2,)"), TwoFloats),
         "the header's 'shape' is no tuple of up to 32 sizes"},
        {NpyBytes(1, HeaderOf("<f4", "False", "(99999999999999999999,)"), TwoFloats),
         "the header's 'shape' is no tuple of up to 32 sizes"},
        {NpyBytes(1, HeaderOf("<f4", "False", "(4294967296, 4294967296)"), TwoFloats),
         "its shape is larger than any memory"},
        {NpyBytes(1, HeaderOf("<f4", "False", "(1000000000000,)"), TwoFloats),
         "its header tells of 4000000000000 bytes of elements, but 8 follow"},
        {NpyBytes(1, good, TwoFloats.substr(1)), "its header tells of 8 bytes of elements, but 7 follow"},
        {NpyBytes(1, good, TwoFloats + "x"), "its header tells of 8 bytes of elements, but 9 follow"},
    };
    for (const auto& [bytes, message] : cases)
        EXPECT_EQ(MessageOf(ParseNpy(bytes)), message);
}

TEST(NpyFile, CutAnywhereOrWithAnyByteChangedItIsReadOrRefused) {
    const String good = NpyBytes(1, HeaderOf("<f4", "False", "(2,)"), TwoFloats);
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(ParseNpy(good.substr(0, length)));
    Int accepted = 0;
    for (std::size_t i = 0; i < good.size() - TwoFloats.size(); ++i)
        for (int change = 1; change < 256; ++change) {
            String bytes = good;
            bytes[i] = static_cast<char>(bytes[i] ^ change);
            const auto array = ParseNpy(bytes);
            accepted += array.IsOk();
            EXPECT_TRUE(!array || array->bytes.size() == 8u);
        }
    // Blanks may be other blanks, the type may be another of four bytes; hardly anything else.
    EXPECT_LT(accepted, 100);
}

TEST(NpyFile, ErrorsNameTheFileAndWritersLeaveWhatWasThere) {
    const ScratchFolder folder;
    EXPECT_EQ(MessageOf(ReadNpy(folder.File("absent.npy"))),
              Format("cannot read \"@\": there is no such file", folder.File("absent.npy")));
    EXPECT_EQ(MessageOf(ReadNpy(folder.File(""))),
              Format("cannot read \"@\": it is no regular file", folder.File("")));
    const String inNoFolder = folder.File("absent/a.npy");
    EXPECT_EQ(MessageOf(WriteNpy(inNoFolder, ScalarTypes()[0], {1}, "1234")),
              Format("cannot write \"@\": No such file or directory", inNoFolder));
    std::filesystem::create_directory(folder.File("taken.npy"));
    EXPECT_FALSE(WriteNpy(folder.File("taken.npy"), ScalarTypes()[0], {1}, "1234"));
    EXPECT_EQ(folder.CountFiles(), 1);
}

} // namespace norvi
