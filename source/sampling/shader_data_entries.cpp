// The data types of the shader side's records.
#include <norvi/texture_shader_entries.h>

#include "sampling/datatype_declaration.h"

namespace norvi {

namespace {

ClassDeclaration g_entryTypes[] = {
    DeclareDataType<DataBufferEntry>("net.norvi.datatype.shaderdataentries.databufferentry"),
    DeclareDataType<TextureSamplerEntry>("net.norvi.datatype.shaderdataentries.texturesamplerentry"),
};

} // namespace

} // namespace norvi
