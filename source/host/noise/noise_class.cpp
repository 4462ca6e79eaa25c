// The noise classes: one object type, driven by a row of the table, entered in the registries when the host
// is loaded.

#include <utility>

#include <norvi/host/log.h>
#include <norvi/host/registry.h>

#include "noise_table.h"

namespace norvi {

namespace {

class NoiseGenerator final : public NoiseInterface {
  public:
    explicit NoiseGenerator(const NoiseKind& kind) : kind_(kind) {}

    Result<void> Init(Int32 seed, Int32 permutationTablePower, const DataDictionary&) noexcept override {
        return CatchOutOfMemory([&]() -> Result<void> {
            if (permutationTablePower < 1 || permutationTablePower > 16)
                return IllegalArgumentError(
                    Format("the permutation table power is @, not 1 to 16", permutationTablePower));
            seed_ = static_cast<UInt32>(seed);
            mask_ = (1u << permutationTablePower) - 1;
            return OK;
        });
    }

    Float Noise(const Vector32& position, Float time) const noexcept override {
        return kind_.evaluate(position, time, seed_, mask_);
    }

    void* QueryInterface(const Id& interfaceId) override {
        return interfaceId == NoiseInterface::InterfaceId ? static_cast<NoiseInterface*>(this) : nullptr;
    }

  private:
    const NoiseKind& kind_;
    UInt32 seed_ = 0;
    UInt32 mask_ = 1023;
};

template <std::size_t row>
ObjectRef MakeNoise() {
    return std::make_shared<NoiseGenerator>(noiseKinds[row]);
}

void Enter(const char* registryId, const char* id, const Class* noiseClass) {
    if (Result<void> entered = Registry::Get(registryId).InsertEntry(id, noiseClass); !entered)
        LogCritical(entered.GetError().GetMessage());
}

template <std::size_t... rows>
bool EnterAll(std::index_sequence<rows...>) {
    // Never destroyed, as the registries are not: code that runs while the process ends may still look them
    // up.
    static const auto* classes = new std::array{Class(noiseKinds[rows].info.id, MakeNoise<rows>)...};
    for (const Class& noiseClass : *classes) {
        Enter(registryid::NoiseClasses, noiseClass.GetId().ToString().c_str(), &noiseClass);
        Enter(registryid::Classes, noiseClass.GetId().ToString().c_str(), &noiseClass);
    }
    return true;
}

} // namespace

[[maybe_unused]] static const bool noiseClassesEntered =
    EnterAll(std::make_index_sequence<std::tuple_size_v<decltype(noiseKinds)>>());

} // namespace norvi
