// Splits the header of a function into symbols.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// A symbol has a number; that of a single character is its code.
struct Symbol {
    static constexpr Int32 End = 0, Identifier = 256, Integer = 257;

    Int32 number = End;
    std::string_view text;

    bool Is(Int32 other) const { return number == other; }
};

class SignatureLexer {
  public:
    /// @param text must outlive the lexer and its symbols.
    explicit SignatureLexer(std::string_view text) : rest_(text) {}

    /// The next symbol, again and again `End` behind the last one. A "\" before a line break joins two lines.
    Symbol Next();
    /// The next symbol, which must be an identifier, or any other symbol that is asked for.
    Result<Symbol> Expect(Int32 number);

  private:
    void SkipSpace();

    std::string_view rest_;
};

} // namespace norvi
