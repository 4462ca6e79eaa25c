// Arrays of a run-time element type.
#pragma once

#include <norvi/host/data.h>

namespace norvi {

/// Memory for `count` elements that owns the storage but not the elements: whoever takes it over constructs,
/// moves or destroys them as values of the type that he knows. The way in which an array of a type that is
/// known at run time only changes hands by move.
class UntypedArray {
  public:
    UntypedArray() = default;
    UntypedArray(UntypedArray&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          count_(std::exchange(other.count_, 0)),
          elementSize_(other.elementSize_) {}
    UntypedArray& operator=(UntypedArray&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(count_, other.count_);
        std::swap(elementSize_, other.elementSize_);
        return *this;
    }
    ~UntypedArray();

    /// Uninitialised memory for `count` elements of `elementSize` bytes, aligned to a cache line.
    static Result<UntypedArray> New(Int elementSize, Int count) noexcept;

    void* GetFirst() const { return data_; }
    Int GetCount() const { return count_; }
    Int GetElementSize() const { return elementSize_; }
    Bool IsEmpty() const { return count_ == 0; }

  private:
    void* data_ = nullptr;
    Int count_ = 0;
    Int elementSize_ = 0;
};

/// An array of one element type, in one continuous block aligned to a cache line. Elements of trivial types
/// are left uninitialised by Resize, others are default constructed. Held and shared through ArrayRef.
class Array {
  public:
    explicit Array(DataType elementType) : type_(elementType) {}
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() { Flush(); }

    DataType GetType() const { return type_; }
    Int GetCount() const { return count_; }
    Int GetByteCount() const { return count_ * type_->size; }

    /// Changes the number of elements, 0 included; the elements that remain keep their values. A negative
    /// count is an illegal argument, a failed allocation leaves the array as it was.
    Result<void> Resize(Int count) noexcept;
    /// Drops all elements and frees the storage.
    void Flush() noexcept;
    /// The continuous stretch that begins at `index`; empty at or behind the end.
    UntypedBlock GetBlock(Int index) const;
    /// Requires 0 <= index < count.
    void* GetElement(Int index) const {
        return static_cast<std::byte*>(data_.GetFirst()) + index * type_->size;
    }

  private:
    friend class ArrayRef;

    void DestroyElements(Int from, Int to) noexcept;

    DataType type_;
    UntypedArray data_; ///< its count is the capacity
    Int count_ = 0;
};

/// Counted copy-on-write reference to an Array. Copies share the array; MakeWritable gives this reference an
/// array of its own if it is shared. A reference may be empty.
class ArrayRef {
  public:
    ArrayRef() = default;

    /// An empty array of `elementType`.
    static Result<ArrayRef> NewBaseArray(DataType elementType) noexcept;
    /// An array with copies of the `count` elements at `elements`.
    static Result<ArrayRef> NewBaseArray(DataType elementType, const void* elements, Int count) noexcept;
    /// An array that takes over storage and elements, which must be of the type's size.
    static Result<ArrayRef> NewBaseArray(DataType elementType, UntypedArray&& elements) noexcept;

    explicit operator bool() const { return array_ != nullptr; }
    const Array* operator->() const { return array_.get(); }
    const Array& operator*() const { return *array_; }
    Bool IsShared() const { return array_.use_count() > 1; }

    /// The array, for writing: copied first if others hold it too. Requires a reference that is not empty.
    Result<Array*> MakeWritable() noexcept;

    bool operator==(const ArrayRef&) const = default;

  private:
    std::shared_ptr<Array> array_;
};

} // namespace norvi
