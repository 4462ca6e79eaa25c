// Run-time types: what a value is, how large it is, and how to handle it without knowing it at compile time.
#pragma once

#include <atomic>
#include <new>
#include <type_traits>

#include <norvi/host/block.h>
#include <norvi/host/id.h>
#include <norvi/host/text.h>

namespace norvi {

class Array;
class ArrayRef;

/// An atomic counter cell; kernels see its address.
using AtomicUInt32 = std::atomic<UInt32>;

enum class DataTypeKind { Value, Pointer, BaseArray, Block, ArrayReference, Reference };

/// The operations of a type. All work on properly aligned memory. `equal` and `toText` are null where the
/// type offers none.
struct DataTypeOperations {
    void (*construct)(void* target);
    void (*destruct)(void* value) noexcept;
    void (*copyConstruct)(void* target, const void* source);
    void (*moveConstruct)(void* target, void* source) noexcept;
    void (*assign)(void* target, const void* source);
    bool (*equal)(const void* a, const void* b);
    std::size_t (*hash)(const void* value);
    String (*toText)(const void* value);
};

/// A handle to the description of a type, as cheap to copy as a pointer. The empty handle names no type.
/// Descriptions are compared by name, since every module carries its own copy of those it uses.
class DataType {
  public:
    struct Description {
        String name;
        Int size = 0;
        Int alignment = 0;
        DataTypeKind kind = DataTypeKind::Value;
        const Description* element = nullptr; ///< of containers, views and pointers
        /// The value owns nothing, so copying its bytes copies it. (Vectors of the kernel language copy
        /// member by member, and structs that hold them too: trivial destruction is what tells.)
        Bool isTrivial = false;
        DataTypeOperations operations{};
    };

    constexpr DataType() = default;
    explicit constexpr DataType(const Description* description) : description_(description) {}

    /// The type `T`; the description is made on first use. A name for a type of one's own is given by
    /// specialising `DataTypeName`.
    template <typename T>
    static DataType Of();

    explicit operator bool() const { return description_ != nullptr; }
    const Description* operator->() const { return description_; }
    /// "float32", "Block<Vector32>"; empty for no type.
    const String& ToString() const;
    DataType GetElementType() const { return DataType(description_ ? description_->element : nullptr); }

    bool operator==(const DataType& other) const;

