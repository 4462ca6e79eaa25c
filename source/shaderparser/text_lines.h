// Words and lines of source text.
#pragma once

#include <array>

#include <norvi/host/types.h>

namespace norvi {

constexpr bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The first parts of a text. No rule looks at more of them, and a hostile line has millions.
class Words {
  public:
    static constexpr size_t Most = 6;

    /// False, without effect, if there are `Most` already.
    bool Append(std::string_view word) {
        if (count_ == Most)
            return false;
        words_[count_++] = word;
        return true;
    }
    /// `Most` also stands for any larger number.
    size_t size() const { return count_; }
    const std::string_view& operator[](size_t index) const { return words_[index]; }
    const std::string_view* begin() const { return words_.data(); }
    const std::string_view* end() const { return words_.data() + count_; }

  private:
    std::array<std::string_view, Most> words_;
    size_t count_ = 0;
};

/// Without blanks, tabs, carriage returns and other ASCII white space at both ends.
std::string_view Trim(std::string_view text);

/// The first parts between the separators: one more than there are separators, and empty where two of them
/// touch.
Words SplitAt(std::string_view text, std::string_view separator);

/// Splits at each single blank; two blanks give an empty word.
inline Words SplitWords(std::string_view line) {
    return SplitAt(line, " ");
}

/// What stands before the first blank.
inline std::string_view FirstWord(std::string_view line) {
    return line.substr(0, line.find(' '));
}

/// `text` without its first `front` and last `back` characters; empty where it has too few.
std::string_view Without(std::string_view text, size_t front, size_t back);

/// The characters of `text` from `begin` to before `end`; empty where there are none.
std::string_view Between(std::string_view text, size_t begin, size_t end);

/// The bytes of a file as UTF-8 text: without a byte order mark, and with U+FFFD in place of each byte that
/// is no part of a character.
class DecodedText {
  public:
    /// @param bytes must outlive the object.
    explicit DecodedText(std::string_view bytes);
    DecodedText(const DecodedText&) = delete;
    DecodedText& operator=(const DecodedText&) = delete;

    std::string_view Get() const { return text_; }

  private:
    String repaired_;
    std::string_view text_;
};

/// Goes through the lines of a text. The text counts as trimmed: empty lines at its ends are not there.
class LineReader {
  public:
    /// @param text must outlive the reader.
    explicit LineReader(std::string_view text);

    /// Takes the next line; false if there is none.
    bool Next() {
        if (next_ == nullptr)
            return false;
        begin_ = next_;
        const void* found = __builtin_memchr(begin_, '\n', static_cast<size_t>(end_ - begin_));
        lineEnd_ = found ? static_cast<const char*>(found) : end_;
        next_ = found ? lineEnd_ + 1 : nullptr;
        ++index_;
        return true;
    }
    /// Makes the next call of Next give the present line again.
    void StepBack() {
        next_ = begin_;
        --index_;
    }

    /// The present line, as it stands and trimmed.
    std::string_view GetRawLine() const { return {begin_, static_cast<size_t>(lineEnd_ - begin_)}; }
    std::string_view GetLine() const { return Trim(GetRawLine()); }
    /// Bytes behind the present line.
    size_t GetRestSize() const { return next_ ? static_cast<size_t>(end_ - next_) : 0; }
    /// Number of the present line, from 0 in the trimmed text and from 1 in the file.
    Int GetIndex() const { return index_; }
    UInt32 GetFileLine() const { return static_cast<UInt32>(leadingLines_ + index_ + 1); }

  private:
    const char* end_;
    const char* next_;
    const char* begin_ = nullptr;
    const char* lineEnd_ = nullptr;
    Int index_ = -1;
    Int leadingLines_ = 0;
};

} // namespace norvi
