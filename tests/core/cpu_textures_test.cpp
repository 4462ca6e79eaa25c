// Global textures: checks in their order, links, replacement and deletion under kernels that are bound.
#include "support/test_kernels.h"

namespace norvi {
namespace {

using Floats = BaseArray<Float32>;

TextureBindData Row(const Floats& texels) {
    TextureBindData texture;
    texture._data = reinterpret_cast<const UChar*>(texels.data());
    texture._size = static_cast<Int>(texels.size() * sizeof(Float32));
    texture._dimensions = {static_cast<UInt32>(texels.size()), 1, 1};
    texture._numChannels = 1;
    texture._sampleLinear = 1;
    return texture;
}

TextureBindData Row(Floats&& texels) = delete;

class TextureTest : public ProgramTest {
  protected:
    TextureTest() {
        classes.Enter<TexelReader>("reader");
        StoreRow("t", {1, 2, 3, 4});
        StoreRow("u", {5, 6, 7, 8});
        StoreRow("short", {9, 10});
        Store<Float32>("data", {-1, -1, -1, -1});
        AddKernel("reader");
        EXPECT_OK(program->SetBufferToActiveKernelSameId("data"));
    }
    void StoreRow(const char* id, const Floats& texels) {
        EXPECT_OK(program->StoreTextureBindData(id, Row(texels), false));
    }
    Floats Texels(const char* id) {
        auto data = program->GetTextureData(id, {}, {});
        EXPECT_OK(data);
        const auto* copy = data.IsOk() ? data->Get<std::shared_ptr<SamplingData>>() : nullptr;
        if (!copy)
            return {};
        const auto* first = reinterpret_cast<const Float32*>((*copy)->_data);
        return Floats(first, first + (*copy)->_size / 4);
    }
    /// What the active kernel sees.
    Floats Seen() {
        EXPECT_OK(program->UpdateUniforms());
        return SeenAsBound();
    }
    Floats SeenAsBound() {
        EXPECT_OK(program->DispatchKernel(4, 1, 1, false));
        return Read<Float32>("data");
    }
};

TEST_F(TextureTest, ChecksComeInOrderAndChangeNothing) {
    const char* const argument = errorkind::IllegalArgument;
    const char* const state = errorkind::IllegalState;
    const char* const unknown = "texture sampler identifier not found";
    const Floats texels{1, 2};
    TextureBindData noExtent = Row(texels), wrong = Row(texels);
    noExtent._dimensions.y = 0;
    wrong._numChannels = 5;
    const auto copy = [&](const char* source, const char* target, Int count, Int sourceOffset,
                          Int targetOffset, const char* message) {
        return FailingCall{
            "Copy",
            [=](auto& p) { return p.CopyTextureBytes(source, target, count, sourceOffset, targetOffset); },
            argument, message};
    };
    ExpectFailures(
        *program,
        {{"Store", [&](auto& p) { return p.StoreTextureBindData("t", noExtent, false); }, argument,
          "_dimensions in texBindData have to be larger or equal to 1!"},
         {"Create", [&](auto& p) { return p.CreateTexture("t", wrong); }, argument,
          "Dimensions has to be in the range [1,3], numberChannels in [1,4]."},
         {"Update", [&](auto& p) { return p.UpdateTextureBindData("none", wrong); }, argument, unknown},
         {"Update", [&](auto& p) { return p.UpdateTextureBindData("t", wrong); }, argument,
          "Size of input TextureBindData differs from the size of the stored texture."},
         {"Get", [&](auto& p) { return WithoutValue(p.GetTextureData("none", {}, {})); }, argument, unknown},
         copy("none", "none", -1, 0, 0, "source texture could not be found."),
         copy("t", "none", -1, 0, 0, "target texture could not be found."),
         copy("t", "short", -1, 0, 0, "If bytesCount is negative, both textures should be of the same size."),
         copy("t", "short", 17, 0, 9, "bytesCount + sourceBytesOffset is larger than source texture size."),
         copy("t", "short", std::numeric_limits<Int>::max(), 8, 0,
              "bytesCount + sourceBytesOffset is larger than source texture size."),
         copy("t", "short", 4, -4, 0, "bytesCount + sourceBytesOffset is larger than source texture size."),
         copy("t", "short", 9, 0, 0, "bytesCount + targetBytesOffset is larger than target texture size."),
         {"Swap", [](auto& p) { return p.SwapTextures("none", "t"); }, argument,
          "buffer one could not be found"},
         {"Swap", [](auto& p) { return p.SwapTextures("t", "none"); }, argument,
          "buffer two could not be found"},
         {"Set", [](auto& p) { return p.SetTextureToActiveKernelSameId("none", true); }, errorkind::NotFound,
          "no entry for key 'none'"},
         {"Link", [](auto& p) { return p.SetKernelTextureLink("texture", Data(Float32{1})); }, state,
          "Data holds float32, but norvi::TextureSamplerDataHelper is needed."},
         {"Link",
          [](auto& p) {
              return p.SetKernelTextureLink("texture", static_cast<TextureSamplerDataHelper*>(0));
          },
          state, "The texture link is null."}});
    EXPECT_EQ(Texels("t"), (Floats{1, 2, 3, 4}));
    EXPECT_OK(program->Reset());
    EXPECT_FALSE(program->HasTexture("t"));
    StoreRow("t", {1, 2});
    ExpectFailures(*program, {{"Set", [](auto& p) { return p.SetTextureToActiveKernelSameId("t", false); },
                               state, "no active kernel set"}});
}

TEST_F(TextureTest, BytesAreCopiedAndReadBackApart) {
    EXPECT_OK(program->CopyTextureBytes("t", "u", -1, 99, 99));
    EXPECT_EQ(Texels("u"), (Floats{1, 2, 3, 4}));
    EXPECT_OK(program->CopyTextureBytes("short", "u", 4, 4, 8));
    EXPECT_EQ(Texels("u"), (Floats{1, 2, 10, 4}));
    EXPECT_OK(program->CopyTextureBytes("u", "u", 12, 0, 4));
    EXPECT_EQ(Texels("u"), (Floats{1, 1, 2, 10}));
    EXPECT_OK(program->CopyTextureBytes("short", "u", 0, 8, 16));

    auto before = program->GetTextureData("u", {}, {});
    const Floats texels{20, 21, 22, 23};
    EXPECT_OK(program->UpdateTextureBindData("u", Row(texels)));
    EXPECT_EQ(Texels("u"), texels);
    EXPECT_EQ(reinterpret_cast<Float32*>((*before->Get<std::shared_ptr<SamplingData>>())->_data)[3], 10);

    TextureBindData description = Row(texels);
    EXPECT_OK(program->CreateTexture("u", description));
    EXPECT_EQ(description._data, nullptr);
    EXPECT_EQ(Texels("u"), (Floats{0, 0, 0, 0}));
}

TEST_F(TextureTest, KernelsSeeWhatIsBoundUntilItIsBoundAnew) {
    EXPECT_EQ(Seen(), (Floats{0, 0, 0, 0})) << "nothing was bound";
    EXPECT_OK(program->SetTextureToActiveKernel("t", "texture", false));
    EXPECT_EQ(Seen(), (Floats{1, 2, 3, 4}));
    EXPECT_OK(program->SwapTextures("t", "u"));
    EXPECT_EQ(Seen(), (Floats{1, 2, 3, 4}));
    EXPECT_OK(program->SetTextureToActiveKernel("t", "texture", false));
    EXPECT_EQ(Seen(), (Floats{5, 6, 7, 8}));
    StoreRow("t", {30, 31, 32, 33});
    EXPECT_EQ(Seen(), (Floats{5, 6, 7, 8})) << "an entry that was replaced stays";

    EXPECT_OK(program->CopyKernel("k", "copy", false, {}));
    program->SetActiveKernel("copy");
    EXPECT_EQ(Seen(), (Floats{5, 6, 7, 8}));
}

TEST_F(TextureTest, ADeletedTextureIsGoneFromAllKernelsButNeverDangles) {
    EXPECT_OK(program->SetTextureToActiveKernel("t", "texture", false));
    EXPECT_OK(program->SetTextureToActiveKernel("t", "unknownParameter", false));
    EXPECT_OK(program->CopyKernel("k", "copy", false, {}));
    EXPECT_EQ(Seen(), (Floats{1, 2, 3, 4}));
    EXPECT_OK(program->DeleteTexture("t", false));
    EXPECT_OK(program->DeleteTexture("t", true));
    EXPECT_FALSE(program->HasTexture("t"));
    EXPECT_EQ(SeenAsBound(), (Floats{1, 2, 3, 4})) << "the member keeps its last value";
    EXPECT_EQ(Seen(), (Floats{1, 2, 3, 4}));
    program->SetActiveKernel("copy");
    EXPECT_EQ(Seen(), (Floats{0, 0, 0, 0})) << "it was never written into this object";
}

TEST_F(TextureTest, ATextureOfAnotherKindIsRefused) {
    const Floats texels{1, 2, 3, 4};
    TextureBindData pair = Row(texels);
    pair._dimensions = {2, 1, 1};
    pair._numChannels = 2;
    EXPECT_OK(program->StoreTextureBindData("pair", pair, false));
    EXPECT_OK(program->SetTextureToActiveKernel("pair", "texture", false));
    EXPECT_TRUE(FailsWith(program->UpdateUniforms(), errorkind::IllegalState,
                          "texture 'texture' is of another kind than the kernel's parameter of type "
                          "norvi::TextureSamplerObj_1D_R_F32_LINEAR"));
    EXPECT_OK(program->SetTextureToActiveKernel("t", "texture", false));
    EXPECT_OK(program->SetTextureToActiveKernel("t", "data", false));
    EXPECT_TRUE(FailsWith(program->UpdateUniforms(), errorkind::IllegalState,
                          "texture 'data' is of another kind than the kernel's parameter of type "
                          "Block<float32>"))
        << "dictionaries keep their order, so the pair was replaced first";
}

} // namespace
} // namespace norvi
