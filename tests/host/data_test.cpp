#include "tracked.h"

#include <norvi/host/data.h>

#include "support/results.h"

namespace norvi {
namespace {

/// A Tracked of a chosen size and alignment.
template <std::size_t Size, std::size_t Alignment = 8>
struct alignas(Alignment) Sized : Tracked {
    using Tracked::Tracked;
    char padding[Size - sizeof(Tracked)]{};
};
static_assert(sizeof(Sized<32>) == 32 && sizeof(Sized<33>) == 40 && sizeof(Sized<64, 64>) == 64);

template <typename T>
class DataWith : public testing::Test {
  protected:
    ~DataWith() override { EXPECT_EQ(Tracked::living, 0); }
};
using SizesAroundTheInlineSpace =
    testing::Types<Tracked, Sized<32>, Sized<33>, Sized<32, 32>, Sized<256, 64>>;
TYPED_TEST_SUITE(DataWith, SizesAroundTheInlineSpace);

TYPED_TEST(DataWith, CopiesAndMovesOwnTheirValues) {
    Data first = TypeParam(1);
    Data copy = first;
    for (const Data* data : {&first, &copy}) {
        EXPECT_EQ(data->ToString(), "tracked 1");
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data->GetAddress()) % alignof(TypeParam), 0u);
    }
    EXPECT_TRUE(copy == first);
    copy = TypeParam(2);
    EXPECT_FALSE(copy == first);
    Data moved = std::move(first);
    EXPECT_TRUE(first.IsEmpty());
    EXPECT_EQ(first.GetAddress(), nullptr);
    first = moved;
    const Data fromType = Data::Copy(first.GetType(), first.GetAddress());
    EXPECT_TRUE(fromType == moved);
    EXPECT_EQ(Tracked::living, 4);
}

TYPED_TEST(DataWith, AssignmentReplacesValuesOfEveryTypeAndItself) {
    Data data = TypeParam(1);
    Data& self = data;
    data = self;
    data = std::move(self);
    EXPECT_EQ(data.ToString(), "tracked 1");
    data = 7;
    EXPECT_EQ(Tracked::living, 0);
    data = String(100, 'x');
    data = TypeParam(2);
    Data text = "text";
    std::swap(data, text);
    EXPECT_EQ(*data.Get<String>(), "text");
    EXPECT_EQ(text.ToString(), "tracked 2");
    text = Data();
    EXPECT_TRUE(text.IsEmpty());
}

TYPED_TEST(DataWith, ValueThatCannotBeCopiedLeavesNothingBehind) {
    const TypeParam value(1);
    const Data data = value;
    Data target = "kept";
    const AllowTracked none(0);
    EXPECT_THROW(Data{data}, std::bad_alloc);
    EXPECT_THROW(Data{value}, std::bad_alloc);
    EXPECT_THROW(Data::Copy(DataType::Of<TypeParam>(), &value), std::bad_alloc);
    EXPECT_THROW(target = data, std::bad_alloc);
    EXPECT_EQ(*target.Get<String>(), "kept");
    EXPECT_EQ(Tracked::living, 2);
}

TEST(Data, LetsGoOfSharedOwnershipWithItsValue) {
    const auto shared = std::make_shared<int>(5);
    Data data = shared;
    EXPECT_EQ(shared.use_count(), 2);
    const char* text = "pointer to text";
    data = text;
    EXPECT_EQ(shared.use_count(), 1);
    EXPECT_EQ(*data.Get<String>(), "pointer to text");
}

TEST(Data, GivesTheValueOnlyAsItsOwnType) {
    const Data data = Float32{1.5f};
    EXPECT_EQ(*data.GetAs<Float32>(), 1.5f);
    EXPECT_EQ(data.Get<Float64>(), nullptr);
    const Result<Vector32> wrong = data.GetAs<Vector32>();
    EXPECT_TRUE(FailsWith(wrong, errorkind::IllegalState, "Data holds float32, but Vector32 is needed."));
    EXPECT_STREQ(wrong.GetError().GetLocation().file, __FILE__);
    EXPECT_TRUE(FailsWith(Data().GetAs<Int32>(), errorkind::IllegalState,
                          "Data holds nothing, but int32 is needed."));
}

TEST(Data, ShowsComparesAndHashesByValue) {
    Int32 number = 1;
    const struct {
        Data data;
        const char* text;
    } cases[] = {
        {Data(), "nothing"},
        {Data(true), "true"},
        {Data(Int64{-3}), "-3"},
        {Data(0.25f), "0.25"},
        {Data("text"), "text"},
        {Data(InternedId("id")), "id"},
        {Data(Vector32{1, 2, 3}), "Vector32"},
        {Data(&number), "int32*"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.data.ToString(), test.text);
        for (const auto& other : cases)
            EXPECT_EQ(test.data == other.data, &test == &other) << test.text << " and " << other.text;
        EXPECT_EQ(Data(test.data).GetHashCode(), test.data.GetHashCode());
    }
    EXPECT_FALSE(Data(Int32{1}) == Data(Int64{1}));
}

} // namespace
} // namespace norvi
