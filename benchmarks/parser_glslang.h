// The preprocessor of glslang, in this process.
#pragma once

#include <string>

namespace norvi::benchmark {

/// Whether the benchmark was built with it.
bool HasPreprocessor();

/// Preprocesses a compute shader. Ends the benchmark if the text is refused.
void Preprocess(const std::string& program);

} // namespace norvi::benchmark
