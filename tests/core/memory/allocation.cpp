#include "core/memory/allocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace norvi::allocation {

namespace {

std::atomic<Int> g_calls{0};
std::atomic<Int> g_living{0};
std::atomic<Int> g_allowed{-1}; ///< negative: all
std::atomic<bool> g_forGood{false};
std::atomic<bool> g_hasFailed{false};

bool MayAllocate() {
    Int allowed = g_allowed.load();
    while (allowed > 0 && !g_allowed.compare_exchange_weak(allowed, allowed - 1)) {
    }
    if (allowed != 0)
        return true;
    g_hasFailed = true;
    if (!g_forGood)
        g_allowed = -1;
    return false;
}

void* Allocate(std::size_t size, std::size_t alignment) noexcept {
    ++g_calls;
    if (!MayAllocate())
        return nullptr;
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* memory = rounded < size ? nullptr : std::aligned_alloc(alignment, rounded);
    g_living += memory != nullptr;
    return memory;
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    if (void* memory = Allocate(size, alignment))
        return memory;
    throw std::bad_alloc();
}

void Free(void* memory) noexcept {
    g_living -= memory != nullptr;
    std::free(memory);
}

} // namespace

Int GetCalls() {
    return g_calls;
}
Int GetLiving() {
    return g_living;
}
void FailAfter(Int count, bool forGood) {
    g_hasFailed = false;
    g_forGood = forGood;
    g_allowed = count;
}
bool StopFailing() {
    g_allowed = -1;
    return g_hasFailed;
}

} // namespace norvi::allocation

using norvi::allocation::Allocate;
using norvi::allocation::AllocateOrThrow;
using norvi::allocation::Free;

void* operator new(std::size_t size) {
    return AllocateOrThrow(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    Free(memory);
}
