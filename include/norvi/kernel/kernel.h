// The kernel language on the processor: what norvi_add_kernels() puts in front of every kernel file. The file
// itself is compiled inside an unnamed namespace of norvi::kernel, where the language's words go before those
// of the C library, and where two kernels may use one name.
#pragma once

#include <norvi/kernel/macros.h>
#include <norvi/kernel/texture.h>
