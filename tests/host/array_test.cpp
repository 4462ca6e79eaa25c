#include "tracked.h"

#include <cstring>
#include <limits>

#include <norvi/host/array.h>

#include "support/results.h"

namespace norvi {
namespace {

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
    {
        ArrayRef reference = TrackedArray({1, 2, 3, 4});
        Array* array = *reference.MakeWritable();
        for (Int count : {6, 4, 1000, 4, 5, 17, 4, 2, 3, 0, 1}) {
            ASSERT_OK(array->Resize(count));
            EXPECT_EQ(array->GetByteCount(), count * static_cast<Int>(sizeof(Tracked)));
            EXPECT_EQ(Tracked::living, count);
            BaseArray<Int> kept = Numbers(*array);
            if (count >= 4) {
                kept.resize(4);
                EXPECT_EQ(kept, (BaseArray<Int>{1, 2, 3, 4}));
            }
        }
        EXPECT_EQ(Numbers(*array), BaseArray<Int>{0}); // the dropped element is not found again
        array->Flush();
        EXPECT_EQ(array->GetCount() + Tracked::living, 0);
        ASSERT_OK(array->Resize(2));
    }
    EXPECT_EQ(Tracked::living, 0);
}

TEST(Array, TrivialElementsKeepTheirValuesOnACacheLine) {
    const Float32 values[] = {1, 2, 3};
    ArrayRef reference = *ArrayRef::NewBaseArray(DataType::Of<Float32>(), values, 3);
    Array* array = *reference.MakeWritable();
    ASSERT_OK(array->Resize(1000));
    ASSERT_OK(array->Resize(3));
    EXPECT_EQ(std::memcmp(array->GetElement(0), values, sizeof values), 0);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array->GetElement(0)) % 64, 0u);
    for (const Int index : {Int{0}, Int{2}, Int{3}, Int{-1}, std::numeric_limits<Int>::max()}) {
        const UntypedBlock block = array->GetBlock(index);
        const bool isInside = index >= 0 && index < 3;
        EXPECT_EQ(block.count, isInside ? 3 - index : 0) << index;
        EXPECT_EQ(block.data, isInside ? array->GetElement(index) : nullptr) << index;
    }
}

TEST(Array, ImpossibleCountsAreErrorsAndChangeNothing) {
    constexpr Int Largest = std::numeric_limits<Int>::max();
    constexpr Int BytesBeyondTheSign = Largest / static_cast<Int>(sizeof(Tracked)) + 1;
    constexpr Int BytesWrapToZero = Int{1} << 60;
    ArrayRef reference = TrackedArray({1, 2});
    const Tracked element;
    for (const Int count :
         {Int{-1}, std::numeric_limits<Int>::min(), Largest, BytesBeyondTheSign, BytesWrapToZero}) {
        const char* kind = count < 0 ? errorkind::IllegalArgument : errorkind::OutOfMemory;
        const char* message =
            count < 0 ? "An array cannot have a negative number of elements." : "Out of memory";
        EXPECT_TRUE(FailsWith((*reference.MakeWritable())->Resize(count), kind, message)) << count;
        EXPECT_TRUE(FailsWith(UntypedArray::New(sizeof(Tracked), count), kind, message)) << count;
        EXPECT_TRUE(
            FailsWith(ArrayRef::NewBaseArray(DataType::Of<Tracked>(), &element, count), kind, message));
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
        ASSERT_OK(array->Resize(test.capacity));
        ASSERT_OK(array->Resize(3));
        {
            const AllowTracked allow(test.allowed);
            EXPECT_TRUE(FailsWith(array->Resize(6), errorkind::OutOfMemory, "Out of memory")) << test.when;
        }
        EXPECT_EQ(Numbers(*array), (BaseArray<Int>{1, 2, 3})) << test.when;
        EXPECT_EQ(Tracked::living, 3) << test.when;
    }
    EXPECT_EQ(Tracked::living, 0);
}

TEST(ArrayRef, CopiesShareUntilOneWrites) {
    ArrayRef original = TrackedArray({1, 2});
    ArrayRef copy = original;
    {
        const AllowTracked one(1);
        EXPECT_TRUE(FailsWith(copy.MakeWritable(), errorkind::OutOfMemory, "Out of memory"));
        EXPECT_TRUE(copy == original && copy.IsShared());
        EXPECT_EQ(Tracked::living, 2);
    }
    ASSERT_OK((*copy.MakeWritable())->Resize(1));
    EXPECT_EQ(Numbers(*original), (BaseArray<Int>{1, 2}));
    EXPECT_EQ(Numbers(*copy), BaseArray<Int>{1});
    const Array* own = &*original;
    EXPECT_EQ(*original.MakeWritable(), own); // no longer shared: no copy
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
    const void* first = storage.GetFirst();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % 64, 0u);
    for (Int i = 0; i < storage.GetCount(); ++i)
        new (static_cast<Tracked*>(storage.GetFirst()) + i) Tracked(i);
    UntypedArray moved = std::move(storage), assigned;
    assigned = std::move(moved);
    EXPECT_TRUE(storage.IsEmpty() && moved.IsEmpty());
    {
        const ArrayRef array = *ArrayRef::NewBaseArray(DataType::Of<Tracked>(), std::move(assigned));
        EXPECT_TRUE(assigned.IsEmpty());
        EXPECT_EQ(array->GetElement(0), first);
        EXPECT_EQ(Numbers(*array), (BaseArray<Int>{0, 1, 2}));
    }
    EXPECT_EQ(Tracked::living, 0);
    EXPECT_TRUE(UntypedArray::New(4, 0)->IsEmpty());
}

} // namespace
} // namespace norvi