  private:
    const Description* description_ = nullptr;
};

/// The name of `T` in messages and comparisons.
template <typename T>
struct DataTypeName {
    static String Get() {
        // "... [with T = some::Type; ...]" or "... [T = some::Type]"
        std::string_view text = __PRETTY_FUNCTION__;
        const auto begin = text.find("T = ") + 4;
        return String(text.substr(begin, text.find_first_of(";]", begin) - begin));
    }
};

#define NORVI_DATATYPE_NAME(Type, Text)                                                                      \
    template <>                                                                                              \
    struct DataTypeName<Type> {                                                                              \
        static String Get() { return Text; }                                                                 \
    }

NORVI_DATATYPE_NAME(Bool, "bool");
NORVI_DATATYPE_NAME(Char, "char");
NORVI_DATATYPE_NAME(std::int8_t, "char");
NORVI_DATATYPE_NAME(UChar, "uchar");
NORVI_DATATYPE_NAME(Int16, "int16");
NORVI_DATATYPE_NAME(UInt16, "uint16");
NORVI_DATATYPE_NAME(Int32, "int32");
NORVI_DATATYPE_NAME(UInt32, "uint32");
NORVI_DATATYPE_NAME(Int64, "int64");
NORVI_DATATYPE_NAME(UInt64, "uint64");
NORVI_DATATYPE_NAME(Float32, "float32");
NORVI_DATATYPE_NAME(Float64, "float64");
NORVI_DATATYPE_NAME(HalfFloat, "HalfFloat");
NORVI_DATATYPE_NAME(String, "String");
NORVI_DATATYPE_NAME(InternedId, "InternedId");
NORVI_DATATYPE_NAME(Id, "Id");
NORVI_DATATYPE_NAME(Vector2d32, "Vector2d32");
NORVI_DATATYPE_NAME(Vector32, "Vector32");
NORVI_DATATYPE_NAME(Vector4d32, "Vector4d32");
NORVI_DATATYPE_NAME(Vec2<Int32>, "Vec2<Int32>");
NORVI_DATATYPE_NAME(Vec3<Int32>, "Vec3<Int32>");
NORVI_DATATYPE_NAME(Vec4<Int32>, "Vec4<Int32>");
NORVI_DATATYPE_NAME(Vec2<UInt32>, "Vec2<UInt32>");
NORVI_DATATYPE_NAME(Vec3<UInt32>, "Vec3<UInt32>");
NORVI_DATATYPE_NAME(Vec4<UInt32>, "Vec4<UInt32>");
NORVI_DATATYPE_NAME(Vec2<HalfFloat>, "Vec2<HalfFloat>");
NORVI_DATATYPE_NAME(Vec3<HalfFloat>, "Vec3<HalfFloat>");
NORVI_DATATYPE_NAME(Vec4<HalfFloat>, "Vec4<HalfFloat>");
NORVI_DATATYPE_NAME(SquareMatrix32, "SquareMatrix32");
NORVI_DATATYPE_NAME(SquareMatrix4d32, "SquareMatrix4d32");
NORVI_DATATYPE_NAME(AtomicUInt32, "AtomicUInt32");
NORVI_DATATYPE_NAME(Array, "Array");

namespace detail {

/// What kind of type T is, and which element it holds.
template <typename T>
struct DataTypeShape {
    static constexpr DataTypeKind Kind = DataTypeKind::Value;
    using Element = void;
};
template <typename T>
struct DataTypeShape<T*> {
    static constexpr DataTypeKind Kind = DataTypeKind::Pointer;
    using Element = std::remove_const_t<T>;
};
template <typename T>
struct DataTypeShape<BaseArray<T>> {
    static constexpr DataTypeKind Kind = DataTypeKind::BaseArray;
    using Element = T;
};
template <typename T>
struct DataTypeShape<Block<T>> {
    static constexpr DataTypeKind Kind = DataTypeKind::Block;
    using Element = std::remove_const_t<T>;
};
template <>
struct DataTypeShape<ArrayRef> {
    static constexpr DataTypeKind Kind = DataTypeKind::ArrayReference;
    using Element = Array;
};
template <typename T>
struct DataTypeShape<std::shared_ptr<T>> {
    static constexpr DataTypeKind Kind = DataTypeKind::Reference;
    using Element = std::remove_const_t<T>;
};

template <typename T>
concept HasText = requires(const T& value) {
    { ToText(value) } -> std::convertible_to<String>;
};

/// Operations of complete, copyable types. What a type does not offer stays null.
template <typename T>
constexpr DataTypeOperations OperationsOf() {
    DataTypeOperations operations{};
    if constexpr (std::is_default_constructible_v<T>)
        operations.construct = [](void* target) { new (target) T(); };
    if constexpr (std::is_destructible_v<T>)
        operations.destruct = [](void* value) noexcept { static_cast<T*>(value)->~T(); };
    if constexpr (std::is_copy_constructible_v<T>) {
        operations.copyConstruct = [](void* target, const void* source) {
            new (target) T(*static_cast<const T*>(source));
        };
        operations.moveConstruct = [](void* target, void* source) noexcept {
            new (target) T(std::move(*static_cast<T*>(source)));
        };
    }
    if constexpr (std::is_copy_assignable_v<T>)
        operations.assign = [](void* target, const void* source) {
            *static_cast<T*>(target) = *static_cast<const T*>(source);
        };
    if constexpr (requires(const T& a) {
                      { a == a } -> std::convertible_to<bool>;
                  })
        operations.equal = [](const void* a, const void* b) -> bool {
            return *static_cast<const T*>(a) == *static_cast<const T*>(b);
        };
    if constexpr (requires(const T& a) {
                      { std::hash<T>()(a) } -> std::convertible_to<std::size_t>;
                  })
        operations.hash = [](const void* value) { return std::hash<T>()(*static_cast<const T*>(value)); };
    if constexpr (HasText<T>)
        operations.toText = [](const void* value) -> String { return ToText(*static_cast<const T*>(value)); };
    return operations;
}

template <typename T>
DataType::Description Describe();

template <typename T>
const DataType::Description& DescriptionOf() {
    static const DataType::Description description = Describe<T>();
    return description;
}

template <typename T>
String TypeNameOf() {
    using Shape = DataTypeShape<T>;
    if constexpr (Shape::Kind == DataTypeKind::Pointer)
        return TypeNameOf<typename Shape::Element>() + "*";
    else if constexpr (Shape::Kind == DataTypeKind::BaseArray)
        return "BaseArray<" + TypeNameOf<typename Shape::Element>() + ">";
    else if constexpr (Shape::Kind == DataTypeKind::Block)
        return "Block<" + TypeNameOf<typename Shape::Element>() + ">";
    else if constexpr (Shape::Kind == DataTypeKind::ArrayReference)
        return "ArrayRef";
    else if constexpr (Shape::Kind == DataTypeKind::Reference)
        return "Ref<" + TypeNameOf<typename Shape::Element>() + ">";
    else
        return DataTypeName<T>::Get();
}

template <typename T>
DataType::Description Describe() {
    using Shape = DataTypeShape<T>;
    DataType::Description description;
    description.name = TypeNameOf<T>();
    description.kind = Shape::Kind;
    if constexpr (requires { sizeof(T); } && !std::is_abstract_v<T>) {
        description.size = sizeof(T);
        description.alignment = alignof(T);
        description.isTrivial = std::is_trivially_destructible_v<T> && std::is_copy_constructible_v<T>;
        description.operations = OperationsOf<T>();
    }
    // What a pointer or reference points at may be incomplete here, and is never handled through it.
    if constexpr (Shape::Kind == DataTypeKind::BaseArray || Shape::Kind == DataTypeKind::Block)
        description.element = &DescriptionOf<typename Shape::Element>();
    return description;
}

} // namespace detail

template <typename T>
DataType DataType::Of() {
    return DataType(&detail::DescriptionOf<T>());
}

} // namespace norvi
