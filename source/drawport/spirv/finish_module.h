// What compilers leave to do on a compiled program so that it computes and stores as the processor does.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// Changes the words of a SPIR-V module:
///
/// - Arrays, structs and matrices that lie in buffers and uniforms get scalar layout: a value is aligned as
///   its components are, so that an array of three floats each has a stride of 12. (Vulkan specification,
///   "Offset and Stride Assignment"; the device needs the feature scalarBlockLayout.) Modules made of GLSL
///   have it already; those made of HLSL have elements of 16 bytes there.
/// - No operation on floats may be contracted with another one: each rounds by itself.
///
/// Fails for words that are no module, and leaves them as they are.
Result<void> FinishModule(BaseArray<UInt32>& words) noexcept;

} // namespace norvi
