#include "core/cpu_yield.h"

#include <gtest/gtest.h>

namespace norvi {
namespace {

TEST(CpuYield, CallsTheSlotWithTheStateOfTheWait) {
    static BaseArray<Int32> states;
    CpuYield wait, otherWait;
    wait(); // an empty slot yields the processor
    g_CpuYieldDelegate.function = [](Int32 spinLimit, Int32& state) {
        EXPECT_EQ(spinLimit, 0x7FFFFFFF);
        states.push_back(state);
        state += 5;
    };
    wait();
    otherWait();
    wait();
    g_CpuYieldDelegate.function = nullptr;
    EXPECT_EQ(states, (BaseArray<Int32>{0, 0, 5}));
}

} // namespace
} // namespace norvi
