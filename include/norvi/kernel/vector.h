// The types and functions of the kernel language, as kernels see them. docs/kernel_language.md describes
// them.
#pragma once

#include "norvi/kernel/vector_functions.h"
#include "norvi/kernel/vector_half.h"
#include "norvi/kernel/vector_matrix.h"
#include "norvi/kernel/vector_names.h"
#include "norvi/kernel/vector_scalar_functions.h"
#include "norvi/kernel/vector_storage.h"
#include "norvi/kernel/vector_types.h"
