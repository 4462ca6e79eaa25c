// Reflection records: what an interface offers, readable at run time.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

struct ParameterRecord {
    const char* name;
    const char* type;
};

struct OperationRecord {
    const char* name;
    const char* result;
    BaseArray<ParameterRecord> parameters;
};

/// An interface: its operations stand in the order of its table.
struct InterfaceRecord {
    const char* id;
    /// Name of the counted reference type, such as "norvi::ParallelProgramRef".
    const char* referenceType;
    BaseArray<OperationRecord> operations;
};

} // namespace norvi
