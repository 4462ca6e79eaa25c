// The header of an inline function as a record.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

struct FunctionParameterEntry {
    static constexpr Int32 In = 0, Out = 1, InOut = 2;     ///< directions
    static constexpr Int32 Thread = 0, Constant = 1;       ///< address spaces
    static constexpr Int32 NoArray = 0, UnsizedArray = -1; ///< array sizes that are none

    CString type; ///< in the form of the target language where the macros have rewritten it
    CString name;
    Int32 direction = In;
    Int32 addressSpace = Thread;
    Int32 arraySize = NoArray;
};

/// Takes "float Blend(inout float a, float w[4])" apart. What is no such header is an illegal-state error;
/// the numbers of symbols in its messages are those of signature_lexer.h. The outputs are those read so far
/// then.
Result<void> ParseSignature(std::string_view signature, CString& name, CString& returnType,
                            BaseArray<FunctionParameterEntry>& parameters) noexcept;

/// The function in the language with the hash `language` (of its Id): the header in one line, then the body.
Result<CString> BuildFunctionText(const CString& name, const CString& returnType,
                                  const BaseArray<FunctionParameterEntry>& parameters, std::string_view body,
                                  UInt64 language) noexcept;

} // namespace norvi
