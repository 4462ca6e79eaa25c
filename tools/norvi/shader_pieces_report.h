// What the parser understood of a kernel.
#pragma once

#include "shaderparser/shaderparser.h"

namespace norvi {

/// As a table, and as a JSON object. Of pieces from encoded files only the place is told.
String PiecesText(const ShaderParser& parser);
String PiecesJsonText(const ShaderParser& parser);

} // namespace norvi
