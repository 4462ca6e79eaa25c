// Kernel text as a complete program, with what stands in for the parts that a host program supplies.
#pragma once

#include "drawport/text/language_table.h"
#include "norvi/argument_text.h"
#include "shaderparser/shaderparser.h"

namespace norvi {

struct TranslationOptions {
    String kernel;            ///< a file, or the name of an installed kernel
    String language = "glsl"; ///< "glsl", "hlsl" or "metal"
    String templateArgument;
    BaseArray<String> formulas; ///< NAME=TEXT
    Int32 multisampling = -1;   ///< number of samples; negative: not given
};

/// The words that a language can be called by on the command line.
BaseArray<String> LanguageNames();
/// Its id: "METAL".
Id LanguageId(const String& name);

/// The language's table, or an error that names it if programs cannot be written in it.
Result<const ShaderLanguage*> RequireLanguage(const String& name);

/// Reads the kernel into `parser`, which has the language's id. The message of a failure is meant to be read
/// by the kernel's author: it has place and line.
Result<void> ParseKernel(ShaderParser& parser, const TranslationOptions& options);

/// The program of a parsed kernel. Noise and colour conversions are functions that a host program makes when
/// it runs; here noise is zero, and colours stay as they are.
Result<MappedText> TranslateParsed(const ShaderParser& parser, const ShaderLanguage& language);

} // namespace norvi
