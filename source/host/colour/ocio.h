// The colour library, and the border that its exceptions do not cross.
#pragma once

#include <OpenColorIO/OpenColorIO.h>

#include <norvi/host/result.h>
#include <norvi/host/text.h>

namespace norvi {

namespace OCIO = OCIO_NAMESPACE;

/// Runs `operation`, which calls the library. Its exceptions (and those of the parsers inside it) become
/// illegal-argument errors "what: the library's text".
template <typename Operation>
auto CatchColorErrors(std::string_view what, Operation&& operation,
                      SourceLocation at = SourceLocation::Current()) noexcept -> decltype(operation()) {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return OutOfMemoryError(at);
    } catch (const std::exception& exception) {
        return CatchOutOfMemory(
            [&] { return IllegalArgumentError(Format("@: @", what, exception.what()), at); }, at);
    }
}

} // namespace norvi
