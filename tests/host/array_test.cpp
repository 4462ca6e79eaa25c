#include "tracked.h"

#include <limits>

#include <norvi/host/array.h>

namespace norvi {
namespace {

template <typename T>
BaseArray<T> Values(const Array& array) {
    BaseArray<T> values;
    for (Int i = 0; i < array.GetCount(); ++i)
        values.push_back(*static_cast<const T*>(array.GetElement(i)));
    return values;
}

BaseArray<Int> Numbers(const Array& array) {
    BaseArray<Int> numbers;
    for (Int i = 0; i < array.GetCount(); ++i)
        numbers.push_back(static_cast<const Tracked*>(array.GetElement(i))->GetNumber());
    return numbers;
}

ArrayRef TrackedArray(std::initializer_list<Int> numbers) {
    const BaseArray<Tracked> elements(numbers.begin(), numbers.end());
    return *ArrayRef::NewBaseArray(DataType::Of<Tracked>(), elements.data(), std::ssize(elements));
}

TEST(Array, ResizeConstructsAndDestroysEachElementOnce) {
    const BaseArray<Int> expected{1, 2, 3, 4};
    {
        ArrayRef reference = TrackedArray({1, 2, 3, 4});
        Array* array = *reference.MakeWritable();
        for (Int count : {6, 4, 1000, 4, 4, 5, 17, 2, 3, 0, 1}) {
            ASSERT_TRUE(array->Resize(count).IsOk());
            EXPECT_EQ(array->GetCount(), count);
            EXPECT_EQ(array->GetByteCount(), count * static_cast<Int>(sizeof(Tracked)));
            EXPECT_EQ(Tracked::living, count);
            BaseArray<Int> kept = Numbers(*array);
            if (count >= 4) {
                kept.resize(4);
                EXPECT_EQ(kept, expected);
            }
        }
        EXPECT_EQ(Numbers(*array), BaseArray<Int>{0}); // the dropped element is not found again
        array->Flush();
        EXPECT_EQ(array->GetCount(), 0);
        EXPECT_EQ(Tracked::living, 0);
        ASSERT_TRUE(array->Resize(2).IsOk());
    }
    EXPECT_EQ(Tracked::living, 0);
}

TEST(Array, TrivialElementsKeepTheirValuesOnACacheLine) {
    const Float32 values[] = {1, 2, 3};
    ArrayRef reference = *ArrayRef::NewBaseArray(DataType::Of<Float32>(), values, 3);
    Array* array = *reference.MakeWritable();
    ASSERT_TRUE(array->Resize(1000).IsOk());
    ASSERT_TRUE(array->Resize(3).IsOk());
    EXPECT_EQ(Values<Float32>(*array), (BaseArray<Float32>{1, 2, 3}));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array->GetElement(0)) % 64, 0u);
    const struct {
        Int index, count;
    } blocks[] = {{0, 3}, {2, 1}, {3, 0}, {-1, 0}, {std::numeric_limits<Int>::max(), 0}};
    for (const auto& test : blocks) {
        const UntypedBlock block = array->GetBlock(test.index);
        EXPECT_EQ(block.count, test.count);
        EXPECT_EQ(block.data, test.count ? array->GetElement(test.index) : nullptr);
        EXPECT_EQ(block.stride, 4);
    }
}

TEST(Array, ImpossibleCountsAreErrorsAndChangeNothing) {
    constexpr Int Largest = std::numeric_limits<Int>::max();
    const struct {
        Int count;
        const char* kind;
    } cases[] = {
        {-1, errorkind::IllegalArgument},
        {std::numeric_limits<Int>::min(), errorkind::IllegalArgument},
        {Largest, errorkind::OutOfMemory},
        {Largest / static_cast<Int>(sizeof(Tracked)) + 1, errorkind::OutOfMemory}, // bytes beyond the sign
        {Int{1} << 60, errorkind::OutOfMemory},                                    // bytes wrap to zero
    };
    ArrayRef reference = TrackedArray({1, 2});
    const Tracked element;
    for (const auto& test : cases) {
        const Result<void> resized = (*reference.MakeWritable())->Resize(test.count);
        ASSERT_FALSE(resized.IsOk()) << test.count;
        EXPECT_STREQ(resized.GetError().GetKind(), test.kind) << test.count;
        EXPECT_STREQ(UntypedArray::New(sizeof(Tracked), test.count).GetError().GetKind(), test.kind);
        const auto made = ArrayRef::NewBaseArray(DataType::Of<Tracked>(), &element, test.count);
        EXPECT_STREQ(made.GetError().GetKind(), test.kind);
    }
    EXPECT_EQ(Numbers(*reference), (BaseArray<Int>{1, 2}));
}

