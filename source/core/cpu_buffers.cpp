// Global buffers and their links to kernels.
#include <algorithm>

#include "core/buffer_source.h"
#include "core/byte_range.h"
#include "core/parallelprogram_cpu_impl.h"

namespace norvi {

namespace {

constexpr const char* EmptyBufferMessage =
    "Empty buffers are not allowed to be added. Please resize to the required size before storing.";

std::byte* ByteAt(const Array& array, Int byteOffset) {
    return static_cast<std::byte*>(array.GetElement(0)) + byteOffset;
}

} // namespace

Result<ArrayRef*> ParallelProgramCPUImpl::FindBuffer(const InternedId& attr, const char* message) const {
    if (const Data* link = globalBuffers_.Find(attr))
        if (ArrayRef* const* array = link->Get<ArrayRef*>(); array && *array && **array)
            return *array;
    return IllegalArgumentError(message);
}

/// Enters `array` as the new global buffer `attr`. The node stays without a table entry if entering fails.
Result<void> ParallelProgramCPUImpl::AppendBuffer(const InternedId& attr, Result<ArrayRef> array) {
    NORVI_TRY(array);
    bufferStore_.push_back(std::move(*array));
    globalBuffers_.Set(attr, &bufferStore_.back());
    return OK;
}

Result<void> ParallelProgramCPUImpl::CreateUniformBuffer(const InternedId& attr, DataType dataType,
                                                         Int count) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        if (HasBuffer(attr)) {
            NORVI_TRY_VALUE(array, FindBuffer(attr, "Buffer doesn't exist."));
            if ((*array)->GetType() != dataType)
                return IllegalArgumentError("Wrong DataType passed!");
            if ((*array)->GetCount() >= count)
                return OK;
            return ResizeUniformBuffer(attr, count, false);
        }
        NORVI_TRY(CheckBufferElement(dataType));
        NORVI_TRY_VALUE(array, ArrayRef::NewBaseArray(dataType));
        NORVI_TRY_VALUE(writable, array.MakeWritable());
        NORVI_TRY(writable->Resize(count));
        return AppendBuffer(attr, std::move(array));
    });
}

Result<void> ParallelProgramCPUImpl::ResizeUniformBuffer(const InternedId& attr, Int count, Bool) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(array, FindBuffer(attr, "buffer for resize could not be found"));
        if (count < 1)
            return IllegalArgumentError("Buffer cannot be resized to 0 size.");
        NORVI_TRY_VALUE(writable, array->MakeWritable());
        return writable->Resize(count);
    });
}

