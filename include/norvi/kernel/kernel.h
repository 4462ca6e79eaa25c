// The kernel language on the processor: what norvi_add_kernels() puts in front of every kernel file. Not for
// other code: it brings the words of the language into the global namespace.
#pragma once

#include <norvi/kernel/macros.h>

/// The record of the kernel module that is being compiled.
extern "C" norvi::ModuleRecord g_norvi;

using namespace norvi::kernel;
using norvi::Result;
