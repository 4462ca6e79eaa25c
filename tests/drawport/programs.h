// Programs of kernels in every language, and the compilers that prove them.
#pragma once

#include <filesystem>

#include "drawport/text/program_text.h"
#include "shaderparser/shaderparser.h"

namespace norvi {

inline constexpr const char* shaderLanguages[] = {"GLSL", "HLSL", "METAL"};

String ReadText(const std::filesystem::path& path);
void WriteText(const std::filesystem::path& path, std::string_view text);

/// What follows a parse: the program, with a noise function where the kernel asks for noise.
Result<MappedText> WriteParsed(const ShaderParser& parser);

/// A kernel file and the template argument that it is read with.
struct KernelCase {
    std::filesystem::path file;
    String type;

    /// "saxpy", "fill_half"
    String Name() const;
};

/// The kernels that ship, templates once for each of several types.
BaseArray<KernelCase> ShippedKernels();

/// The kernels with one feature each, in golden/inputs.
BaseArray<KernelCase> FeatureKernels();

/// Both.
BaseArray<KernelCase> AllKernels();

/// The parts of a kernel, with a text for the formulas of shipped kernels if it is not empty.
Result<void> ParseKernel(ShaderParser& parser, const KernelCase& kernel, const String& formula);

/// The program of a kernel with formulas.
Result<MappedText> WriteKernel(const KernelCase& kernel, const char* language);

/// Runs a command and returns what it wrote; empty if it went well.
String Run(const String& command);

/// Compiles GLSL or HLSL to `module`. Returns what the compiler says; empty if it is content.
String CompileToModule(const String& text, const char* language, const std::filesystem::path& module);

BaseArray<UInt32> ReadWords(const std::filesystem::path& module);
void WriteWords(const std::filesystem::path& module, const BaseArray<UInt32>& words);

/// The text of a Metal program as the shim of the tests takes it; see metal_shim/metal_stdlib.
String ForShim(const String& program);

/// Compiles C++ with the shim. Returns what the compiler says; empty if it is content.
String CompileWithShim(const std::filesystem::path& source, const String& options);

/// A folder of its own for each process, which goes with the object.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(const String& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

} // namespace norvi
