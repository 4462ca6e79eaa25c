// One value of any type.
#pragma once

#include <norvi/host/datatype.h>

namespace norvi {

/// Holds one value together with its type. Small values lie inside the object, others in memory of their own.
/// Copying copies the value; allocation failures throw std::bad_alloc, which the operations of the public
/// interfaces turn into the out-of-memory error.
class Data {
  public:
    Data() = default;
    template <typename T>
    requires(!std::is_same_v<std::decay_t<T>, Data> && std::is_copy_constructible_v<std::decay_t<T>>)
        Data(T&& value) {
        using Value = std::decay_t<T>;
        Construct(DataType::Of<Value>(), [&](void* memory) { new (memory) Value(std::forward<T>(value)); });
    }
    Data(const char* text) : Data(String(text)) {}
    Data(const Data& other);
    Data(Data&& other) noexcept;
    Data& operator=(Data other) noexcept;
    ~Data();

    /// A copy of the value of `type` at `value`. `type` must be copyable.
    static Data Copy(DataType type, const void* value);

    DataType GetType() const { return type_; }
    Bool IsEmpty() const { return !type_; }
    /// Address of the value; null when empty.
    const void* GetAddress() const { return type_ ? Address() : nullptr; }

    /// The value if it is a T, else null.
    template <typename T>
    const T* Get() const {
        return type_ == DataType::Of<T>() ? static_cast<const T*>(Address()) : nullptr;
    }

    /// The value if it is a T, else an illegal-state error that names both types.
    template <typename T>
    Result<T> GetAs(SourceLocation at = SourceLocation::Current()) const {
        if (const T* value = Get<T>())
            return *value;
        return TypeMismatch(DataType::Of<T>(), at);
    }

    /// Text form for messages; the type's name where the type has no text.
    String ToString() const;
    std::size_t GetHashCode() const;
    bool operator==(const Data& other) const;

  private:
    static constexpr Int InlineSize = 32;

    Failure TypeMismatch(DataType expected, SourceLocation at) const;
    static Bool FitsInline(DataType type) { return type->size <= InlineSize && type->alignment <= 8; }
    /// Memory for a value of `type`; `type_` is set only when the value stands in it.
    void* Reserve(DataType type);
    /// Reserves memory for a value of `type`, which `construct` may fail to put there.
    template <typename Constructor>
    void Construct(DataType type, Constructor construct) {
        void* memory = Reserve(type);
        try {
            construct(memory);
        } catch (...) {
            Free(type);
            throw;
        }
        type_ = type;
    }
    void Free(DataType type) noexcept;
    void Destroy() noexcept;
    void TakeOver(Data& other) noexcept;
    void* Address() const { return FitsInline(type_) ? const_cast<std::byte*>(inline_) : heap_; }

    DataType type_;
    union {
        alignas(8) std::byte inline_[InlineSize];
        void* heap_;
    };
};

} // namespace norvi

template <>
struct std::hash<norvi::Data> {
    std::size_t operator()(const norvi::Data& data) const noexcept { return data.GetHashCode(); }
};