Result<void> ParallelProgramCPUImpl::StoreUniformBufferData(const InternedId& attr,
                                                            const Data& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(source, ReadBufferSource(data));
        if (!source.isStorable)
            return OK;
        if (!HasBuffer(attr)) {
            if (source.count < 1)
                return IllegalArgumentError(EmptyBufferMessage);
            return AppendBuffer(attr, ArrayRef::NewBaseArray(source.elementType, source.first, source.count));
        }
        NORVI_TRY_VALUE(array, FindBuffer(attr, "Buffer doesn't exist."));
        NORVI_TRY_VALUE(room, MakeRoom(*array, source.count, source.elementType));
        CopyBytes(source.first, ByteAt(*room, 0), source.GetByteCount());
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::StoreUniformBufferData(const InternedId& attr, DataType dataType,
                                                            UntypedArray&& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        // Whatever happens, the storage is gone when the operation returns.
        UntypedArray elements = std::move(data);
        if (elements.GetCount() < 1)
            return IllegalArgumentError(EmptyBufferMessage);
        if (auto suits = CheckBufferElement(dataType); !suits) {
            const Bool isTheirType = elements.GetElementSize() == dataType->size;
            for (Int index = 0; isTheirType && index < elements.GetCount(); ++index)
                dataType->operations.destruct(static_cast<std::byte*>(elements.GetFirst()) +
                                              index * dataType->size);
            return suits;
        }
        if (!HasBuffer(attr))
            return AppendBuffer(attr, ArrayRef::NewBaseArray(dataType, std::move(elements)));
        NORVI_TRY_VALUE(array, FindBuffer(attr, "Buffer doesn't exist."));
        if (elements.GetCount() > (*array)->GetCount())
            NORVI_TRY(ResizeUniformBuffer(attr, elements.GetCount(), false));
        if ((*array)->GetType() != dataType || elements.GetElementSize() != dataType->size)
            return IllegalArgumentError("Wrong DataType passed!");
        NORVI_TRY_VALUE(writable, array->MakeWritable());
        CopyBytes(elements.GetFirst(), writable->GetElement(0), elements.GetCount() * dataType->size);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::UpdateUniformBufferData(const InternedId& attr, Int offset,
                                                             const Data& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(source, ReadBufferSource(data));
        if (!source.isStorable)
            return OK;
        NORVI_TRY_VALUE(array, FindBuffer(attr, "buffer for update could not be found"));
        if (source.count < 1)
            return IllegalArgumentError(EmptyBufferMessage);
        const Int size = source.elementType->size;
        Int byteOffset = 0;
        if (!Fits(offset, source.count, (*array)->GetCount()) ||
            __builtin_mul_overflow(offset, size, &byteOffset) ||
            !Fits(byteOffset, source.GetByteCount(), (*array)->GetByteCount()))
            return IllegalArgumentError("Data update does not fit into existing buffer");
        NORVI_TRY_VALUE(writable, array->MakeWritable());
        CopyBytes(source.first, ByteAt(*writable, byteOffset), source.GetByteCount());
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::CopyBufferData(const InternedId& sourceAttr,
                                                    const InternedId& targetAttr, Int count, Int sourceOffset,
                                                    Int targetOffset) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(source, FindBuffer(sourceAttr, "source buffer could not be found"));
        NORVI_TRY_VALUE(target, FindBuffer(targetAttr, "target buffer could not be found"));
        if (!Fits(sourceOffset, count, (*source)->GetCount()))
            return IllegalArgumentError("count and offset out of range for source buffer");
        if (!Fits(targetOffset, count, (*target)->GetCount()))
            return IllegalArgumentError("count and offset out of range for target buffer");
        if ((*source)->GetType() != (*target)->GetType())
            return IllegalArgumentError("Buffers have mismatching data types");
        const Int size = (*source)->GetType()->size;
        return CopyBetween(*source, *target, count * size, sourceOffset * size, targetOffset * size);
    });
}

Result<void> ParallelProgramCPUImpl::CopyBufferDataBytes(const InternedId& sourceAttr,
                                                         const InternedId& targetAttr, Int bytesCount,
                                                         Int sourceBytesOffset,
                                                         Int targetBytesOffset) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(source, FindBuffer(sourceAttr, "source buffer could not be found"));
        NORVI_TRY_VALUE(target, FindBuffer(targetAttr, "target buffer could not be found"));
        if (!Fits(sourceBytesOffset, bytesCount, (*source)->GetByteCount()))
            return IllegalArgumentError("count and offset out of range for source buffer");
        if (!Fits(targetBytesOffset, bytesCount, (*target)->GetByteCount()))
            return IllegalArgumentError("count and offset out of range for target buffer");
        return CopyBetween(*source, *target, bytesCount, sourceBytesOffset, targetBytesOffset);
    });
}

/// Copies a stretch that fits both.
Result<void> ParallelProgramCPUImpl::CopyBetween(const ArrayRef& source, ArrayRef& target, Int bytes,
                                                 Int sourceOffset, Int targetOffset) {
    if (bytes < 1)
        return OK;
    NORVI_TRY_VALUE(writable, target.MakeWritable());
    CopyBytes(ByteAt(*source, sourceOffset), ByteAt(*writable, targetOffset), bytes);
    return OK;
}

/// The array of an existing buffer, writable and with at least `count` elements.
Result<Array*> ParallelProgramCPUImpl::MakeRoom(ArrayRef& array, Int count, DataType elementType) {
    // The types are not compared, but elements larger than the buffer's own must not run past its end.
    const Int newCount = std::max(array->GetCount(), count);
    if (elementType && !Fits(0, count * elementType->size, newCount * array->GetType()->size))
        return IllegalArgumentError("Data update does not fit into existing buffer");
    NORVI_TRY_VALUE(writable, array.MakeWritable());
    if (writable->GetCount() < count)
        NORVI_TRY(writable->Resize(count));
    return writable;
}