TEST(Array, FailedAllocationLeavesTheArrayAsItWas) {
    const struct {
        const char* when;
        Int capacity, allowed;
    } cases[] = {
        {"copying the first element", 3, 0},        {"copying a later element", 3, 2},
        {"constructing the first new one", 3, 3},   {"constructing a later new one", 3, 5},
        {"constructing within the capacity", 6, 0}, {"constructing a later one there", 6, 2},
    };
    for (const auto& test : cases) {
        ArrayRef reference = TrackedArray({1, 2, 3});
        Array* array = *reference.MakeWritable();
        ASSERT_TRUE(array->Resize(test.capacity).IsOk());
        ASSERT_TRUE(array->Resize(3).IsOk());
        {
            const AllowTracked allow(test.allowed);
            const Result<void> resized = array->Resize(6);
            ASSERT_FALSE(resized.IsOk()) << test.when;
            EXPECT_TRUE(resized.GetError().Is(errorkind::OutOfMemory)) << test.when;
        }
        EXPECT_EQ(Numbers(*array), (BaseArray<Int>{1, 2, 3})) << test.when;
        EXPECT_EQ(Tracked::living, array->GetCount()) << test.when;
    }
    EXPECT_EQ(Tracked::living, 0);
}

TEST(ArrayRef, CopiesShareUntilOneWrites) {
    ArrayRef original = TrackedArray({1, 2});
    ArrayRef copy = original;
    EXPECT_TRUE(copy == original);
    EXPECT_TRUE(copy.IsShared());
    {
        const AllowTracked one(1);
        const Result<Array*> failed = copy.MakeWritable();
        ASSERT_FALSE(failed.IsOk());
        EXPECT_TRUE(failed.GetError().Is(errorkind::OutOfMemory));
        EXPECT_TRUE(copy == original);
        EXPECT_EQ(Tracked::living, 2);
    }
    ASSERT_TRUE((*copy.MakeWritable())->Resize(1).IsOk());
    EXPECT_EQ(Numbers(*original), (BaseArray<Int>{1, 2}));
    EXPECT_EQ(Numbers(*copy), BaseArray<Int>{1});
    EXPECT_FALSE(copy == original);
    const Array* own = &*original;
    EXPECT_EQ(*original.MakeWritable(), own); // no longer shared: no copy
    EXPECT_FALSE(ArrayRef());
    ArrayRef empty = TrackedArray({});
    const ArrayRef other = empty;
    EXPECT_EQ((*empty.MakeWritable())->GetCount(), 0);
}

TEST(ArrayRef, RefusesTypesThatAnArrayCannotHold) {
    struct Abstract {
        virtual ~Abstract() = default;
        virtual void Do() = 0;
    };
    // No type, one without a size, and one that can neither be constructed nor copied.
    for (DataType type : {DataType(), DataType::Of<Abstract>(), DataType::Of<Array>()}) {
        const Result<ArrayRef> made = ArrayRef::NewBaseArray(type);
        ASSERT_FALSE(made.IsOk()) << type.ToString();
        EXPECT_TRUE(made.GetError().Is(errorkind::IllegalArgument)) << type.ToString();
    }
}

TEST(UntypedArray, HandsItsStorageAndElementsOver) {
    UntypedArray storage = *UntypedArray::New(sizeof(Tracked), 3);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(storage.GetFirst()) % 64, 0u);
    for (Int i = 0; i < storage.GetCount(); ++i)
        new (static_cast<Tracked*>(storage.GetFirst()) + i) Tracked(i);
    UntypedArray moved = std::move(storage);
    EXPECT_TRUE(storage.IsEmpty());
    EXPECT_EQ(storage.GetFirst(), nullptr);
    UntypedArray assigned;
    assigned = std::move(moved);
    const void* first = assigned.GetFirst();
    {
        const ArrayRef array = *ArrayRef::NewBaseArray(DataType::Of<Tracked>(), std::move(assigned));
        EXPECT_TRUE(assigned.IsEmpty());
        EXPECT_EQ(array->GetElement(0), first);
        EXPECT_EQ(Numbers(*array), (BaseArray<Int>{0, 1, 2}));
    }
    EXPECT_EQ(Tracked::living, 0);
    const Result<UntypedArray> none = UntypedArray::New(4, 0);
    ASSERT_TRUE(none.IsOk());
    EXPECT_TRUE(none->IsEmpty());
}

} // namespace
} // namespace norvi
