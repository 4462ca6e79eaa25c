#include "signature.h"

#include <charconv>

#include <norvi/host/text.h>

#include "signature_lexer.h"

namespace norvi {

namespace {

struct DirectionWord {
    std::string_view word;
    Int32 direction;
};

constexpr DirectionWord directionWords[] = {{"in", FunctionParameterEntry::In},
                                            {"out", FunctionParameterEntry::Out},
                                            {"inout", FunctionParameterEntry::InOut}};

class SignatureReader {
  public:
    SignatureReader(std::string_view signature, CString& name, CString& returnType,
                    BaseArray<FunctionParameterEntry>& parameters)
        : lexer_(signature), name_(name), returnType_(returnType), parameters_(parameters) {}

    Result<void> Read() {
        NORVI_TRY_VALUE(returnType, lexer_.Expect(Symbol::Identifier));
        returnType_ = returnType.text;
        NORVI_TRY_VALUE(name, lexer_.Expect(Symbol::Identifier));
        name_ = name.text;
        NORVI_TRY(lexer_.Expect('('));
        symbol_ = lexer_.Next();
        if (symbol_.Is(')'))
            return OK;
        while (true) {
            NORVI_TRY(CheckIdentifier());
            FunctionParameterEntry parameter;
            const bool isBuffer = symbol_.text == "StructuredBuffer" || symbol_.text == "RWStructuredBuffer";
            NORVI_TRY(isBuffer ? ReadBuffer(parameter) : ReadPlain(parameter));
            parameters_.push_back(std::move(parameter));
            if (symbol_.Is(')'))
                return OK;
            NORVI_TRY(PassComma(isBuffer));
        }
    }

  private:
    Result<void> CheckIdentifier() const {
        if (!symbol_.Is(Symbol::Identifier))
            return IllegalStateError(Format("Expected identifier, got @.", symbol_.number));
        return OK;
    }

    /// Whatever stands behind a buffer is taken for the comma.
    Result<void> PassComma(bool isBehindBuffer) {
        if (!isBehindBuffer && !symbol_.Is(','))
            return IllegalStateError(Format("Expected comma, got @. Function: @", symbol_.number, name_));
        symbol_ = lexer_.Next();
        return OK;
    }

    /// "StructuredBuffer<T> name"; the brackets are not looked at.
    Result<void> ReadBuffer(FunctionParameterEntry& parameter) {
        const std::string_view kind = symbol_.text;
        lexer_.Next();
        const std::string_view element = lexer_.Next().text;
        lexer_.Next();
        parameter.type = Format("@<@>", kind, element);
        NORVI_TRY_VALUE(name, lexer_.Expect(Symbol::Identifier));
        parameter.name = name.text;
        symbol_ = lexer_.Next();
        return OK;
    }

    Result<void> ReadPlain(FunctionParameterEntry& parameter) {
        // These words are not passed over, and so are taken for the type.
        if (symbol_.text == "__CONSTANT")
            parameter.addressSpace = FunctionParameterEntry::Constant;
        const bool isConst = symbol_.text == "const";
        if (isConst)
            NORVI_TRY(NextIdentifier());
        for (const DirectionWord& row : directionWords)
            if (symbol_.text == row.word) {
                parameter.direction = row.direction;
                NORVI_TRY(NextIdentifier());
                break;
            }
        parameter.type = symbol_.text;
        symbol_ = lexer_.Next();
        if (symbol_.text == "*") {
            parameter.type = Format(isConst ? "const device @*" : "device @*", parameter.type);
            NORVI_TRY(NextIdentifier());
        }
        NORVI_TRY(CheckIdentifier());
        parameter.name = symbol_.text;
        symbol_ = lexer_.Next();
        return symbol_.Is('[') ? ReadArraySize(parameter) : OK;
    }

    Result<void> NextIdentifier() {
        NORVI_TRY_VALUE(symbol, lexer_.Expect(Symbol::Identifier));
        symbol_ = symbol;
        return OK;
    }

    Result<void> ReadArraySize(FunctionParameterEntry& parameter) {
        symbol_ = lexer_.Next();
        if (symbol_.Is(']')) {
            parameter.arraySize = FunctionParameterEntry::UnsizedArray;
        } else if (symbol_.Is(Symbol::Integer)) {
            const char* const end = symbol_.text.data() + symbol_.text.size();
            if (std::from_chars(symbol_.text.data(), end, parameter.arraySize).ec != std::errc())
                return IllegalStateError(
                    Format("the array size @ is too large. Function: @", symbol_.text, name_));
            symbol_ = lexer_.Next();
            if (!symbol_.Is(']'))
                return IllegalStateError(Format("Expected ], got @. Function: @", symbol_.number, name_));
        }
        symbol_ = lexer_.Next();
        return OK;
    }

    SignatureLexer lexer_;
    CString& name_;
    CString& returnType_;
    BaseArray<FunctionParameterEntry>& parameters_;
    Symbol symbol_; ///< the present one
};

} // namespace

Result<void> ParseSignature(std::string_view signature, CString& name, CString& returnType,
                            BaseArray<FunctionParameterEntry>& parameters) noexcept {
    return CatchOutOfMemory(
        [&]() { return SignatureReader(signature, name, returnType, parameters).Read(); });
}

} // namespace norvi
