#include "tracked.h"

#include <norvi/host/dictionary.h>

#include "support/results.h"

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
    EXPECT_EQ(dictionary.begin(), dictionary.end());
    dictionary.Erase("d");
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
    EXPECT_EQ(Describe(dictionary), "");
}

TEST(DataDictionary, KeysOfDifferentTypesDiffer) {
    DataDictionary dictionary;
    for (const Data& key : {Data(Int32{1}), Data(Int64{1}), Data("1"), Data(InternedId("1"))})
        dictionary.Set(key, key.GetType().ToString());
    EXPECT_EQ(dictionary.GetCount(), 4);
    EXPECT_EQ(*dictionary.Find(Int64{1}), Data("int64"));
}

TEST(DataDictionary, CopiesDoNotSeeEachOthersChanges) {
    DataDictionary original;
    original.Set("a", 1);
    original.Set("b", 2);
    DataDictionary copy = original;
    copy.Erase("no such key");
    EXPECT_EQ(copy.Find("a"), original.Find("a")); // shared until one writes
    copy.Set("a", 10);
    original.Erase("b");
    DataDictionary second = original;
    original.Clear();
    second.Set("c", 3);
    DataDictionary taken = std::move(second);
    second.Set("d", 4);
    EXPECT_EQ(Describe(original) + "| " + Describe(copy) + "| " + Describe(taken) + "| " + Describe(second),
              "| a=10 b=2 | a=1 c=3 | d=4 ");
}

TEST(DataDictionary, MissingAndMistypedEntriesAreErrorsAtThePlaceOfTheCall) {
    DataDictionary dictionary;
    dictionary.Set("a", 1);
    const Result<Data> missing = dictionary.Get("b");
    EXPECT_TRUE(FailsWith(missing, errorkind::NotFound, "no entry for key 'b'"));
    EXPECT_STREQ(missing.GetError().GetLocation().file, __FILE__);
    EXPECT_TRUE(FailsWith(DataDictionary().GetAs<Int32>(7), errorkind::NotFound, "no entry for key '7'"));
    const Result<String> mistyped = dictionary.GetAs<String>("a");
    EXPECT_TRUE(FailsWith(mistyped, errorkind::IllegalState, "Data holds int32, but String is needed."));
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
