// What tests of the program on the processor share.
#pragma once

#include <functional>
#include <list>

#include <norvi/host/module.h>
#include <norvi/host/thread_services.h>

#include "core/parallel_for.h"
#include "core/parallelprogram_cpu_impl.h"
#include "support/results.h"

namespace norvi {

/// Works with `count` workers while it lives.
class UseWorkers {
  public:
    explicit UseWorkers(Int count) { JobQueue::SetThreadCount(count); }
    ~UseWorkers() { JobQueue::SetThreadCount(0); }
    UseWorkers(const UseWorkers&) = delete;
    UseWorkers& operator=(const UseWorkers&) = delete;
};

/// Hands every parallel loop to the workers, in chunks of `chunkSize` (0: as the loop likes), while it lives.
class ShareAllWork {
  public:
    explicit ShareAllWork(UInt32 chunkSize = 0) {
        SetLoopTuning({.chunkSize = chunkSize, .beginOnCallersThread = false});
    }
    ~ShareAllWork() { SetLoopTuning({}); }
    ShareAllWork(const ShareAllWork&) = delete;
    ShareAllWork& operator=(const ShareAllWork&) = delete;
};

/// Enters kernel classes under their file names while it lives.
class KernelClasses {
  public:
    KernelClasses() { g_norvi.SetInitializer(&ResolveDeclared); }
    KernelClasses(const KernelClasses&) = delete;
    KernelClasses& operator=(const KernelClasses&) = delete;
    ~KernelClasses() {
        for (const auto& entry : classes_)
            Registry::Get(registryid::KernelClasses).EraseEntry(entry.GetId());
    }

    void Enter(const char* name, Class::Factory factory) {
        const Class& entry = classes_.emplace_back(name, factory);
        EXPECT_OK(Registry::Get(registryid::KernelClasses).InsertEntry(name, &entry));
    }
    template <typename KernelClass>
    void Enter(const char* name) {
        Enter(name, &MakeObject<KernelClass>);
    }

  private:
    std::list<Class> classes_;
};

/// A program, and the short form of what tests do with it again and again.
class ProgramTest : public testing::Test {
  protected:
    ProgramTest() { EXPECT_OK(program->Init({}, {}, 0, false)); }

    template <typename T>
    void Store(const char* id, BaseArray<T> elements) {
        ASSERT_OK(program->StoreUniformBufferData(id, elements));
    }
    template <typename T>
    void StoreAndBind(const char* id, BaseArray<T> elements) {
        Store(id, std::move(elements));
        ASSERT_OK(program->SetBufferToActiveKernelSameId(id));
    }
    template <typename T>
    static BaseArray<T> Elements(const Result<Data>& data) {
        EXPECT_OK(data);
        const ArrayRef* array = data.IsOk() ? data->template Get<ArrayRef>() : nullptr;
        if (!array || (*array)->GetType() != DataType::Of<T>()) {
            ADD_FAILURE() << "no array of " << DataType::Of<T>().ToString();
            return {};
        }
        const UntypedBlock block = (*array)->GetBlock(0);
        return BaseArray<T>(static_cast<T*>(block.data), static_cast<T*>(block.data) + block.count);
    }
    template <typename T>
    BaseArray<T> Read(const char* id) {
        return Elements<T>(program->GetGlobalBufferData(id));
    }
    /// Adds the kernel "k" of the class `file`.
    void AddKernel(const char* file) { ASSERT_OK(program->AddKernel("k", file, false, {})); }

    KernelClasses classes;
    std::shared_ptr<ParallelProgramInterface> program = std::make_shared<ParallelProgramCPUImpl>();
};

/// A call that must fail, in a table.
struct FailingCall {
    const char* name;
    std::function<Result<void>(ParallelProgramInterface&)> call;
    const char* kind;
    String message;
};

inline void ExpectFailures(ParallelProgramInterface& program, const BaseArray<FailingCall>& calls) {
    for (const FailingCall& row : calls)
        EXPECT_TRUE(FailsWith(row.call(program), row.kind, row.message)) << row.name;
}

} // namespace norvi
