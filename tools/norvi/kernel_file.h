// Finds the source files of kernels.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// The folder where the sources of installed kernels stand: share/norvi/shaders beside the tool's folder.
String KernelSourceFolder();

/// The path of a kernel file: `text` itself if there is a file of this name, else the installed kernel that
/// is called so, with or without its suffix. Else an error that suggests near names.
Result<String> FindKernelFile(const String& text);

} // namespace norvi
