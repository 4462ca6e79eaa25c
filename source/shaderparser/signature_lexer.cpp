#include "signature_lexer.h"

#include <algorithm>

#include <norvi/host/text.h>

#include "text_lines.h"

namespace norvi {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsIdentifierStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsIdentifierPart(char c) {
    return IsIdentifierStart(c) || IsDigit(c);
}

/// Length of the part of `text` at its front whose characters all are of one kind.
size_t LengthOf(std::string_view text, bool (*isPart)(char)) {
    return static_cast<size_t>(std::find_if_not(text.begin(), text.end(), isPart) - text.begin());
}

} // namespace

void SignatureLexer::SkipSpace() {
    while (!rest_.empty() && (IsSpace(rest_.front()) || rest_.starts_with("\\\n")))
        rest_.remove_prefix(1);
}

Symbol SignatureLexer::Next() {
    SkipSpace();
    if (rest_.empty())
        return {};
    const char first = rest_.front();
    const Symbol symbol = IsIdentifierStart(first)
                              ? Symbol{Symbol::Identifier, rest_.substr(0, LengthOf(rest_, IsIdentifierPart))}
                          : IsDigit(first)
                              ? Symbol{Symbol::Integer, rest_.substr(0, LengthOf(rest_, IsDigit))}
                              : Symbol{static_cast<UChar>(first), rest_.substr(0, 1)};
    rest_.remove_prefix(symbol.text.size());
    return symbol;
}

Result<Symbol> SignatureLexer::Expect(Int32 number) {
    const Symbol symbol = Next();
    if (symbol.Is(number))
        return symbol;
    const String expected =
        number == Symbol::Identifier ? "identifier" : String(1, static_cast<char>(number));
    return IllegalStateError(Format("Expected @, got @.", expected, symbol.number));
}

} // namespace norvi
