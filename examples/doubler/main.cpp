// The whole road of one kernel: create a program, bind a buffer and a value, run, read back.
#include <cstdio>

#include <norvi/host/module.h>
#include <norvi/parallelprogram.h>

using namespace norvi;

namespace {

Result<void> Run() {
    NORVI_TRY_VALUE(modules, ModuleLoader::LoadDefault());
    NORVI_TRY_VALUE(program, ParallelProgramRef::Create(programid::CpuProgram));
    NORVI_TRY(program->Init({}, {}, 0, false));
    NORVI_TRY(program->AddKernel("k", "doubler.kernel", false, {}));
    NORVI_TRY(program->CreateUniformBuffer("data", DataType::Of<UInt32>(), 100));
    NORVI_TRY(program->SetBufferToActiveKernelSameId("data"));
    NORVI_TRY(program->SetUniform("scale", UInt32{2}));
    NORVI_TRY(program->UpdateUniforms());
    NORVI_TRY(program->DispatchKernel(100, 1, 1, false));
    NORVI_TRY(program->Execute(true));
    NORVI_TRY_VALUE(data, program->GetGlobalBufferData("data"));
    NORVI_TRY_VALUE(array, data.GetAs<ArrayRef>());
    for (Int i = 0; i < array->GetCount(); ++i)
        std::printf("%u%c", *static_cast<UInt32*>(array->GetElement(i)), i % 10 == 9 ? '\n' : ' ');
    return OK;
}

} // namespace

int main() {
    const auto result = Run();
    if (!result)
        std::fprintf(stderr, "%s\n", result.GetError().ToString().c_str());
    return result ? 0 : 1;
}
