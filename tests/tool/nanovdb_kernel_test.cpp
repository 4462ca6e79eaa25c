// The kernel that reads NanoVDB grids, where the library's headers are there.
#include "norvi/kernel_file.h"
#include "norvi/npy_file.h"
#include "norvi/run_command.h"
#include "norvi/translate_command.h"
#include "tool_fixture.h"

#if __has_include(<nanovdb/util/Primitives.h>)
#include <nanovdb/util/Primitives.h>
#define NORVI_WITH_NANOVDB 1
#else
#define NORVI_WITH_NANOVDB 0
#endif

namespace norvi {

#if NORVI_WITH_NANOVDB

TEST(NanoVdbKernel, ReadsWhatTheLibraryReads) {
    const ScratchFolder folder;
    const auto handle = nanovdb::createFogVolumeSphere<float>(9.0f, nanovdb::Vec3f(1.5f, 0, -2), 0.5, 3.0,
                                                              nanovdb::Vec3d(0.25));
    const nanovdb::FloatGrid* grid = handle.grid<float>();
    ASSERT_TRUE(grid);
    BaseArray<Float32> positions, expected;
    for (int i = 0; i < 4096; ++i) {
        const nanovdb::Vec3f place(static_cast<float>(i % 16) * 1.37f - 9.0f,
                                   static_cast<float>(i / 16 % 16) * 1.37f - 10.0f,
                                   static_cast<float>(i / 256) * 1.37f - 12.0f);
        for (int axis = 0; axis < 3; ++axis)
            positions.push_back(place[axis]);
        const nanovdb::Vec3f index = grid->worldToIndexF(place);
        expected.push_back(grid->tree().getValue(nanovdb::Coord(nanovdb::Floor(index[0] + 0.5f),
                                                                nanovdb::Floor(index[1] + 0.5f),
                                                                nanovdb::Floor(index[2] + 0.5f))));
    }
    const ScalarType& floats = *FindElementType(DataType::Of<Float32>())->scalar;
    const ScalarType& words = *FindElementType(DataType::Of<UInt32>())->scalar;
    ASSERT_EQ(MessageOf(WriteNpy(folder.File("grid.npy"), words, {static_cast<Int>(handle.size() / 4)},
                                 handle.data())),
              "");
    ASSERT_EQ(MessageOf(WriteNpy(folder.File("positions.npy"), floats, {4096, 3}, positions.data())), "");
    RunOptions options;
    options.kernel = "sample_grid";
    options.grid = "4096";
    options.buffers = {"grid=" + folder.File("grid.npy"), "positions=" + folder.File("positions.npy"),
                       "values=float32:4096"};
    options.uniforms = {"count=4096"};
    options.outputs = {"values=" + folder.File("values.npy")};
    ASSERT_EQ(MessageOf(RunKernel(options, LoadedContext())), "");
    const auto values = ReadNpy(folder.File("values.npy"));
    ASSERT_TRUE(values) << MessageOf(values);
    int inside = 0;
    for (Int i = 0; i < 4096; ++i) {
        const Number value = values->scalar->load(values->bytes.data() + i * Int{sizeof(Float32)});
        EXPECT_EQ(value, Number{expected[static_cast<size_t>(i)]}) << i;
        inside += value > 0;
    }
    EXPECT_GT(inside, 300);
    EXPECT_LT(inside, 3800);
}

TEST(NanoVdbKernel, HoldsTheWholeHeaderAndCompilesAsGlsl) {
    TranslateOptions options;
    options.translation.kernel = "sample_grid";
    const auto program = TranslateText(options);
    ASSERT_TRUE(program) << MessageOf(program);
    EXPECT_NE(program->find("#define PNANOVDB_GLSL\n"), String::npos);
    EXPECT_NE(program->find("pnanovdb_readaccessor_get_value_address(pnanovdb_grid_type_t"), String::npos);
    options.check = true;
    const auto check = TranslateText(options);
    if (!check && check.GetError().Is(errorkind::NotFound))
        GTEST_SKIP() << MessageOf(check);
    EXPECT_EQ(MessageOf(check), "");
}

#else

TEST(NanoVdbKernel, IsLeftOutWithoutTheLibrary) {
    EXPECT_FALSE(FindKernelFile("sample_grid"));
    GTEST_SKIP() << "there is no nanovdb/util/Primitives.h";
}

#endif

} // namespace norvi
