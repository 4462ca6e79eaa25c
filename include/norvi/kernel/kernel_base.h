// What all kernels have in common.
#pragma once

#include <norvi/kernelinterface.h>

namespace norvi {

/// The base of kernel classes: keeps the parameter map, the work group size, the granularity and the
/// threshold. A kernel class derives from KernelOf<itself>, adds its members, and in `Init` enters them and
/// its work group size. Everything here is inline, so that kernel modules need nothing of the module that
/// runs them.
class KernelBase : public KernelInterface {
  public:
    KernelBase() = default;

    Result<void> Set(CString paramName, const void* data) noexcept override {
        return CatchOutOfMemory([&]() -> Result<void> {
            const auto found = parameters_.find(paramName);
            if (found == parameters_.end())
                return OK;
            const KernelParameter& parameter = found->second;
            if (parameter.type->kind == DataTypeKind::Pointer)
                *static_cast<const void**>(parameter.address) = data;
            else
                parameter.type->operations.assign(parameter.address, data);
            return OK;
        });
    }

    const KernelParameterMap& GetKernelParameterMap() const noexcept override { return parameters_; }
    const Vec3<UInt32>& GetKernelWorkGroupSize() const noexcept override { return workGroupSize_; }
    const Int& GetSingleThreadedThreshold() const noexcept override { return singleThreadedThreshold_; }
    const Int& GetGranularity() const noexcept override { return granularity_; }

  protected:
    /// A copy takes over sizes and limits. Its parameter map is filled by its own Init, so that it holds
    /// addresses inside the copy and never inside the source.
    KernelBase(const KernelBase& other)
        : KernelInterface(other),
          workGroupSize_(other.workGroupSize_),
          granularity_(other.granularity_),
          singleThreadedThreshold_(other.singleThreadedThreshold_) {}
    KernelBase& operator=(const KernelBase&) = delete;

    /// Makes `member` settable under `name`.
    template <typename Member>
    void AddParameter(const CString& name, Member& member) {
        AddParameter(name, DataType::Of<Member>(), &member);
    }
    void AddParameter(const CString& name, DataType type, void* address) {
        parameters_.insert_or_assign(name, KernelParameter{type, address});
    }
    void SetWorkGroupSize(const Vec3<UInt32>& size) { workGroupSize_ = size; }
    void SetGranularity(Int granularity) { granularity_ = granularity; }
    void SetSingleThreadedThreshold(Int threshold) { singleThreadedThreshold_ = threshold; }

  private:
    KernelParameterMap parameters_;
    Vec3<UInt32> workGroupSize_;
    Int granularity_ = 16;
    Int singleThreadedThreshold_ = 0;
};

/// KernelBase with copying and interface queries for the class `Derived`, which must be copyable. A `Derived`
/// that also implements KernelRangeInterface is run in ranges.
template <typename Derived>
class KernelOf : public KernelBase {
  public:
    void* QueryInterface(const Id& interfaceId) override {
        if (interfaceId == KernelInterface::InterfaceId)
            return static_cast<KernelInterface*>(this);
        if constexpr (std::is_base_of_v<KernelRangeInterface, Derived>)
            if (interfaceId == KernelRangeInterface::InterfaceId)
                return static_cast<KernelRangeInterface*>(static_cast<Derived*>(this));
        return nullptr;
    }

    Result<ObjectRef> CopyInstance() const noexcept override {
        return CatchOutOfMemory([&]() -> Result<ObjectRef> {
            auto copy = std::make_shared<Derived>(static_cast<const Derived&>(*this));
            NORVI_TRY(copy->Init());
            return ObjectRef(copy);
        });
    }
};

} // namespace norvi
