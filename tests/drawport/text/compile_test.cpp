// Every kernel through the compilers.
#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include <norvi/host/text.h>

#include "drawport/programs.h"
#include "drawport/spirv/finish_module.h"
#include "support/results.h"

namespace norvi {
namespace {

TEST(Compilers, AreThere) {
    EXPECT_STRNE(NORVI_GLSLANG_VALIDATOR, "") << "install the package glslang-tools";
    EXPECT_STRNE(NORVI_SPIRV_VAL, "") << "install the package spirv-tools";
    EXPECT_STRNE(NORVI_CLANG, "") << "install the package clang";
}

/// Says of each buffer and block of uniforms where its values lie: "{0:[12]}" is an array of strides of 12.
class ModuleLayout {
  public:
    explicit ModuleLayout(const BaseArray<UInt32>& words) {
        for (size_t i = 5; i < words.size(); i += words[i] >> 16)
            Read(words.data() + i, words[i] & 0xFFFF, words[i] >> 16);
    }

    /// By binding. A single number is an array of one.
    std::map<UInt32, String> Describe() const {
        std::map<UInt32, String> layouts;
        for (const auto& [variable, binding] : bindings_) {
            const String layout = DescribeType(variables_.at(variable));
            if (!layout.empty())
                layouts[binding] = layout == "{0:}" ? "{0:[4]}" : layout;
        }
        return layouts;
    }

  private:
    enum {
        Pointer = 32,
        Struct = 30,
        Array = 28,
        RuntimeArray = 29,
        Variable = 59,
        Decorate = 71,
        MemberDecorate = 72
    };
    enum { ArrayStride = 6, MatrixStride = 7, Binding = 33, Offset = 35 };

    void Read(const UInt32* word, UInt32 operation, UInt32 length) {
        if (operation == Pointer)
            elements_[word[1]] = word[3];
        if (operation == Array || operation == RuntimeArray)
            elements_[word[1]] = word[2];
        if (operation == Struct)
            members_[word[1]].assign(word + 2, word + length);
        if (operation == Variable)
            variables_[word[2]] = elements_[word[1]];
        if (operation == Decorate && length == 4 && word[2] == Binding)
            bindings_[word[1]] = word[3];
        if (operation == Decorate && length == 4 && word[2] == ArrayStride)
            strides_[word[1]] = word[3];
        if (operation == MemberDecorate && length == 5 && word[3] == Offset)
            offsets_[{word[1], word[2]}] = word[4];
        if (operation == MemberDecorate && length == 5 && word[3] == MatrixStride)
            matrixStrides_[{word[1], word[2]}] = word[4];
    }

    String DescribeType(UInt32 type) const {
        if (const auto stride = strides_.find(type); stride != strides_.end())
            return Format("[@]@", stride->second, DescribeType(elements_.at(type)));
        const auto members = members_.find(type);
        if (members == members_.end())
            return {};
        String text = "{";
        for (UInt32 i = 0; i < members->second.size(); ++i) {
            const auto matrix = matrixStrides_.find({type, i});
            text +=
                Format("@@:@@", i > 0 ? " " : "", offsets_.at({type, i}), DescribeType(members->second[i]),
                       matrix == matrixStrides_.end() ? String() : Format("x@", matrix->second));
        }
        return text + "}";
    }

    std::map<UInt32, UInt32> elements_, variables_, bindings_, strides_;
    std::map<UInt32, BaseArray<UInt32>> members_;
    std::map<std::pair<UInt32, UInt32>, UInt32> offsets_, matrixStrides_;
};

/// Compiles, finishes and validates.
std::map<UInt32, String> ProveModule(const KernelCase& kernel, const char* language) {
    static const TemporaryFolder folder;
    const std::filesystem::path module = folder / "program.spv";
    SCOPED_TRACE(kernel.Name() + " in " + language);
    auto program = WriteKernel(kernel, language);
    EXPECT_OK(program);
    const String complaint = CompileToModule(program->text, language, module);
    EXPECT_EQ(complaint, "") << program->text;
    if (!complaint.empty())
        return {};
    BaseArray<UInt32> words = ReadWords(module);
    EXPECT_OK(FinishModule(words));
    WriteWords(module, words);
    EXPECT_EQ(
        Run(Format("@ --scalar-block-layout --target-env vulkan1.2 @", NORVI_SPIRV_VAL, module.string())),
        "");
    return ModuleLayout(words).Describe();
}

TEST(Compilers, TakeEveryKernelWithOneLayout) {
    const BaseArray<KernelCase> kernels = AllKernels();
    EXPECT_GE(kernels.size(), 38u);
    for (const KernelCase& kernel : kernels)
        EXPECT_EQ(ProveModule(kernel, "GLSL"), ProveModule(kernel, "HLSL")) << kernel.Name();
}

// As on the processor: a vec3 takes 12 bytes.
TEST(Compilers, LayoutIsThatOfTheProcessor) {
    const auto layoutOf = [](const char* name) {
        const auto kernels = FeatureKernels();
        return ProveModule(*std::find_if(kernels.begin(), kernels.end(),
                                         [&](const KernelCase& kernel) { return kernel.Name() == name; }),
                           "HLSL");
    };
    const std::map<UInt32, String> buffers = {{0, "{0:[4]}"}, {1, "{0:[12]}"}, {2, "{0:[4]}"}};
    EXPECT_EQ(layoutOf("buffers"), buffers);
    EXPECT_EQ(layoutOf("structs")[1], "{0:[40]{0: 12: 16: 24: 36:}}");
    EXPECT_EQ(layoutOf("uniforms")[0], "{0: 4: 8: 12: 20: 32: 48:x12 84:x16 148: 164:}");
    EXPECT_EQ(layoutOf("half_struct")[1], "{0:[8]}");
}

} // namespace
} // namespace norvi
