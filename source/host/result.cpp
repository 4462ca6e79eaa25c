#include <norvi/host/result.h>

#include <cstring>

#include <fmt/format.h>

namespace norvi {

namespace {

// Must exist before memory runs out, and is shared by all failures of this kind; its location is therefore
// this file's. Never destroyed, so that results in static storage may outlive everything.
const Error& StaticOutOfMemory() {
    static const Error* error = new Error(errorkind::OutOfMemory, "Out of memory", SourceLocation::Current());
    return *error;
}

[[maybe_unused]] const Error& g_madeAtLoad = StaticOutOfMemory();

} // namespace

String Error::ToString() const {
    String text = place_.line > 0 ? fmt::format("{}({}): {}", place_.file, place_.line, message_) : message_;
    if (location_.line > 0)
        text += fmt::format(" [{}({})]", location_.file, location_.line);
    return text;
}

void Result<void>::Release() noexcept {
    if (error_ != &StaticOutOfMemory())
        delete error_;
}

Result<void> Result<void>::Copy() const noexcept {
    if (!error_ || error_ == &StaticOutOfMemory())
        return Result(error_);
    return CatchOutOfMemory([this]() -> Result<void> { return Result(new Error(*error_)); });
}

Failure MakeError(const char* kind, String message, SourceLocation at, int nativeCode) noexcept {
    if (auto* error = new (std::nothrow) Error(kind, std::move(message), at, nativeCode))
        return Failure(error);
    return Failure(&StaticOutOfMemory());
}

Failure IllegalStateError(String message, SourceLocation at) noexcept {
    return MakeError(errorkind::IllegalState, std::move(message), at);
}

Failure IllegalArgumentError(String message, SourceLocation at) noexcept {
    return MakeError(errorkind::IllegalArgument, std::move(message), at);
}

Failure NullPtrError(String message, SourceLocation at) noexcept {
    return MakeError(errorkind::NullPtr, std::move(message), at);
}

Failure NotFoundError(String message, SourceLocation at) noexcept {
    return MakeError(errorkind::NotFound, std::move(message), at);
}

Failure FunctionNotImplementedError(String message, SourceLocation at) noexcept {
    return MakeError(errorkind::FunctionNotImplemented, std::move(message), at);
}

Failure OutOfMemoryError(SourceLocation) noexcept {
    return Failure(&StaticOutOfMemory());
}

Failure SystemError(String message, int nativeCode, SourceLocation at) noexcept {
    try {
        char buffer[256];
        message += fmt::format(": {}", strerror_r(nativeCode, buffer, sizeof buffer));
    } catch (const std::bad_alloc&) {
    }
    return MakeError(errorkind::System, std::move(message), at, nativeCode);
}

Failure AtPlace(Failure failure, const String& file, Int line) noexcept {
    Result<void> result = std::move(failure);
    const Error& error = result.GetError();
    if (&error != &StaticOutOfMemory() && error.GetPlace().line == 0)
        result = CatchOutOfMemory([&]() -> Result<void> {
            return Result<void>(new Error(error.GetKind(), error.GetMessage(), error.GetLocation(),
                                          error.GetNativeCode(), {file, line}));
        });
    return Failure(result.TakeError());
}

} // namespace norvi
