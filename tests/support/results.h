// Assertions on results that show the whole error.
#pragma once

#include <gtest/gtest.h>

#include <norvi/host/result.h>

namespace norvi {

template <typename T>
testing::AssertionResult Succeeds(const Result<T>& result) {
    if (result.IsOk())
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << result.GetError().GetKind() << ": " << result.GetError().ToString();
}

/// The whole text is compared.
template <typename T>
testing::AssertionResult FailsWith(const Result<T>& result, const char* kind, const String& message) {
    if (result.IsOk())
        return testing::AssertionFailure() << "success instead of " << kind << ": " << message;
    const Error& error = result.GetError();
    if (error.Is(kind) && error.GetMessage() == message)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << error.GetKind() << ": " << error.ToString() << "\ninstead of " << kind << ": " << message;
}

/// Forgets the value of a result, so that calls of any result fit one table.
template <typename T>
Result<void> WithoutValue(Result<T> result) {
    if (result.IsOk())
        return OK;
    return Failure(result.TakeError());
}

} // namespace norvi

#define ASSERT_OK(expression) ASSERT_TRUE(::norvi::Succeeds(expression))
#define EXPECT_OK(expression) EXPECT_TRUE(::norvi::Succeeds(expression))
