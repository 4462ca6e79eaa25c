// What the module "norvi" is and exports.
#include <norvi/host/module.h>

#include <norvi/yield.h>

#include "core/parallelprogram_cpu_impl.h"

constinit norvi::ModuleRecord g_norvi("net.norvi.drawportmisc", "");
constinit norvi::CpuYieldDelegate g_CpuYieldDelegate;

namespace norvi {

namespace {

ClassDeclaration g_cpuProgram(g_norvi, programid::CpuProgram, &MakeObject<ParallelProgramCPUImpl>);

} // namespace

} // namespace norvi
