// The records of buffers and textures on the shader side.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include <norvi/host/log.h>
#include <norvi/texture_records.h>

namespace norvi {

/// What every data type offers and these records deliberately do not define: each operation writes a critical
/// message and gives a fixed answer.
template <typename Entry>
struct IncomparableEntry {
    Int Compare(const Entry&) const { return Stop("Stop: Compare not defined."), 0; }
    Bool IsEqual(const Entry&) const { return Stop("Stop: IsEqual not defined."), false; }
    UInt64 GetHashCode() const { return Stop("Stop: GetHashCode not defined."), 0; }
    UInt64 GetUniqueHashCode() const { return Stop("Stop: GetUniqueHashCode not defined."), 0; }
    friend bool operator==(const Entry& left, const Entry& right) { return left.IsEqual(right); }

  private:
    static void Stop(const char* message, SourceLocation at = SourceLocation::Current()) {
        LogCritical(message, at);
    }
};

/// A buffer, as kernels' parameter records and the shader loader's tables hold it.
struct DataBufferEntry : IncomparableEntry<DataBufferEntry> {
    UInt64 handle = 0;
    std::shared_ptr<void> buffer;
    std::shared_ptr<void> backingStore;
    Int capacity = 0; ///< in elements; equal to `count` when the buffer is created
    Int count = 0;
    DataType elementType;
    InternedId id;

    DataBufferEntry() = default;
    DataBufferEntry(const DataBufferEntry&) = default;
    DataBufferEntry& operator=(const DataBufferEntry&) = default;
    /// Leaves `other` without references; numbers and id stay.
    DataBufferEntry(DataBufferEntry&& other) noexcept : DataBufferEntry() { *this = std::move(other); }
    DataBufferEntry& operator=(DataBufferEntry&& other) noexcept {
        if (this == &other)
            return *this;
        handle = other.handle;
        buffer = std::exchange(other.buffer, nullptr);
        backingStore = std::exchange(other.backingStore, nullptr);
        capacity = other.capacity;
        count = other.count;
        elementType = std::exchange(other.elementType, DataType());
        id = other.id;
        return *this;
    }

    /// "(handle,buffer,backingStore,capacity,count,elementType,id)"; a null reference is "nullptr".
    String ToString() const {
        return Format("(@,@,@,@,@,@,@)", handle, Address(buffer), Address(backingStore), capacity, count,
                      elementType ? elementType.ToString() : "nullptr", id);
    }

  private:
    static String Address(const std::shared_ptr<void>& reference) {
        return reference ? ToText(reinterpret_cast<UInt64>(reference.get())) : "nullptr";
    }
};

/// A texture of the renderer with its sampler.
struct TextureSamplerEntry : IncomparableEntry<TextureSamplerEntry> {
    UInt64 texture = 0; ///< renderer handle
    UInt64 sampler = 0; ///< renderer handle
    std::shared_ptr<void> textureItem;
    std::shared_ptr<void> samplerItem;
    SamplingData samplingData;
    UInt64 isImage = 0; ///< non-zero for a writable image
    InternedId id;

    TextureSamplerEntry() = default;
    /// A copy never shares the texels of `other`: its `_data` is null.
    TextureSamplerEntry(const TextureSamplerEntry& other)
        : IncomparableEntry(other),
          texture(other.texture),
          sampler(other.sampler),
          textureItem(other.textureItem),
          samplerItem(other.samplerItem),
          samplingData(other.samplingData),
          isImage(other.isImage),
          id(other.id) {
        samplingData._data = nullptr;
    }
    TextureSamplerEntry& operator=(const TextureSamplerEntry& other) {
        return *this = TextureSamplerEntry(other);
    }
    TextureSamplerEntry(TextureSamplerEntry&&) noexcept = default;
    TextureSamplerEntry& operator=(TextureSamplerEntry&&) noexcept = default;
};

NORVI_DATATYPE_NAME(DataBufferEntry, "norvi::DataBufferEntry");
NORVI_DATATYPE_NAME(TextureSamplerEntry, "norvi::TextureSamplerEntry");

} // namespace norvi

template <>
struct std::hash<norvi::DataBufferEntry> {
    std::size_t operator()(const norvi::DataBufferEntry& entry) const { return entry.GetHashCode(); }
};

template <>
struct std::hash<norvi::TextureSamplerEntry> {
    std::size_t operator()(const norvi::TextureSamplerEntry& entry) const { return entry.GetHashCode(); }
};
