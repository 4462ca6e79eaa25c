#include "language_table.h"

namespace norvi {

const ShaderLanguage* FindShaderLanguage(const Id& language) {
    for (const ShaderLanguage* table : {&glslLanguage, &hlslLanguage, &metalLanguage})
        if (language == table->id)
            return table;
    return nullptr;
}

} // namespace norvi
