// The record of the module "norvi".
#pragma once

#include <norvi/host/module.h>

/// What the module declares. One of its two exported symbols; the other is g_CpuYieldDelegate.
extern "C" [[gnu::visibility("default")]] norvi::ModuleRecord g_norvi;
