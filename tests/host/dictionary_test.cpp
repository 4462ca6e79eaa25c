#include "tracked.h"

#include <norvi/host/dictionary.h>

namespace norvi {
namespace {

String Describe(const DataDictionary& dictionary) {
    String text;
    for (const auto& [key, value] : dictionary)
        text += Format("@=@ ", key, value);
    return text;
}

TEST(DataDictionary, KeepsTheOrderOfInsertionThroughReplacementAndErasure) {
    DataDictionary dictionary;
    EXPECT_TRUE(dictionary.IsEmpty());
    EXPECT_EQ(dictionary.begin(), dictionary.end());
    for (const char* key : {"d", "a", "c", "b"})
        dictionary.Set(key, dictionary.GetCount());
    dictionary.Set("a", "new");
    EXPECT_EQ(Describe(dictionary), "d=0 a=new c=2 b=3 ");
    dictionary.Erase("a");
    dictionary.Erase("no such key");
    dictionary.Set("b", 33);
    dictionary.Set("a", "last");
    EXPECT_EQ(Describe(dictionary), "d=0 c=2 b=33 a=last ");
    for (Int left = dictionary.GetCount(); left > 0; --left)
        dictionary.Erase(dictionary.begin()->key); // a key that lies in the dictionary itself
    EXPECT_FALSE(dictionary.Contains("d"));
    EXPECT_EQ(dictionary.GetCount(), 0);
    dictionary.Erase("d");
    DataDictionary().Erase("d");
}

TEST(DataDictionary, KeysOfDifferentTypesDiffer) {
    DataDictionary dictionary;
    dictionary.Set(Int32{1}, "int32");
    dictionary.Set(Int64{1}, "int64");
    dictionary.Set("1", "text");
    dictionary.Set(InternedId("1"), "id");
    EXPECT_EQ(dictionary.GetCount(), 4);
    EXPECT_EQ(*dictionary.Find(Int64{1}), Data("int64"));
    EXPECT_EQ(*dictionary.GetAs<String>(InternedId("1")), "id");
}

TEST(DataDictionary, CopiesDoNotSeeEachOthersChanges) {
    DataDictionary original;
    original.Set("a", 1);
    original.Set("b", 2);
    DataDictionary copy = original;
    EXPECT_EQ(copy.Find("a"), original.Find("a")); // shared until one writes
    copy.Set("a", 10);
    original.Erase("b");
    DataDictionary second = original;
    original.Clear();
    second.Set("c", 3);
    EXPECT_EQ(Describe(original), "");
    EXPECT_EQ(Describe(copy), "a=10 b=2 ");
    EXPECT_EQ(Describe(second), "a=1 c=3 ");
    const DataDictionary third = second;
    second.Erase("no such key");
    EXPECT_EQ(second.Find("a"), third.Find("a")); // nothing was written
    DataDictionary taken = std::move(second);
    EXPECT_TRUE(second.IsEmpty());
    second.Set("d", 4);
    EXPECT_EQ(Describe(taken), "a=1 c=3 ");
}

TEST(DataDictionary, MissingAndMistypedEntriesAreErrorsAtThePlaceOfTheCall) {
    DataDictionary dictionary;
    dictionary.Set("a", 1);
    const Result<Data> missing = dictionary.Get("b");
    EXPECT_TRUE(missing.GetError().Is(errorkind::NotFound));
    EXPECT_EQ(missing.GetError().GetMessage(), "no entry for key 'b'");
    EXPECT_STREQ(missing.GetError().GetLocation().file, __FILE__);
    EXPECT_TRUE(DataDictionary().GetAs<Int32>(7).GetError().Is(errorkind::NotFound));
    const Result<String> mistyped = dictionary.GetAs<String>("a");
    EXPECT_TRUE(mistyped.GetError().Is(errorkind::IllegalState));
    EXPECT_EQ(mistyped.GetError().GetMessage(), "Data holds int32, but String is needed.");
    EXPECT_STREQ(mistyped.GetError().GetLocation().file, __FILE__);
}

TEST(DataDictionary, FailedCopyForWritingLeavesBothAsTheyWere) {
    DataDictionary original;
    original.Set("a", Tracked(1));
    original.Set("b", Tracked(2));
    DataDictionary copy = original;
    const AllowTracked one(1);
    EXPECT_THROW(copy.Set("c", 3), std::bad_alloc);
    EXPECT_THROW(copy.Erase("a"), std::bad_alloc);
    EXPECT_EQ(Describe(copy), "a=tracked 1 b=tracked 2 ");
    EXPECT_EQ(Tracked::living, 2);
}

TEST(DataDictionary, InsertionDoesNotMoveEveryEntryEachTime) {
    DataDictionary dictionary;
    Tracked::moves = 0;
    constexpr Int Count = 1000;
    for (Int key = 0; key < Count; ++key)
        dictionary.Set(key, Tracked(key));
    EXPECT_LT(Tracked::moves, 20 * Count);
}

} // namespace
} // namespace norvi
