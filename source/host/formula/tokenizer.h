// Splits the text of a formula into tokens.
#pragma once

#include <norvi/host/formula.h>

namespace norvi {

struct Token {
    enum class Kind : UChar { Number, Name, Symbol, End };

    Kind kind = Kind::End;
    std::string_view text; ///< the token's part of the formula; empty at its end
    Float number = 0;      ///< value of a number
    size_t position = 0;   ///< byte offset of the text

    bool IsSymbol(std::string_view symbol) const { return kind == Kind::Symbol && text == symbol; }
};

class Tokenizer {
  public:
    /// @param formula must outlive the tokenizer and its tokens.
    explicit Tokenizer(std::string_view formula) : formula_(formula) {}

    /// The token that starts next, again and again `End` when there is none left. Fails for a character that
    /// no token starts with and for a number beyond the range of Float.
    Result<Token> Next();

  private:
    Result<Token> ReadNumber();
    Token Take(Token::Kind kind, size_t length);

    std::string_view formula_;
    size_t position_ = 0;
};

} // namespace norvi
