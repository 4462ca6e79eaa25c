#include <gtest/gtest.h>

#include <norvi/host/array.h>

namespace norvi {

struct Unnamed {
    Int16 a[3];
};
struct Incomplete;
NORVI_DATATYPE_NAME(Incomplete, "Incomplete");
struct Abstract {
    virtual ~Abstract() = default;
    virtual void Do() = 0;
};

namespace {

TEST(DataType, DescribesNameSizeAndKind) {
    using Kind = DataTypeKind;
    const struct {
        DataType type;
        const char* name;
        Int size;
        DataTypeKind kind;
        bool isTrivial;
    } cases[] = {
        {DataType::Of<UChar>(), "uchar", 1, Kind::Value, true},
        {DataType::Of<Vector32>(), "Vector32", 12, Kind::Value, true},
        {DataType::Of<Vec4<HalfFloat>>(), "Vec4<HalfFloat>", 8, Kind::Value, true},
        {DataType::Of<String>(), "String", sizeof(String), Kind::Value, false},
        {DataType::Of<Unnamed>(), "norvi::Unnamed", 6, Kind::Value, true},
        {DataType::Of<const Float32*>(), "float32*", sizeof(void*), Kind::Pointer, true},
        {DataType::Of<Incomplete*>(), "Incomplete*", sizeof(void*), Kind::Pointer, true},
        {DataType::Of<BaseArray<String>>(), "BaseArray<String>", sizeof(BaseArray<String>), Kind::BaseArray,
         false},
        {DataType::Of<Block<const Vector32>>(), "Block<Vector32>", sizeof(UntypedBlock), Kind::Block, true},
        {DataType::Of<ArrayRef>(), "ArrayRef", sizeof(ArrayRef), Kind::ArrayReference, false},
        {DataType::Of<std::shared_ptr<Abstract>>(), "Ref<norvi::Abstract>", sizeof(std::shared_ptr<Abstract>),
         Kind::Reference, false},
        {DataType::Of<Abstract>(), "norvi::Abstract", 0, Kind::Value, false},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.type.ToString(), test.name);
        EXPECT_EQ(test.type->size, test.size) << test.name;
        EXPECT_EQ(test.type->kind, test.kind) << test.name;
        EXPECT_EQ(test.type->isTrivial, test.isTrivial) << test.name;
    }
    EXPECT_EQ(DataType::Of<BaseArray<String>>().GetElementType(), DataType::Of<String>());
    EXPECT_EQ(DataType::Of<Block<const Vector32>>().GetElementType(), DataType::Of<Vector32>());
    EXPECT_FALSE(DataType().GetElementType() || DataType::Of<String>().GetElementType());
}

TEST(DataType, ComparesByNameAndLayout) {
    const DataType::Description elsewhere{.name = "float32", .size = 4, .alignment = 4};
    const DataType::Description larger{.name = "float32", .size = 8, .alignment = 4};
    EXPECT_TRUE(DataType(&elsewhere) == DataType::Of<Float32>());
    EXPECT_FALSE(DataType(&larger) == DataType::Of<Float32>());
    EXPECT_FALSE(DataType() == DataType::Of<Float32>());
    EXPECT_TRUE(DataType() == DataType());
    EXPECT_EQ(DataType().ToString(), "");
}

} // namespace
} // namespace norvi
