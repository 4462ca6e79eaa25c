#include <cerrno>

#include <gtest/gtest.h>

#include <norvi/host/result.h>

namespace norvi {
namespace {

Result<void> FailWith(const char* kind) {
    return MakeError(kind, "no", {"deep.cpp", 7}, 42);
}

Result<int> FailWithValueType() {
    NORVI_TRY(FailWith(errorkind::IllegalState));
    return 1;
}

Result<String> PassOn() {
    NORVI_TRY(Result<void>());
    NORVI_TRY_VALUE(number, FailWithValueType());
    return String(static_cast<std::size_t>(number), 'x');
}

TEST(Result, TryPassesTheWholeErrorThroughEveryType) {
    const Result<String> result = PassOn();
    ASSERT_FALSE(result.IsOk());
    EXPECT_FALSE(result);
    EXPECT_TRUE(result.GetError().Is(errorkind::IllegalState));
    EXPECT_EQ(result.GetError().GetMessage(), "no");
    EXPECT_EQ(result.GetError().GetNativeCode(), 42);
    EXPECT_EQ(result.GetError().ToString(), "no [deep.cpp(7)]");
}

TEST(Result, TryValueGoesOnWithAValueThatCanBeMovedOut) {
    const auto take = []() -> Result<std::unique_ptr<int>> {
        NORVI_TRY_VALUE(value, Result<std::unique_ptr<int>>(std::make_unique<int>(5)));
        ++*value;
        return std::move(value);
    };
    const std::unique_ptr<int> taken = *take();
    EXPECT_EQ(*taken, 6);
}

TEST(Result, MovesHandTheErrorOverAndLeaveSuccessBehind) {
    Result<void> first = FailWith(errorkind::System);
    Result<void> second = std::move(first);
    EXPECT_TRUE(first.IsOk());
    ASSERT_FALSE(second.IsOk());
    first = std::move(second);
    ASSERT_FALSE(first.IsOk());
    EXPECT_TRUE(second.IsOk());
    first = FailWith(errorkind::NullPtr); // the error before is freed
    EXPECT_TRUE(first.GetError().Is(errorkind::NullPtr));
    auto& self = first;
    first = std::move(self);
    EXPECT_EQ(first.GetError().GetMessage(), "no");
    first = OK;
    EXPECT_TRUE(first.IsOk());
}

TEST(Result, CopyHoldsTheSameErrorForItself) {
    EXPECT_TRUE(Result<void>().Copy().IsOk());
    const Result<void> copy = [] {
        const Result<void> original = FailWith(errorkind::NotFound);
        return original.Copy();
    }();
    ASSERT_FALSE(copy.IsOk());
    EXPECT_STREQ(copy.GetError().GetKind(), errorkind::NotFound);
    EXPECT_EQ(copy.GetError().ToString(), "no [deep.cpp(7)]");
    EXPECT_EQ(copy.GetError().GetNativeCode(), 42);
}

TEST(Result, MakersSetKindAndThePlaceOfTheCall) {
    struct {
        Result<void> result;
        const char* kind;
    } cases[] = {
        {IllegalStateError("text"), errorkind::IllegalState},
        {IllegalArgumentError("text"), errorkind::IllegalArgument},
        {NullPtrError("text"), errorkind::NullPtr},
        {NotFoundError("text"), errorkind::NotFound},
        {FunctionNotImplementedError("text"), errorkind::FunctionNotImplemented},
    };
    for (const auto& test : cases) {
        const Error& error = test.result.GetError();
        EXPECT_STREQ(error.GetKind(), test.kind);
        EXPECT_EQ(error.GetMessage(), "text");
        EXPECT_STREQ(error.GetLocation().file, __FILE__);
        EXPECT_GT(error.GetLocation().line, 0);
        EXPECT_EQ(error.GetNativeCode(), 0);
    }
}

TEST(Result, SystemErrorAppendsTheTextOfTheCode) {
    const Result<void> result = SystemError("the file cannot be read", ENOENT);
    EXPECT_TRUE(result.GetError().Is(errorkind::System));
    EXPECT_EQ(result.GetError().GetNativeCode(), ENOENT);
    EXPECT_EQ(result.GetError().GetMessage(), "the file cannot be read: No such file or directory");
}

TEST(Result, OutOfMemoryIsOneStaticErrorThatOutlivesItsResults) {
    const Error* first = nullptr;
    {
        const Result<void> result = OutOfMemoryError();
        const Result<void> copy = result.Copy();
        first = &copy.GetError();
    }
    const Result<int> caught = CatchOutOfMemory([]() -> Result<int> { throw std::bad_alloc(); });
    ASSERT_FALSE(caught.IsOk());
    EXPECT_EQ(&caught.GetError(), first);
    EXPECT_TRUE(first->Is(errorkind::OutOfMemory));
    const Result<int> passed = CatchOutOfMemory([]() -> Result<int> { return 3; });
    EXPECT_EQ(*passed, 3);
    const Result<int> failed = CatchOutOfMemory([] { return FailWithValueType(); });
    EXPECT_TRUE(failed.GetError().Is(errorkind::IllegalState));
}

} // namespace
} // namespace norvi