Result<Data> ParallelProgramCPUImpl::GetGlobalBufferData(const InternedId& attr) noexcept {
    return CatchOutOfMemory([&]() -> Result<Data> {
        NORVI_TRY_VALUE(array, FindBuffer(attr, "buffer identifier not found"));
        return Data(*array);
    });
}

Result<Data> ParallelProgramCPUImpl::GetGlobalBufferData(const InternedId& attr, Int offset,
                                                         Int count) noexcept {
    return CatchOutOfMemory([&]() -> Result<Data> {
        NORVI_TRY_VALUE(array, FindBuffer(attr, "buffer identifier not found"));
        if (count == -1)
            return Data(*array);
        if (!Fits(offset, count, (*array)->GetCount()))
            return IllegalArgumentError("Requested data range is out of bounds");
        NORVI_TRY_VALUE(copy,
                        ArrayRef::NewBaseArray((*array)->GetType(), (*array)->GetElement(offset), count));
        return Data(std::move(copy));
    });
}

Result<Data> ParallelProgramCPUImpl::GetKernelBufferData(const InternedId& attr) noexcept {
    return CatchOutOfMemory([&]() -> Result<Data> {
        NORVI_TRY(CheckActiveKernel());
        const Data* link = activeKernel_->bufferBindings.Find(attr);
        ArrayRef* const* array = link ? link->Get<ArrayRef*>() : nullptr;
        if (!array)
            return IllegalArgumentError("buffer identifier not found");
        return Data(**array);
    });
}

Result<Data> ParallelProgramCPUImpl::GetGlobalBufferLink(const InternedId& attr) noexcept {
    return CatchOutOfMemory([&] { return globalBuffers_.Get(attr); });
}

Result<Data> ParallelProgramCPUImpl::GetKernelBufferLink(const InternedId& attr) noexcept {
    return CatchOutOfMemory([&]() -> Result<Data> {
        NORVI_TRY(CheckActiveKernel());
        return activeKernel_->bufferBindings.Get(attr);
    });
}

Result<void> ParallelProgramCPUImpl::SetGlobalBufferLink(const InternedId& attr, const Data& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckLink(data));
        globalBuffers_.Set(attr, data);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::SetKernelBufferLink(const InternedId& attr, const Data& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        NORVI_TRY(CheckLink(data));
        activeKernel_->bufferBindings.Set(attr, data);
        return OK;
    });
}

/// A link must be the address of a buffer.
Result<void> ParallelProgramCPUImpl::CheckLink(const Data& data) {
    NORVI_TRY_VALUE(array, data.GetAs<ArrayRef*>());
    if (!array)
        return IllegalStateError("The buffer link is null.");
    return CheckBufferElement(*array ? (*array)->GetType() : DataType());
}

Result<void> ParallelProgramCPUImpl::SetBufferToActiveKernelSameId(const InternedId& attr) noexcept {
    return SetBufferToActiveKernel(attr, attr);
}

Result<void> ParallelProgramCPUImpl::SetBufferToActiveKernel(const InternedId& attr,
                                                             const InternedId& attrKernel) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(link, globalBuffers_.Get(attr));
        return SetKernelBufferLink(attrKernel, link);
    });
}

Result<void> ParallelProgramCPUImpl::SwapBuffers(const InternedId& bufferOne,
                                                 const InternedId& bufferTwo) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        DataDictionary& bindings = activeKernel_->bufferBindings;
        NORVI_TRY_VALUE(one, bindings.Get(bufferOne));
        NORVI_TRY_VALUE(two, bindings.Get(bufferTwo));
        bindings.Set(bufferOne, two);
        bindings.Set(bufferTwo, one);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::DeleteUniformBuffer(const InternedId& bufferId) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        if (!HasBuffer(bufferId))
            return OK;
        NORVI_TRY_VALUE(array, FindBuffer(bufferId, "Buffer doesn't exist."));
        NORVI_TRY_VALUE(writable, array->MakeWritable());
        writable->Flush();
        return OK;
    });
}

Bool ParallelProgramCPUImpl::HasBuffer(const InternedId& attr) noexcept {
    return globalBuffers_.Contains(attr);
}

} // namespace norvi
