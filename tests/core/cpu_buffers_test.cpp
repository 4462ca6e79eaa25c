// Global buffers: checks in their order, sharing with read-backs, links.
#include <limits>

#include "support/test_kernels.h"

namespace norvi {
namespace {

constexpr Int Max = std::numeric_limits<Int>::max();
constexpr Int Min = std::numeric_limits<Int>::min();
using U32 = BaseArray<UInt32>;

class BufferTest : public ProgramTest {
  protected:
    BufferTest() {
        classes.Enter<Doubler>("doubler");
        Store<UInt32>("a", {1, 2, 3, 4, 5});
        Store<UInt32>("b", {6, 7, 8});
        Store<Float32>("f", {1, 2, 3, 4, 5});
    }
};

UntypedArray Untyped(const U32& elements) {
    UntypedArray array = *UntypedArray::New(sizeof(UInt32), static_cast<Int>(elements.size()));
    std::copy(elements.begin(), elements.end(), static_cast<UInt32*>(array.GetFirst()));
    return array;
}

TEST_F(BufferTest, ChecksComeInOrderAndChangeNothing) {
    AddKernel("doubler");
    const DataType u32 = DataType::Of<UInt32>(), f32 = DataType::Of<Float32>();
    const char* const argument = errorkind::IllegalArgument;
    const char* const state = errorkind::IllegalState;
    const char* const memory = errorkind::OutOfMemory;
    const char* const wrongType = "Wrong DataType passed!";
    const char* const empty =
        "Empty buffers are not allowed to be added. Please resize to the required size before storing.";
    const char* const noUpdate = "buffer for update could not be found";
    const char* const noFit = "Data update does not fit into existing buffer";
    const char* const noSource = "source buffer could not be found";
    const char* const noTarget = "target buffer could not be found";
    const char* const sourceRange = "count and offset out of range for source buffer";
    const char* const targetRange = "count and offset out of range for target buffer";
    const char* const notFound = "buffer identifier not found";
    const char* const outOfBounds = "Requested data range is out of bounds";
    const char* const noMemory = "Out of memory";
    const char* const negative = "An array cannot have a negative number of elements.";

    // One row: a call with these arguments fails like this.
    const auto call = [](auto operation, const char* kind, const char* message, auto... arguments) {
        return FailingCall{message, [=](auto& p) { return WithoutValue((p.*operation)(arguments...)); }, kind,
                           message};
    };
    using P = ParallelProgramInterface;
    const auto create = [&](const char* id, DataType type, Int count, const char* kind, const char* message) {
        return call(&P::CreateUniformBuffer, kind, message, id, type, count);
    };
    const auto resize = [&](const char* id, Int count, const char* kind, const char* message) {
        return call(&P::ResizeUniformBuffer, kind, message, id, count, true);
    };
    const auto store = [&](const char* id, const Data& data, const char* message) {
        return FailingCall{"Store", [=](auto& p) { return p.StoreUniformBufferData(id, data); }, argument,
                           message};
    };
    const auto storeUntyped = [&](const char* id, DataType type, const U32& elements, const char* message) {
        return FailingCall{"StoreUntyped",
                           [=](auto& p) { return p.StoreUniformBufferData(id, type, Untyped(elements)); },
                           argument, message};
    };
    const auto update = [&](const char* id, Int offset, const Data& data, const char* message) {
        return call(&P::UpdateUniformBufferData, argument, message, id, offset, data);
    };
    const auto copy = [&](const char* from, const char* to, Int count, Int source, Int target,
                          const char* message) {
        return call(&P::CopyBufferData, argument, message, from, to, count, source, target);
    };
    const auto copyBytes = [&](const char* from, const char* to, Int count, Int source, Int target,
                               const char* message) {
        return call(&P::CopyBufferDataBytes, argument, message, from, to, count, source, target);
    };
    const auto get = [&](const char* id, Int offset, Int count, const char* message) {
        return FailingCall{"Get",
                           [=](auto& p) { return WithoutValue(p.GetGlobalBufferData(id, offset, count)); },
                           argument, message};
    };
    ExpectFailures(
        *program,
        {create("a", f32, 1, argument, wrongType),
         create("a", f32, 100, argument, wrongType),
         create("a", u32, Max, memory, noMemory),
         create("new", u32, -1, argument, negative),
         create("new", u32, Min, argument, negative),
         create("new", u32, Max, memory, noMemory),
         create("new", {}, 1, argument, "An array needs an element type."),
         resize("new", 0, argument, "buffer for resize could not be found"),
         resize("a", 0, argument, "Buffer cannot be resized to 0 size."),
         resize("a", -1, argument, "Buffer cannot be resized to 0 size."),
         resize("a", Max, memory, noMemory),
         store("new", U32{}, empty),
         store("new", ArrayRef(), empty),
         store("new", UInt32{1}, "data is not an base array or block"),
         store("new", Data(), "data is not an base array or block"),
         store("a", "text", "data is not an base array or block"),
         store("a", BaseArray<Float64>(5), noFit),
         storeUntyped("new", u32, {}, empty),
         storeUntyped("a", f32, {}, empty),
         storeUntyped("a", f32, {1}, wrongType),
         update("new", 0, U32{}, noUpdate),
         update("new", -1, U32{1}, noUpdate),
         update("a", 9, U32{}, empty),
         update("a", 0, UInt32{1}, "data is not an base array or block"),
         update("a", 1, U32{1, 2, 3, 4, 5}, noFit),
         update("a", 5, U32{1}, noFit),
         update("a", -1, U32{1}, noFit),
         update("a", Max, U32{1}, noFit),
         update("a", Min, U32{1}, noFit),
         update("a", 0, BaseArray<Float64>{1, 2, 3}, noFit),
         copy("none", "missing", 99, 99, 99, noSource),
         copy("a", "none", 99, 99, 99, noTarget),
         copy("a", "f", 3, 3, 9, sourceRange),
         copy("a", "f", 1, Max, 0, sourceRange),
         copy("a", "f", Max, 1, 0, sourceRange),
         copy("a", "b", -1, 0, 0, sourceRange),
         copy("a", "b", 1, -1, 0, sourceRange),
         copy("a", "b", 4, 0, 0, targetRange),
         copy("a", "b", 1, 0, Max, targetRange),
         copy("a", "b", 1, 0, -1, targetRange),
         copy("a", "f", 3, 0, 3, targetRange),
         copy("a", "f", 1, 0, 0, "Buffers have mismatching data types"),
         copy("a", "f", 0, 0, 0, "Buffers have mismatching data types"),
         copyBytes("none", "missing", 99, 99, 99, noSource),
         copyBytes("a", "none", 99, 99, 99, noTarget),
         copyBytes("a", "b", 20, 1, 99, sourceRange),
         copyBytes("a", "b", Max, Max, 0, sourceRange),
         copyBytes("a", "b", -1, 0, 0, sourceRange),
         copyBytes("a", "b", 13, 0, 0, targetRange),
         copyBytes("a", "b", 1, 0, 12, targetRange),
         get("none", 0, -1, notFound),
         get("none", 0, 9, notFound),
         get("a", 0, 6, outOfBounds),
         get("a", 6, 0, outOfBounds),
         get("a", -1, 2, outOfBounds),
         get("a", 0, -2, outOfBounds),
         get("a", Max, 1, outOfBounds),
         {"GetGlobal", [](auto& p) { return WithoutValue(p.GetGlobalBufferData("none")); }, argument,
          notFound},
         {"GetKernel", [](auto& p) { return WithoutValue(p.GetKernelBufferData("a")); }, argument, notFound},
         {"GlobalLink", [](auto& p) { return WithoutValue(p.GetGlobalBufferLink("none")); },
          errorkind::NotFound, "no entry for key 'none'"},
         {"KernelLink", [](auto& p) { return WithoutValue(p.GetKernelBufferLink("a")); }, errorkind::NotFound,
          "no entry for key 'a'"},
         {"Swap", [](auto& p) { return p.SwapBuffers("a", "b"); }, errorkind::NotFound,
          "no entry for key 'a'"},
         {"Swap with none",
          [](auto& p) -> Result<void> {
              NORVI_TRY(p.SetBufferToActiveKernelSameId("a"));
              return p.SwapBuffers("a", "b");
          },
          errorkind::NotFound, "no entry for key 'b'"},
         {"SetGlobalLink", [](auto& p) { return p.SetGlobalBufferLink("new", UInt32{1}); }, state,
          "Data holds uint32, but ArrayRef* is needed."},
         {"SetKernelLink", [](auto& p) { return p.SetKernelBufferLink("new", ArrayRef()); }, state,
          "Data holds ArrayRef, but ArrayRef* is needed."},
         {"SetGlobalLink null", [](auto& p) { return p.SetGlobalBufferLink("new", (ArrayRef*)nullptr); },
          state, "The buffer link is null."}});
    EXPECT_EQ(Read<UInt32>("a"), (U32{1, 2, 3, 4, 5}));
    EXPECT_EQ(Read<UInt32>("b"), (U32{6, 7, 8}));
    EXPECT_EQ(Read<Float32>("f"), (BaseArray<Float32>{1, 2, 3, 4, 5}));
    EXPECT_FALSE(program->HasBuffer("new"));
}

TEST_F(BufferTest, CreateKeepsOrGrows) {
    for (const Int count : {Int{0}, Int{3}, Int{5}, Int{-1}}) {
        ASSERT_OK(program->CreateUniformBuffer("a", DataType::Of<UInt32>(), count));
        EXPECT_EQ(Read<UInt32>("a"), (U32{1, 2, 3, 4, 5}));
    }
    ASSERT_OK(program->CreateUniformBuffer("a", DataType::Of<UInt32>(), 7));
    U32 grown = Read<UInt32>("a");
    ASSERT_EQ(grown.size(), 7u);
    grown.resize(5);
    EXPECT_EQ(grown, (U32{1, 2, 3, 4, 5}));
    ASSERT_OK(program->ResizeUniformBuffer("a", 2, false));
    EXPECT_EQ(Read<UInt32>("a"), (U32{1, 2}));
    ASSERT_OK(program->CreateUniformBuffer("empty", DataType::Of<UInt32>(), 0));
    EXPECT_TRUE(program->HasBuffer("empty"));
    EXPECT_EQ(Read<UInt32>("empty"), U32{});
    ASSERT_OK(program->ResizeUniformBuffer("empty", 3, false));
    EXPECT_EQ(Read<UInt32>("empty").size(), 3u);
}

TEST_F(BufferTest, StoreReadsArraysBlocksAndArrayReferences) {
    U32 elements{9, 8, 7};
    const ArrayRef array = *ArrayRef::NewBaseArray(DataType::Of<UInt32>(), elements.data(), 3);
    const Data sources[] = {elements, Block<UInt32>(elements.data(), 3),
                            Block<const UInt32>(elements.data(), 3), Block<UInt32>(elements.data(), 3, 64),
                            array};
    for (const Data& source : sources) {
        ASSERT_OK(program->StoreUniformBufferData("new", source)) << source.GetType().ToString();
        EXPECT_EQ(Read<UInt32>("new"), elements);
        ASSERT_OK(program->StoreUniformBufferData("a", source));
        EXPECT_EQ(Read<UInt32>("a"), (U32{9, 8, 7, 4, 5})) << "keeps its size and tail";
        ASSERT_OK(program->UpdateUniformBufferData("a", 2, source));
        EXPECT_EQ(Read<UInt32>("a"), (U32{9, 8, 9, 8, 7})) << "fits to the end";
        ASSERT_OK(program->Reset());
        Store<UInt32>("a", {1, 2, 3, 4, 5});
    }
    // Stored under a new id the array is copied, not shared.
    ASSERT_OK(program->StoreUniformBufferData("new", array));
    ASSERT_OK(program->UpdateUniformBufferData("new", 0, U32{1}));
    EXPECT_EQ(*static_cast<UInt32*>(array->GetElement(0)), 9u);
}

TEST_F(BufferTest, StoreGrowsAndPassesOverWhatHoldsNothing) {
    ASSERT_OK(program->StoreUniformBufferData("b", U32{1, 2, 3, 4}));
    EXPECT_EQ(Read<UInt32>("b"), (U32{1, 2, 3, 4}));
    // An existing buffer takes nothing from an empty source, and another element type by its bytes.
    for (const Data& nothing : {Data(U32{}), Data(Block<UInt32>()), Data(ArrayRef())})
        EXPECT_OK(program->StoreUniformBufferData("b", nothing));
    EXPECT_OK(program->StoreUniformBufferData("b", std::make_shared<UInt32>(1u)));
    EXPECT_OK(program->UpdateUniformBufferData("b", 0, std::make_shared<UInt32>(1u)));
    EXPECT_OK(program->StoreUniformBufferData("new", std::make_shared<UInt32>(1u)));
    EXPECT_FALSE(program->HasBuffer("new"));
    EXPECT_EQ(Read<UInt32>("b"), (U32{1, 2, 3, 4}));
    ASSERT_OK(program->StoreUniformBufferData("b", BaseArray<Float32>{1.0f}));
    EXPECT_EQ(Read<UInt32>("b"), (U32{0x3f800000, 2, 3, 4}));
}

TEST_F(BufferTest, UntypedStoreTakesTheMemory) {
    const DataType u32 = DataType::Of<UInt32>();
    UntypedArray array = Untyped({1, 2, 3});
    ASSERT_OK(program->StoreUniformBufferData("new", u32, std::move(array)));
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(Read<UInt32>("new"), (U32{1, 2, 3}));
    ASSERT_OK(program->StoreUniformBufferData("new", u32, Untyped({4})));
    EXPECT_EQ(Read<UInt32>("new"), (U32{4, 2, 3}));
    ASSERT_OK(program->StoreUniformBufferData("new", u32, Untyped({5, 6, 7, 8})));
    EXPECT_EQ(Read<UInt32>("new"), (U32{5, 6, 7, 8}));
    // Neither a type nor the size of its elements is taken on trust.
    const DataType wide = DataType::Of<Float64>();
    EXPECT_TRUE(FailsWith(program->StoreUniformBufferData("wide", wide, Untyped({1, 2})),
                          errorkind::IllegalArgument, "The elements are not of the type's size."));
    EXPECT_FALSE(program->HasBuffer("wide"));
    ASSERT_OK(program->CreateUniformBuffer("wide", wide, 2));
    EXPECT_TRUE(FailsWith(program->StoreUniformBufferData("wide", wide, Untyped({1, 2})),
                          errorkind::IllegalArgument, "Wrong DataType passed!"));
    // The type is compared after the buffer has grown.
    array = Untyped({0, 0, 0, 0, 0});
    EXPECT_TRUE(FailsWith(program->StoreUniformBufferData("new", DataType::Of<Float32>(), std::move(array)),
                          errorkind::IllegalArgument, "Wrong DataType passed!"));
    EXPECT_TRUE(array.IsEmpty());
    const U32 grown = Read<UInt32>("new");
    ASSERT_EQ(grown.size(), 5u);
    EXPECT_EQ(U32(grown.begin(), grown.begin() + 4), (U32{5, 6, 7, 8}));
}

TEST_F(BufferTest, ElementsThatAreMoreThanTheirBytesAreRefused) {
    const DataType text = DataType::Of<String>();
    const BaseArray<String> texts{"longer than what a string holds without memory of its own"};
    ArrayRef array = *ArrayRef::NewBaseArray(text, texts.data(), 1);
    for (const char* id : {"a", "new"}) {
        UntypedArray untyped = *UntypedArray::New(sizeof(String), 1);
        new (untyped.GetFirst()) String(texts[0]);
        const Result<void> results[] = {program->CreateUniformBuffer(id, text, 1),
                                        program->StoreUniformBufferData(id, texts),
                                        program->StoreUniformBufferData(id, array),
                                        program->StoreUniformBufferData(id, text, std::move(untyped)),
                                        program->UpdateUniformBufferData(id, 0, texts),
                                        program->SetGlobalBufferLink(id, &array)};
        for (const auto& result : results) {
            const bool hasOwnMessage = &result == results && program->HasBuffer(id);
            EXPECT_TRUE(FailsWith(result, errorkind::IllegalArgument,
                                  hasOwnMessage ? "Wrong DataType passed!"
                                                : "a buffer cannot hold elements of type String"));
        }
    }
    EXPECT_FALSE(program->HasBuffer("new"));
    EXPECT_TRUE(FailsWith(program->StoreUniformBufferData("new", BaseArray<Bool>{true, false}),
                          errorkind::IllegalArgument, "data is not an base array or block"));
}

TEST_F(BufferTest, CopiesElementsAndBytes) {
    ASSERT_OK(program->CopyBufferData("a", "b", 2, 3, 1));
    EXPECT_EQ(Read<UInt32>("b"), (U32{6, 4, 5}));
    ASSERT_OK(program->CopyBufferData("a", "b", 0, 5, 3));
    ASSERT_OK(program->CopyBufferData("a", "a", 3, 0, 2));
    EXPECT_EQ(Read<UInt32>("a"), (U32{1, 2, 1, 2, 3}));
    ASSERT_OK(program->CopyBufferDataBytes("f", "b", 4, 0, 8));
    EXPECT_EQ(Read<UInt32>("b"), (U32{6, 4, 0x3f800000}));
    ASSERT_OK(program->CopyBufferDataBytes("a", "b", 2, 4, 2));
    EXPECT_EQ(Read<UInt32>("b"), (U32{0x00020006, 4, 0x3f800000}));
    ASSERT_OK(program->CopyBufferDataBytes("a", "b", 0, 20, 12));
}

TEST_F(BufferTest, ReadBackSharesUntilSomebodyWrites) {
    const auto read = [&] { return *program->GetGlobalBufferData("a")->Get<ArrayRef>(); };
    EXPECT_EQ(read()->GetElement(0), read()->GetElement(0)) << "nothing is copied";
    EXPECT_EQ(Elements<UInt32>(program->GetGlobalBufferData("a", 99, -1)), (U32{1, 2, 3, 4, 5}));
    EXPECT_EQ(Elements<UInt32>(program->GetGlobalBufferData("a", 5, 0)), U32{});
    EXPECT_EQ(Elements<UInt32>(program->GetGlobalBufferData("a", 1, 3)), (U32{2, 3, 4}));
    EXPECT_NE((*program->GetGlobalBufferData("a", 0, 5)->Get<ArrayRef>())->GetElement(0),
              read()->GetElement(0));
    AddKernel("doubler");
    ASSERT_OK(program->SetBufferToActiveKernel("a", "data"));
    ASSERT_OK(program->SetUniform("scale", UInt32{10}));
    ASSERT_OK(program->UpdateUniforms());
    const std::pair<const char*, std::function<Result<void>()>> writes[] = {
        {"dispatch", [&] { return program->DispatchKernel(5, 1, 1, false); }},
        {"3-D dispatch", [&] { return program->DispatchKernel(5, 2, 1, false); }},
        {"store", [&] { return program->StoreUniformBufferData("a", U32{1}); }},
        {"store untyped",
         [&] { return program->StoreUniformBufferData("a", DataType::Of<UInt32>(), Untyped({1})); }},
        {"update", [&] { return program->UpdateUniformBufferData("a", 0, U32{1}); }},
        {"copy", [&] { return program->CopyBufferData("b", "a", 1, 0, 0); }},
        {"copy bytes", [&] { return program->CopyBufferDataBytes("b", "a", 1, 0, 0); }},
        {"resize", [&] { return program->ResizeUniformBuffer("a", 5, false); }},
        {"delete", [&] { return program->DeleteUniformBuffer("a"); }}};
    for (const auto& [name, write] : writes) {
        ASSERT_OK(program->UpdateUniformBufferData("a", 0, U32{1, 2, 3, 4, 5}));
        const Result<Data> held = program->GetGlobalBufferData("a");
        ASSERT_OK(write()) << name;
        EXPECT_EQ(Elements<UInt32>(held), (U32{1, 2, 3, 4, 5})) << name;
        EXPECT_NE((*held->Get<ArrayRef>())->GetElement(0), read()->GetElement(0)) << name;
    }
}

TEST_F(BufferTest, LinksGiveOneBufferSeveralNames) {
    AddKernel("doubler");
    const Data link = *program->GetGlobalBufferLink("a");
    ASSERT_OK(program->SetGlobalBufferLink("again", link));
    ASSERT_OK(program->SetKernelBufferLink("data", link));
    EXPECT_EQ(*program->GetKernelBufferLink("data"), link);
    ASSERT_OK(program->SetUniform("scale", UInt32{2}));
    ASSERT_OK(program->UpdateUniforms());
    // Larger than before: the memory moves, the link does not, and the kernel finds it without being told.
    ASSERT_OK(program->ResizeUniformBuffer("again", 100, false));
    ASSERT_OK(program->DispatchKernel(100, 1, 1, false));
    EXPECT_EQ(Read<UInt32>("a")[99], 198u);
    EXPECT_EQ(*program->GetGlobalBufferLink("a"), link);
    // A link that is replaced leaves the other name alone.
    ASSERT_OK(program->SetGlobalBufferLink("a", *program->GetGlobalBufferLink("b")));
    EXPECT_EQ(Read<UInt32>("a"), (U32{6, 7, 8}));
    EXPECT_EQ(Read<UInt32>("again")[99], 198u);
}

TEST_F(BufferTest, LinkToAnEmptyReferenceIsNoBuffer) {
    AddKernel("doubler");
    ArrayRef nothing;
    ASSERT_OK(program->SetGlobalBufferLink("nothing", &nothing));
    ASSERT_OK(program->SetBufferToActiveKernel("nothing", "data"));
    EXPECT_TRUE(program->HasBuffer("nothing"));
    const char* const argument = errorkind::IllegalArgument;
    EXPECT_TRUE(FailsWith(program->CreateUniformBuffer("nothing", DataType::Of<UInt32>(), 1), argument,
                          "Buffer doesn't exist."));
    EXPECT_TRUE(
        FailsWith(program->StoreUniformBufferData("nothing", U32{1}), argument, "Buffer doesn't exist."));
    EXPECT_TRUE(FailsWith(program->GetGlobalBufferData("nothing"), argument, "buffer identifier not found"));
    const char* const emptyBlock = "stored data block has size 0";
    EXPECT_TRUE(FailsWith(program->UpdateUniforms(), errorkind::IllegalState, emptyBlock));
    EXPECT_TRUE(FailsWith(program->DispatchKernel(1, 1, 1, false), errorkind::IllegalState, emptyBlock));
}

TEST_F(BufferTest, SwapExchangesTheBindingsOfTheActiveKernelOnly) {
    AddKernel("doubler");
    ASSERT_OK(program->SetBufferToActiveKernel("a", "data"));
    ASSERT_OK(program->SetBufferToActiveKernelSameId("b"));
    ASSERT_OK(program->CopyKernel("k", "copy", false, {}));
    ASSERT_OK(program->SwapBuffers("data", "b"));
    EXPECT_EQ(Elements<UInt32>(program->GetKernelBufferData("data")), (U32{6, 7, 8}));
    EXPECT_EQ(Elements<UInt32>(program->GetKernelBufferData("b")), (U32{1, 2, 3, 4, 5}));
    EXPECT_EQ(Read<UInt32>("b"), (U32{6, 7, 8}));
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->DispatchKernel(3, 1, 1, false));
    EXPECT_EQ(Read<UInt32>("b"), (U32{0, 0, 0}));
    EXPECT_EQ(Read<UInt32>("a"), (U32{1, 2, 3, 4, 5}));
    ASSERT_OK(program->SwapBuffers("b", "b"));
    program->SetActiveKernel("copy");
    EXPECT_EQ(Elements<UInt32>(program->GetKernelBufferData("data")), (U32{1, 2, 3, 4, 5}));
}

TEST_F(BufferTest, DeletedBufferStopsItsKernelsUntilItComesBack) {
    AddKernel("doubler");
    ASSERT_OK(program->SetBufferToActiveKernel("a", "data"));
    ASSERT_OK(program->UpdateUniforms());
    for (const char* id : {"none", "a", "a"})
        ASSERT_OK(program->DeleteUniformBuffer(id));
    EXPECT_TRUE(program->HasBuffer("a"));
    const FailingCall update{"update", [](auto& p) { return p.UpdateUniforms(); }, errorkind::IllegalState,
                             "stored data block has size 0"};
    const auto dispatch = [&](UInt32 y) {
        return FailingCall{"dispatch", [y](auto& p) { return p.DispatchKernel(1, y, 1, false); }, update.kind,
                           update.message};
    };
    ExpectFailures(*program, {dispatch(1), dispatch(2), update, dispatch(1)});
    ASSERT_OK(program->CreateUniformBuffer("a", DataType::Of<UInt32>(), 2));
    ASSERT_OK(program->SetUniform("scale", UInt32{3}));
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->DispatchKernel(2, 1, 1, false));
    EXPECT_EQ(Read<UInt32>("a"), (U32{0, 3}));
}

} // namespace
} // namespace norvi
