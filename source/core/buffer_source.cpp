#include "core/buffer_source.h"

namespace norvi {

namespace {

Result<BufferSource> ReadAnySource(const Data& data) {
    const DataType type = data.GetType();
    switch (type ? type->kind : DataTypeKind::Value) {
    case DataTypeKind::BaseArray: {
        // All arrays have the layout of an array of bytes; only the distance of its ends depends on the
        // element.
        const auto& bytes = *static_cast<const BaseArray<UChar>*>(data.GetAddress());
        const DataType element = type.GetElementType();
        // This one packs its elements into bits.
        if (element == DataType::Of<Bool>())
            return IllegalArgumentError("data is not an base array or block");
        return BufferSource{bytes.data(), static_cast<Int>(bytes.size()) / element->size, element};
    }
    case DataTypeKind::Block: {
        const auto& block = *static_cast<const UntypedBlock*>(data.GetAddress());
        return BufferSource{block.data, block.count, type.GetElementType()};
    }
    case DataTypeKind::ArrayReference: {
        const auto& array = *static_cast<const ArrayRef*>(data.GetAddress());
        if (!array)
            return BufferSource{};
        const UntypedBlock block = array->GetBlock(0);
        if (block.count != array->GetCount())
            return IllegalArgumentError("only arrays with one continuous memory block are supported");
        return BufferSource{block.data, block.count, array->GetType()};
    }
    case DataTypeKind::Reference: {
        BufferSource source;
        source.isStorable = false;
        return source;
    }
    default:
        return IllegalArgumentError("data is not an base array or block");
    }
}

} // namespace

Result<void> CheckBufferElement(DataType elementType) {
    if (elementType && !elementType->isTrivial)
        return IllegalArgumentError(Format("a buffer cannot hold elements of type @", elementType));
    return OK;
}

Result<BufferSource> ReadBufferSource(const Data& data) {
    NORVI_TRY_VALUE(source, ReadAnySource(data));
    NORVI_TRY(CheckBufferElement(source.elementType));
    return source;
}

} // namespace norvi
