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
    return location_.line > 0 ? fmt::format("{} [{}({})]", message_, location_.file, location_.line)
                              : message_;
}

void Result<void>::Release() noexcept {
    if (error_ != &StaticOutOfMemory())
        delete error_;
}

Result<void> Result<void>::Copy() const noexcept {
    if (!error_ || error_ == &StaticOutOfMemory())
        return Result(error_);
    return CatchOutOfMemory([this]() -> Result<void> {
        return MakeError(error_->GetKind(), error_->GetMessage(), error_->GetLocation(),
                         error_->GetNativeCode());
    });
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

} // namespace norvi
