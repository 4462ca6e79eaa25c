// The types that values on the command line and in files can have: scalars, and vectors and matrices of them.
#pragma once

#include <norvi/host/datatype.h>

#include "norvi/argument_text.h"

namespace norvi {

struct ScalarType {
    const char* fileCode; ///< as .npy headers call it: "<f4"
    Int size;
    Bool isInteger;
    Number lowest;
    Number highest;
    Number (*load)(const void* source);        ///< from any address, aligned or not
    void (*store)(void* target, Number value); ///< of a value that Holds
    Bool (*holds)(Number value);               ///< integers exactly, floating point after rounding
};

/// All of them have a file code of their own.
const BaseArray<ScalarType>& ScalarTypes();

struct ElementType {
    const char* name;       ///< "float32"
    const char* kernelName; ///< in the kernel language, where that differs: "float"
    DataType type;
    const ScalarType* scalar;
    Int components; ///< matrices: column by column
};

const BaseArray<ElementType>& ElementTypes();

/// By either name, or by the name that the framework has for the type. An unknown name is an error with a
/// suggestion.
Result<const ElementType*> FindElementType(const String& name);
/// Null for structs and whatever else is not in the table.
const ElementType* FindElementType(DataType type);
/// The name in the table, else the framework's.
String ElementTypeName(DataType type);

} // namespace norvi
