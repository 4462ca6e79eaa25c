#include <cerrno>

#include "support/results.h"

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
    EXPECT_TRUE(FailsWith(result, errorkind::IllegalState, "no"));
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
    EXPECT_OK(first);
    first = std::move(second);
    EXPECT_OK(second);
    EXPECT_TRUE(FailsWith(first, errorkind::System, "no"));
    first = FailWith(errorkind::NullPtr); // the error before is freed
    auto& self = first;
    first = std::move(self);
    EXPECT_TRUE(FailsWith(first, errorkind::NullPtr, "no"));
    first = OK;
    EXPECT_OK(first);
}

TEST(Result, CopyHoldsTheSameErrorForItself) {
    EXPECT_OK(Result<void>().Copy());
    const Result<void> copy = FailWith(errorkind::NotFound).Copy();
    EXPECT_TRUE(FailsWith(copy, errorkind::NotFound, "no"));
    EXPECT_EQ(copy.GetError().ToString(), "no [deep.cpp(7)]");
    EXPECT_EQ(copy.GetError().GetNativeCode(), 42);
}

TEST(Result, MakersSetKindAndThePlaceOfTheCall) {
    const std::pair<Result<void>, const char*> cases[] = {
        {IllegalStateError("text"), errorkind::IllegalState},
        {IllegalArgumentError("text"), errorkind::IllegalArgument},
        {NullPtrError("text"), errorkind::NullPtr},
        {NotFoundError("text"), errorkind::NotFound},
        {FunctionNotImplementedError("text"), errorkind::FunctionNotImplemented},
    };
    for (const auto& [result, kind] : cases) {
        EXPECT_TRUE(FailsWith(result, kind, "text"));
        EXPECT_STREQ(result.GetError().GetLocation().file, __FILE__);
        EXPECT_GT(result.GetError().GetLocation().line, 0);
    }
    const Result<void> system = SystemError("the file cannot be read", ENOENT);
    EXPECT_TRUE(FailsWith(system, errorkind::System, "the file cannot be read: No such file or directory"));
    EXPECT_EQ(system.GetError().GetNativeCode(), ENOENT);
}

TEST(Result, OutOfMemoryIsOneStaticErrorThatOutlivesItsResults) {
    const Error* first = nullptr;
    {
        const Result<void> result = OutOfMemoryError();
        const Result<void> copy = result.Copy();
        first = &copy.GetError();
    }
    const Result<int> caught = CatchOutOfMemory([]() -> Result<int> { throw std::bad_alloc(); });
    EXPECT_TRUE(FailsWith(caught, errorkind::OutOfMemory, "Out of memory"));
    EXPECT_EQ(&caught.GetError(), first);
    EXPECT_EQ(*CatchOutOfMemory([]() -> Result<int> { return 3; }), 3);
    EXPECT_TRUE(
        FailsWith(CatchOutOfMemory([] { return FailWithValueType(); }), errorkind::IllegalState, "no"));
}

} // namespace
} // namespace norvi
