// Errors and results. No exception crosses an interface of this system: an operation that can fail returns
// Result<T>, which is either a value or an Error.
#pragma once

#include <memory>
#include <new>
#include <optional>
#include <utility>

#include <norvi/host/types.h>

namespace norvi {

/// Ids of the kinds of error.
namespace errorkind {
inline constexpr const char* IllegalState = "net.norvi.error.illegalstate";
inline constexpr const char* IllegalArgument = "net.norvi.error.illegalargument";
inline constexpr const char* OutOfMemory = "net.norvi.error.outofmemory";
inline constexpr const char* NullPtr = "net.norvi.error.nullptr";
inline constexpr const char* FunctionNotImplemented = "net.norvi.error.functionnotimplemented";
inline constexpr const char* System = "net.norvi.error.system";
inline constexpr const char* NotFound = "net.norvi.error.notfound";
} // namespace errorkind

/// Where a check failed. Taken by default arguments at the place of the call, so nobody writes it by hand.
/// (std::source_location would do, were it usable from clang 14 with this standard library.)
struct SourceLocation {
    const char* file = "";
    int line = 0;

    static constexpr SourceLocation Current(const char* file = __builtin_FILE(),
                                            int line = __builtin_LINE()) {
        return {file, line};
    }
};

/// A line of a file that was read, such as a kernel text. Line 0 stands for no place.
struct TextPlace {
    String file;
    Int line = 0; ///< from 1
};

/// What went wrong, where, and why. Immutable once made.
class Error {
  public:
    /// @param kind one of the ids in `errorkind`; must have static storage.
    /// @param nativeCode the code of the operating system or library that failed (an errno), or 0.
    /// @param place the line of the text that the error is about, if it is about one.
    Error(const char* kind, String message, SourceLocation location, int nativeCode = 0, TextPlace place = {})
        : kind_(kind),
          message_(std::move(message)),
          location_(location),
          nativeCode_(nativeCode),
          place_(std::move(place)) {}

    const char* GetKind() const { return kind_; }
    const String& GetMessage() const { return message_; }
    SourceLocation GetLocation() const { return location_; }
    int GetNativeCode() const { return nativeCode_; }
    const TextPlace& GetPlace() const { return place_; }
    bool Is(std::string_view kind) const { return kind == kind_; }

    /// "message [file(line)]", with "text file(line): " in front if the error has a place; what the log and
    /// the tool show.
    String ToString() const;

  private:
    const char* kind_;
    String message_;
    SourceLocation location_;
    int nativeCode_;
    TextPlace place_;
};

template <typename T>
class Result;

/// Success without a value is a null pointer and nothing else: it is returned once per kernel invocation, and
/// an inlined body that always succeeds leaves no trace of it in the loop.
template <>
class [[nodiscard]] Result<void> {
  public:
    constexpr Result() noexcept = default;
    /// @param error made by one of the functions below; the out-of-memory error is static and never freed.
    explicit Result(const Error* error) noexcept : error_(error) {}
    Result(Result&& other) noexcept : error_(std::exchange(other.error_, nullptr)) {}
    Result& operator=(Result&& other) noexcept {
        std::swap(error_, other.error_);
        return *this;
    }
    ~Result() {
        if (error_) [[unlikely]]
            Release();
    }

    explicit operator bool() const noexcept { return error_ == nullptr; }
    bool IsOk() const noexcept { return error_ == nullptr; }
    /// Requires a failed result.
    const Error& GetError() const noexcept { return *error_; }
    /// Hands the failure on and leaves success behind.
    const Error* TakeError() noexcept { return std::exchange(error_, nullptr); }
    /// A second result with the same failure; the out-of-memory error if there is no memory for it.
    Result Copy() const noexcept;

  private:
    void Release() noexcept;

    const Error* error_ = nullptr;
};

static_assert(sizeof(Result<void>) == sizeof(void*));

/// A failed result of any type; what the functions below return and `NORVI_TRY` passes on.
class [[nodiscard]] Failure {
  public:
    explicit Failure(const Error* error) noexcept : status_(error) {}
    operator Result<void>() && noexcept { return std::move(status_); }

  private:
    Result<void> status_;
};

template <typename T>
class [[nodiscard]] Result {
  public:
    Result(T value) : value_(std::move(value)) {}
    Result(Failure failure) noexcept : status_(std::move(failure)) {}

    explicit operator bool() const noexcept { return status_.IsOk(); }
    bool IsOk() const noexcept { return status_.IsOk(); }
    const Error& GetError() const noexcept { return status_.GetError(); }
    const Error* TakeError() noexcept { return status_.TakeError(); }

    /// Requires success.
    T& GetValue() & noexcept { return *value_; }
    const T& GetValue() const& noexcept { return *value_; }
    T GetValue() && { return std::move(*value_); }
    T& operator*() & noexcept { return *value_; }
    const T& operator*() const& noexcept { return *value_; }
    T operator*() && { return std::move(*value_); }
    T* operator->() noexcept { return &*value_; }
    const T* operator->() const noexcept { return &*value_; }

  private:
    Result<void> status_;
    std::optional<T> value_;
};

inline constexpr struct {
    operator Result<void>() const noexcept { return {}; }
} OK;

/// Makers of failures. None of them throws: with no memory left for the error object itself, the failure is
/// the static out-of-memory error.
Failure MakeError(const char* kind, String message, SourceLocation at = SourceLocation::Current(),
                  int nativeCode = 0) noexcept;
Failure IllegalStateError(String message, SourceLocation at = SourceLocation::Current()) noexcept;
Failure IllegalArgumentError(String message, SourceLocation at = SourceLocation::Current()) noexcept;
Failure NullPtrError(String message, SourceLocation at = SourceLocation::Current()) noexcept;
Failure NotFoundError(String message, SourceLocation at = SourceLocation::Current()) noexcept;
Failure FunctionNotImplementedError(String message, SourceLocation at = SourceLocation::Current()) noexcept;
Failure OutOfMemoryError(SourceLocation at = SourceLocation::Current()) noexcept;
/// A failed call of the operating system: the text of `nativeCode` (an errno) is appended to the message.
Failure SystemError(String message, int nativeCode, SourceLocation at = SourceLocation::Current()) noexcept;

/// The same failure with the place in a text that it is about. One that has a place already, and the
/// out-of-memory error, stay as they are.
Failure AtPlace(Failure failure, const String& file, Int line) noexcept;

/// Runs `operation` and turns a failed allocation inside it into the out-of-memory error. Every operation of
/// a public interface that allocates is wrapped once, at its outside. Any other exception would be a broken
/// contract of our own and ends the program.
template <typename Operation>
auto CatchOutOfMemory(Operation&& operation, SourceLocation at = SourceLocation::Current()) noexcept
    -> decltype(operation()) {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return OutOfMemoryError(at);
    }
}

} // namespace norvi

/// Returns the failure of `expression` from the enclosing function, else goes on.
#define NORVI_TRY(expression)                                                                                \
    do {                                                                                                     \
        if (auto&& norviTryResult = (expression); !norviTryResult.IsOk()) [[unlikely]]                       \
            return ::norvi::Failure(norviTryResult.TakeError());                                             \
    } while (false)

/// Declares `variable` with the value of `expression`, or returns its failure from the enclosing function.
#define NORVI_TRY_VALUE(variable, expression)                                                                \
    auto variable##Result = (expression);                                                                    \
    if (!variable##Result.IsOk()) [[unlikely]]                                                               \
        return ::norvi::Failure(variable##Result.TakeError());                                               \
    auto& variable = *variable##Result
