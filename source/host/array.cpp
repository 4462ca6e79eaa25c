#include <norvi/host/array.h>

#include <algorithm>
#include <cstring>

namespace norvi {

namespace {

// Vector loads of any width then start on a boundary, and two arrays never share a cache line.
constexpr std::align_val_t StorageAlignment{64};

void CopyElements(DataType type, void* target, const void* source, Int count) {
    if (count == 0)
        return;
    const std::size_t size = static_cast<std::size_t>(type->size);
    if (type->isTrivial) {
        std::memcpy(target, source, static_cast<std::size_t>(count) * size);
        return;
    }
    auto* to = static_cast<std::byte*>(target);
    auto* from = static_cast<const std::byte*>(source);
    Int done = 0;
    try {
        for (; done < count; ++done)
            type->operations.copyConstruct(to + done * type->size, from + done * type->size);
    } catch (...) {
        while (done-- > 0)
            type->operations.destruct(to + done * type->size);
        throw;
    }
}

void ConstructElements(DataType type, void* target, Int count) {
    auto* to = static_cast<std::byte*>(target);
    Int done = 0;
    try {
        for (; done < count; ++done)
            type->operations.construct(to + done * type->size);
    } catch (...) {
        while (done-- > 0)
            type->operations.destruct(to + done * type->size);
        throw;
    }
}

Failure NegativeCountError() {
    return CatchOutOfMemory([]() -> Failure {
        return IllegalArgumentError("An array cannot have a negative number of elements.");
    });
}

} // namespace

UntypedArray::~UntypedArray() {
    ::operator delete(data_, StorageAlignment);
}

Result<UntypedArray> UntypedArray::New(Int elementSize, Int count) noexcept {
    if (count < 0)
        return NegativeCountError();
    Int bytes = 0;
    if (__builtin_mul_overflow(elementSize, count, &bytes))
        return OutOfMemoryError();
    UntypedArray array;
    if (bytes > 0) {
        array.data_ = ::operator new(static_cast<std::size_t>(bytes), StorageAlignment, std::nothrow);
        if (!array.data_)
            return OutOfMemoryError();
    }
    array.count_ = count;
    array.elementSize_ = elementSize;
    return array;
}

Result<void> Array::Resize(Int count) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        if (count < 0)
            return NegativeCountError();
        if (count > data_.GetCount()) {
            NORVI_TRY_VALUE(grown, UntypedArray::New(type_->size, count));
            CopyElements(type_, grown.GetFirst(), data_.GetFirst(), count_);
            DestroyElements(0, count_);
            data_ = std::move(grown);
        }
        DestroyElements(count, count_);
        if (!type_->isTrivial && count > count_)
            ConstructElements(type_, GetElement(count_), count - count_);
        count_ = count;
        return OK;
    });
}

void Array::Flush() noexcept {
    DestroyElements(0, count_);
    count_ = 0;
    data_ = {};
}

UntypedBlock Array::GetBlock(Int index) const {
    if (index < 0 || index >= count_)
        return {nullptr, 0, type_->size};
    return {GetElement(index), count_ - index, type_->size};
}

void Array::DestroyElements(Int from, Int to) noexcept {
    if (type_->isTrivial)
        return;
    for (Int index = from; index < to; ++index)
        type_->operations.destruct(GetElement(index));
}

Result<ArrayRef> ArrayRef::NewBaseArray(DataType elementType) noexcept {
    return CatchOutOfMemory([&]() -> Result<ArrayRef> {
        if (!elementType || elementType->size < 1)
            return IllegalArgumentError("An array needs an element type.");
        if (!elementType->isTrivial &&
            (!elementType->operations.construct || !elementType->operations.copyConstruct))
            return IllegalArgumentError(Format("An array cannot hold elements of the type @.", elementType));
        ArrayRef reference;
        reference.array_ = std::make_shared<Array>(elementType);
        return reference;
    });
}

Result<ArrayRef> ArrayRef::NewBaseArray(DataType elementType, const void* elements, Int count) noexcept {
    return CatchOutOfMemory([&]() -> Result<ArrayRef> {
        NORVI_TRY_VALUE(reference, NewBaseArray(elementType));
        NORVI_TRY_VALUE(storage, UntypedArray::New(elementType->size, count));
        if (count > 0)
            CopyElements(elementType, storage.GetFirst(), elements, count);
        reference.array_->data_ = std::move(storage);
        reference.array_->count_ = count;
        return std::move(reference);
    });
}

Result<ArrayRef> ArrayRef::NewBaseArray(DataType elementType, UntypedArray&& elements) noexcept {
    NORVI_TRY_VALUE(reference, NewBaseArray(elementType));
    if (elements.GetElementSize() != elementType->size)
        return IllegalArgumentError("The elements are not of the type's size.");
    reference.array_->count_ = elements.GetCount();
    reference.array_->data_ = std::move(elements);
    return std::move(reference);
}

Result<Array*> ArrayRef::MakeWritable() noexcept {
    if (!IsShared()) {
        // Others may have read the array on other threads before they let go of it.
        std::atomic_thread_fence(std::memory_order_acquire);
    } else {
        NORVI_TRY_VALUE(copy, NewBaseArray(array_->GetType(), array_->GetElement(0), array_->GetCount()));
        *this = std::move(copy);
    }
    return array_.get();
}

} // namespace norvi
