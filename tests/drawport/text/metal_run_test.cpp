// Metal programs, compiled as C++ and run on the processor beside the kernel classes.
#include <cmath>
#include <cstring>
#include <map>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <norvi/host/module.h>
#include <norvi/host/registry.h>
#include <norvi/host/text.h>
#include <norvi/kernelinterface.h>

#include "drawport/programs.h"
#include "support/results.h"

namespace norvi {
namespace {

constexpr size_t bufferSize = 1 << 16;
using Bytes = BaseArray<UChar>;
using Entry = void (*)(void** arguments, UInt32 groupsX, UInt32 groupsY, UInt32 groupsZ);

struct RunCase {
    KernelCase kernel;
    ProgramDescription description;
    String className;
};

/// What the parameters of both sides point to: the uniforms in one piece, and the memory of each name.
struct Memory {
    Bytes uniforms;
    std::map<String, size_t> offsets; ///< of uniforms
    std::map<String, Bytes> cells;    ///< buffers and counters
};

/// Floats in [-1, 1) that differ from each other.
Bytes MakeCells(size_t size, UInt32 seed) {
    Bytes bytes(size);
    for (size_t i = 0; i < size / 4; ++i) {
        const UInt32 mixed = (static_cast<UInt32>(i) + seed * 7919u) * 2654435761u;
        const float value = static_cast<float>(mixed >> 8) / 8388608.0f - 1.0f;
        std::memcpy(bytes.data() + i * 4, &value, 4);
    }
    return bytes;
}

template <typename T>
void AppendValue(Bytes& bytes, T value) {
    bytes.resize(bytes.size() + sizeof(T));
    std::memcpy(bytes.data() + bytes.size() - sizeof(T), &value, sizeof(T));
}

/// A value that the kernels can do something with.
void AppendUniform(Bytes& bytes, const ShaderVariable& uniform) {
    static const std::map<String, Int32> sizes = {{"width", 12},   {"height", 10},       {"depth", 6},
                                                  {"count", 100},  {"rows", 10},         {"stretch", 9},
                                                  {"binCount", 7}, {"maxIterations", 50}};
    static const std::map<String, size_t> floats = {{"float", 1}, {"vec2", 2}, {"vec3", 3},
                                                    {"vec4", 4},  {"mat3", 9}, {"mat4", 16}};
    if (uniform.type == "half")
        return AppendValue(bytes, HalfFloat(0.3f));
    if (const auto length = floats.find(uniform.type); length != floats.end()) {
        for (size_t i = 0; i < length->second; ++i)
            AppendValue(bytes, uniform.name == "lowest" ? -0.5f : 0.3f + 0.2f * static_cast<float>(i));
        return;
    }
    for (size_t i = 0; i < (uniform.type.ends_with('4') ? 4 : 1); ++i)
        AppendValue(bytes,
                    sizes.contains(uniform.name) ? sizes.at(uniform.name) : Int32{3} + static_cast<Int32>(i));
}

Memory MakeMemory(const ProgramDescription& program) {
    Memory memory;
    for (const ShaderVariable& uniform : program.uniforms) {
        const size_t alignment = uniform.type == "half" ? 2 : 4;
        memory.uniforms.resize((memory.uniforms.size() + alignment - 1) / alignment * alignment);
        memory.offsets[uniform.name] = memory.uniforms.size();
        AppendUniform(memory.uniforms, uniform);
    }
    UInt32 seed = 0;
    for (const ShaderBuffer& buffer : program.buffers)
        memory.cells[buffer.name] = MakeCells(bufferSize, ++seed);
    for (const CString& counter : program.counters)
        memory.cells[counter] = Bytes(4);
    return memory;
}

Vec3<UInt32> GroupsOf(Vec3<UInt32> size) {
    return {2, size.y > 1 ? 2u : 1u, size.z > 1 ? 2u : 1u};
}

void RunClass(const RunCase& test, Memory& memory) {
    auto kernel =
        Kernel::KernelRef::Create(Registry::Get(registryid::KernelClasses).FindEntryValue(test.className));
    ASSERT_OK(kernel) << test.className;
    ASSERT_OK((*kernel)->Init()) << test.className;
    for (const auto& [name, offset] : memory.offsets)
        ASSERT_OK((*kernel)->Set(name, memory.uniforms.data() + offset));
    for (auto& [name, cells] : memory.cells) {
        // The type of elements does not change how a block is kept.
        const Block<UChar> block(cells.data(), static_cast<Int>(cells.size() / 2));
        const bool isBuffer = cells.size() == bufferSize;
        ASSERT_OK((*kernel)->Set(name, isBuffer ? static_cast<const void*>(&block) : cells.data()));
    }
    const Vec3<UInt32> size = (*kernel)->GetKernelWorkGroupSize(), groups = GroupsOf(size);
    EXPECT_EQ(size, test.description.groupSize);
    for (UInt32 z = 0; z < groups.z * size.z; ++z)
        for (UInt32 y = 0; y < groups.y * size.y; ++y)
            for (UInt32 x = 0; x < groups.x * size.x; ++x)
                ASSERT_OK((*kernel)->Kernel({x, y, z}, {x % size.x, y % size.y, z % size.z},
                                            {x / size.x, y / size.y, z / size.z}));
}

void RunProgram(const RunCase& test, Entry entry, Memory& memory) {
    BaseArray<void*> arguments;
    if (!memory.uniforms.empty())
        arguments.push_back(memory.uniforms.data());
    for (const ShaderBuffer& buffer : test.description.buffers)
        arguments.push_back(memory.cells[buffer.name].data());
    for (const CString& counter : test.description.counters)
        arguments.push_back(memory.cells[counter].data());
    const Vec3<UInt32> groups = GroupsOf(test.description.groupSize);
    entry(arguments.data(), groups.x, groups.y, groups.z);
}

float FloatAt(const Bytes& bytes, size_t offset) {
    float value;
    std::memcpy(&value, bytes.data() + offset / 4 * 4, 4);
    return value;
}

/// For inverse matrices and determinants, whose last bits may differ.
bool AreNear(const Bytes& a, const Bytes& b) {
    for (size_t i = 0; i < a.size(); i += 4)
        if (!(std::fabs(FloatAt(a, i) - FloatAt(b, i)) <= 1e-4f * (1 + std::fabs(FloatAt(a, i)))))
            return false;
    return true;
}

/// One file with all programs, each in a namespace, and a function "run_NAME" for each.
String JoinPrograms(const BaseArray<RunCase>& tests) {
    const ShaderLanguage& language = *FindShaderLanguage(Id("METAL"));
    const String prologue = PrologueOf(language);
    String text = ForShim(prologue);
    for (const RunCase& test : tests) {
        auto program = WriteProgram(test.description, language);
        EXPECT_OK(program);
        const Vec3<UInt32> size = test.description.groupSize;
        text += Format("namespace program_@ {\n@}\n", test.kernel.Name(),
                       ForShim(program->text.substr(prologue.size())));
        text += Format("extern \"C\" void run_@(void** arguments, uint x, uint y, uint z)\n{\n"
                       "RunGrid(&program_@::norviMain, arguments, uint3{x, y, z}, uint3{@, @, @}, @);\n}\n",
                       test.kernel.Name(), test.kernel.Name(), size.x, size.y, size.z,
                       test.description.groupShared.empty() ? "false" : "true");
    }
    return text;
}

/// Kernels without textures and noise: those are compiled only.
BaseArray<RunCase> CasesToRun() {
    BaseArray<RunCase> tests;
    for (const KernelCase& kernel : AllKernels()) {
        ShaderParser parser{Id("METAL")};
        EXPECT_OK(ParseKernel(parser, kernel, ""));
        auto description = DescribeProgram(parser);
        EXPECT_OK(description);
        if (description->textures.empty() && !description->hasNoise)
            tests.push_back({kernel, *description,
                             kernel.file.stem().string() +
                                 (kernel.type.empty() ? "" : "_" + kernel.type + "_T_") + ".kernel"});
    }
    return tests;
}

TEST(MetalRun, ComputesWhatTheKernelClassesCompute) {
    ModuleLoader loader;
    g_norvi.SetInitializer(&ResolveDeclared);
    for (const char* module : {NORVI_KERNEL_MODULE, NORVI_FEATURE_KERNELS})
        ASSERT_OK(loader.Load(module));
    const TemporaryFolder folder;
    const std::filesystem::path source = folder / "programs.cpp", library = folder / "programs.so";
    const BaseArray<RunCase> tests = CasesToRun();
    EXPECT_GE(tests.size(), 30u);
    WriteText(source, JoinPrograms(tests));
    ASSERT_EQ(CompileWithShim(source, "-O1 -shared -fPIC -o " + library.string()), "");
    void* programs = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(programs, nullptr) << dlerror();
    for (const RunCase& test : tests) {
        SCOPED_TRACE(test.kernel.Name());
        const auto entry = reinterpret_cast<Entry>(dlsym(programs, ("run_" + test.kernel.Name()).c_str()));
        ASSERT_NE(entry, nullptr);
        const Memory before = MakeMemory(test.description);
        Memory ofClass = before, ofProgram = before;
        RunClass(test, ofClass);
        RunProgram(test, entry, ofProgram);
        EXPECT_TRUE(ofClass.cells != before.cells) << "nothing was computed";
        for (const auto& [name, cells] : ofClass.cells) {
            const Bytes& other = ofProgram.cells[name];
            const auto first = static_cast<size_t>(
                std::mismatch(cells.begin(), cells.end(), other.begin()).first - cells.begin());
            if (first < cells.size() && !(test.kernel.Name() == "matrices" && AreNear(cells, other)))
                ADD_FAILURE() << name << " differs from byte " << first << " on: " << FloatAt(other, first)
                              << " instead of " << FloatAt(cells, first);
        }
    }
    dlclose(programs);
}

TEST(MetalRun, EveryKernelCompiles) {
    const TemporaryFolder folder;
    const std::filesystem::path source = folder / "programs.cpp";
    const String prologue = PrologueOf(*FindShaderLanguage(Id("METAL")));
    String text = ForShim(prologue);
    for (const KernelCase& kernel : AllKernels()) {
        auto program = WriteKernel(kernel, "METAL");
        ASSERT_OK(program);
        text += Format("namespace program_@ {\n@}\n", kernel.Name(),
                       ForShim(program->text.substr(prologue.size())));
    }
    WriteText(source, text);
    EXPECT_EQ(CompileWithShim(source, "-fsyntax-only"), "");
}

} // namespace
} // namespace norvi
