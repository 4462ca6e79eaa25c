#include "tokenizer.h"

#include <charconv>

#include <fmt/format.h>

#include "formula_error.h"
#include "functions.h"

namespace norvi {

namespace {

// A symbol that begins with another one stands before it.
constexpr std::string_view g_symbols[] = {"<=", ">=", "==", "!=", "&&", "||", "+", "-", "*", "/",
                                          "%",  "^",  "<",  ">",  "!",  "?",  ":", ";", "(", ")"};

// Characters that are no symbol here, but that users of other languages are likely to type.
constexpr struct {
    char character;
    std::string_view advice;
} g_advice[] = {
    {',', "; arguments are separated by \";\", and \".\" is the decimal point"},
    {'=', "; \"==\" compares, and there is no assignment"},
    {'&', "; \"&&\" is the logical and"},
    {'|', "; \"||\" is the logical or"},
    {'[', "; only \"(\" and \")\" group"},
    {'{', "; only \"(\" and \")\" group"},
};

constexpr std::string_view Blanks = " \t\r\n";

// Of the UTF-8 character that begins `text`; of stray bytes, one at a time.
size_t CharacterLength(std::string_view text) {
    size_t length = 1;
    if (static_cast<UChar>(text[0]) >= 0xC0)
        while (length < 4 && length < text.size() && (static_cast<UChar>(text[length]) & 0xC0) == 0x80)
            ++length;
    return length;
}

size_t NameLength(std::string_view text) {
    size_t length = 0;
    while (length < text.size() && (IsNameStart(text[length]) || IsDigit(text[length])))
        ++length;
    return length;
}

Failure UnexpectedCharacter(std::string_view formula, size_t position) {
    const std::string_view rest = formula.substr(position);
    std::string_view advice;
    for (const auto& row : g_advice)
        if (row.character == rest[0])
            advice = row.advice;
    const String character = Quote(rest.substr(0, CharacterLength(rest)));
    return FormulaError(formula, position, fmt::format("unexpected character {}{}", character, advice));
}

} // namespace

Token Tokenizer::Take(Token::Kind kind, size_t length) {
    const Token token{kind, formula_.substr(position_, length), 0, position_};
    position_ += length;
    return token;
}

Result<Token> Tokenizer::ReadNumber() {
    const char* begin = formula_.data() + position_;
    Float number = 0;
    const auto [end, error] = std::from_chars(begin, formula_.data() + formula_.size(), number);
    const size_t start = position_;
    Token token = Take(Token::Kind::Number, static_cast<size_t>(end - begin));
    if (error != std::errc())
        return FormulaError(
            formula_, start,
            fmt::format("number {} is out of the range of single precision", Quote(token.text)));
    token.number = number;
    return token;
}

Result<Token> Tokenizer::Next() {
    position_ = std::min(formula_.find_first_not_of(Blanks, position_), formula_.size());
    const std::string_view rest = formula_.substr(position_);
    if (rest.empty())
        return Take(Token::Kind::End, 0);
    if (IsDigit(rest[0]) || (rest[0] == '.' && rest.size() > 1 && IsDigit(rest[1])))
        return ReadNumber();
    if (IsNameStart(rest[0]))
        return Take(Token::Kind::Name, NameLength(rest));
    for (const std::string_view symbol : g_symbols)
        if (rest.starts_with(symbol))
            return Take(Token::Kind::Symbol, symbol.size());
    return UnexpectedCharacter(formula_, position_);
}

} // namespace norvi
