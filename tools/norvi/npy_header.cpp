#include "norvi/npy_header.h"

#include <cctype>

#include <norvi/host/text.h>

#include "norvi/argument_text.h"

namespace norvi {

namespace {

constexpr std::size_t MostDimensions = 32; // numpy's own limit

/// Reads the dictionary from left to right. Its values are flat, so nothing here calls itself.
class HeaderReader {
  public:
    explicit HeaderReader(std::string_view text) : rest_(text) {}

    Result<NpyHeader> Read() {
        NORVI_TRY(Expect('{'));
        while (!Take('}')) {
            NORVI_TRY_VALUE(key, ReadString());
            NORVI_TRY(Expect(':'));
            NORVI_TRY(ReadValue(key));
            if (!Take(',')) {
                NORVI_TRY(Expect('}'));
                break;
            }
        }
        SkipBlanks();
        if (!rest_.empty())
            return IllegalArgumentError("there is text behind the header's dictionary");
        if (!hasCode_ || !hasOrder_ || !hasShape_)
            return IllegalArgumentError("the header lacks one of 'descr', 'fortran_order' and 'shape'");
        return header_;
    }

  private:
    void SkipBlanks() {
        while (!rest_.empty() && std::isspace(static_cast<UChar>(rest_.front())))
            rest_.remove_prefix(1);
    }

    Bool Take(char c) {
        SkipBlanks();
        if (!rest_.starts_with(c))
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    Result<void> Expect(char c) {
        if (Take(c))
            return OK;
        return IllegalArgumentError(Format("the header is no dictionary: '@' is missing", String(1, c)));
    }

    Result<String> ReadString() {
        SkipBlanks();
        const char quote = rest_.empty() ? '\0' : rest_.front();
        const auto end = rest_.find(quote, 1);
        if ((quote != '\'' && quote != '"') || end == rest_.npos)
            return IllegalArgumentError("the header is no dictionary: a text in quotes is missing");
        String text(rest_.substr(1, end - 1));
        rest_.remove_prefix(end + 1);
        return text;
    }

    Result<void> ReadValue(const String& key) {
        if (key == "descr") {
            // The elements of structured arrays are described by a list.
            SkipBlanks();
            if (rest_.starts_with('['))
                return IllegalArgumentError("structured elements are not supported");
            NORVI_TRY_VALUE(code, ReadString());
            header_.elementCode = code;
            return NoteKey(hasCode_, key);
        }
        if (key == "fortran_order") {
            NORVI_TRY(ReadBool());
            return NoteKey(hasOrder_, key);
        }
        if (key == "shape") {
            NORVI_TRY(ReadShape());
            return NoteKey(hasShape_, key);
        }
        return IllegalArgumentError(Format("the header has an unknown key '@'", key));
    }

    Result<void> NoteKey(Bool& isKnown, const String& key) {
        if (isKnown)
            return IllegalArgumentError(Format("the header has the key '@' twice", key));
        isKnown = true;
        return OK;
    }

    Result<void> ReadBool() {
        SkipBlanks();
        for (const std::string_view word : {"True", "False"})
            if (rest_.starts_with(word)) {
                rest_.remove_prefix(word.size());
                header_.isFortranOrder = word == "True";
                return OK;
            }
        return IllegalArgumentError("the header's 'fortran_order' is neither True nor False");
    }

    Result<void> ReadShape() {
        NORVI_TRY(Expect('('));
        while (!Take(')')) {
            SkipBlanks();
            std::size_t length = 0;
            while (length < rest_.size() && std::isdigit(static_cast<UChar>(rest_[length])))
                ++length;
            const auto size = ParseInt(rest_.substr(0, length));
            if (!size || header_.shape.size() == MostDimensions)
                return IllegalArgumentError("the header's 'shape' is no tuple of up to 32 sizes");
            rest_.remove_prefix(length);
            header_.shape.push_back(*size);
            if (!Take(',')) {
                NORVI_TRY(Expect(')'));
                break;
            }
        }
        return OK;
    }

    std::string_view rest_;
    NpyHeader header_;
    Bool hasCode_ = false;
    Bool hasOrder_ = false;
    Bool hasShape_ = false;
};

} // namespace

Result<NpyHeader> ParseNpyHeader(std::string_view text) {
    return HeaderReader(text).Read();
}

String NpyHeaderText(const NpyHeader& header) {
    String sizes;
    for (Int size : header.shape)
        sizes += ToText(size) + ", ";
    // Only a tuple of one keeps its last comma.
    if (header.shape.size() > 1)
        sizes.resize(sizes.size() - 2);
    else if (!sizes.empty())
        sizes.pop_back();
    return Format("{'descr': '@', 'fortran_order': @, 'shape': (@), }", header.elementCode,
                  header.isFortranOrder ? "True" : "False", sizes);
}

} // namespace norvi
