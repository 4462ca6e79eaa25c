#include <atomic>
#include <thread>

#include <norvi/host/registry.h>

#include "log_recorder.h"
#include "support/results.h"

namespace norvi {
namespace {

struct Speaker {
    static constexpr const char* InterfaceId = "test.speaker";
    Int word = 7;
};

class Parrot final : public ObjectInterface, public Speaker {
  public:
    void* QueryInterface(const Id& interfaceId) override {
        return interfaceId == InterfaceId ? static_cast<Speaker*>(this) : nullptr;
    }
};

class Mute final : public ObjectInterface {
  public:
    void* QueryInterface(const Id&) override { return nullptr; }
};

const Class g_parrot("test.parrot", []() -> ObjectRef { return std::make_shared<Parrot>(); });
const Class g_mute("test.mute", []() -> ObjectRef { return std::make_shared<Mute>(); });
const Class g_starved("test.starved", []() -> ObjectRef { throw std::bad_alloc(); });

TEST(Registry, KeepsTheFirstEntryOfAnId) {
    Registry& registry = Registry::Get("test.registry");
    for (const char* id : {"c", "a", "b"})
        ASSERT_OK(registry.InsertEntry(id, &g_parrot));
    EXPECT_TRUE(FailsWith(registry.InsertEntry("a", &g_mute), errorkind::IllegalArgument,
                          "'a' is already entered in the registry 'test.registry'"));
    EXPECT_EQ(Registry::Get("test.registry").FindEntryValue("a"), &g_parrot);
    EXPECT_EQ(Registry::Get("test.registry.other").FindEntryValue("a"), nullptr);
    EXPECT_EQ(registry.GetIds(), (BaseArray<Id>{"a", "b", "c"}));
    for (const char* id : {"a", "no such entry", "b", "c"})
        registry.EraseEntry(id);
    EXPECT_OK(registry.InsertEntry("a", &g_mute));
    registry.EraseEntry("a");
    EXPECT_TRUE(registry.GetIds().empty());
}

TEST(Registry, ThreadsEnterAndEraseAtTheSameTime) {
    std::atomic<Int> winners{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([thread, &winners] {
            Registry& registry = Registry::Get("test.registry.threads");
            winners += registry.InsertEntry("contended", &g_mute).IsOk();
            for (int i = 0; i < 200; ++i) {
                const Id id(Format("@.@", thread, i));
                EXPECT_TRUE(registry.InsertEntry(id, &g_parrot).IsOk());
                EXPECT_EQ(registry.FindEntryValue(id), &g_parrot);
                if (i % 2)
                    registry.EraseEntry(id);
                EXPECT_TRUE(i % 50 != 0 || !registry.GetIds().empty());
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(winners, 1);
    EXPECT_EQ(Registry::Get("test.registry.threads").GetIds().size(), 1u + 4 * 100);
}

TEST(Ref, MakesObjectsOfRegisteredClassesWithTheInterface) {
    Registry& classes = Registry::Get(registryid::Classes);
    for (const Class* entry : {&g_parrot, &g_mute, &g_starved})
        ASSERT_OK(classes.InsertEntry(entry->GetId(), entry));
    {
        const Result<Ref<Speaker>> speaker = Ref<Speaker>::Create("test.parrot");
        ASSERT_OK(speaker);
        EXPECT_EQ((*speaker)->word, 7);
        EXPECT_EQ(static_cast<Parrot*>(speaker->get())->GetClass(), &g_parrot);
    }
    EXPECT_TRUE(FailsWith(Ref<Speaker>::Create("test.unknown"), errorkind::NullPtr,
                          "no class with the id 'test.unknown' is registered"));
    EXPECT_TRUE(FailsWith(Ref<Speaker>::Create("test.mute"), errorkind::NullPtr,
                          "the object does not implement the interface 'test.speaker'"));
    EXPECT_TRUE(FailsWith(Ref<Speaker>::Create("test.starved"), errorkind::OutOfMemory, "Out of memory"));
    EXPECT_TRUE(Ref<Speaker>::Create(static_cast<const Class*>(nullptr)).GetError().Is(errorkind::NullPtr));
    EXPECT_TRUE(Ref<Speaker>::Of(nullptr).GetError().Is(errorkind::NullPtr));
    for (const Class* entry : {&g_parrot, &g_mute, &g_starved})
        classes.EraseEntry(entry->GetId());
}

TEST(ObjectInterface, WithoutACopyOfItsOwnReportsAndFails) {
    LogRecorder log;
    EXPECT_TRUE(FailsWith((*g_mute.Create())->CopyInstance(), errorkind::FunctionNotImplemented,
                          "'test.mute' cannot be copied"));
    EXPECT_EQ(
        log.entries.at(0).find("critical: Component test.mute has members, but CopyFrom is not implemented!"),
        0u);
    EXPECT_FALSE(Mute().CopyInstance().IsOk()); // made by nobody's class
}

} // namespace
} // namespace norvi
