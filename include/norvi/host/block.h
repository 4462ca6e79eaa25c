// A view of memory that somebody else owns.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// Pointer, element count and distance between elements in bytes. All Blocks have this one layout, whatever
/// their element, so that a buffer of a run-time type can be handed to a kernel's typed member.
template <typename T>
class Block {
  public:
    constexpr Block() = default;
    constexpr Block(T* data, Int count) : data_(data), count_(count), stride_(sizeof(T)) {}
    constexpr Block(T* data, Int count, Int stride) : data_(data), count_(count), stride_(stride) {}

    constexpr T* GetFirst() const { return data_; }
    constexpr Int GetCount() const { return count_; }
    constexpr Int GetStride() const { return stride_; }
    /// Requires a stride of sizeof(T) and 0 <= index < count.
    constexpr T& operator[](Int index) const { return data_[index]; }
    constexpr T* begin() const { return data_; }
    constexpr T* end() const { return data_ + count_; }

  private:
    T* data_ = nullptr;
    Int count_ = 0;
    Int stride_ = 0;
};

/// The same view of elements whose type is known at run time only.
struct UntypedBlock {
    void* data = nullptr;
    Int count = 0;
    Int stride = 0;
};

static_assert(sizeof(Block<Float32>) == sizeof(UntypedBlock));

} // namespace norvi
