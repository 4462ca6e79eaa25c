#include "norvi/uniform_value.h"

#include "tool_fixture.h"

namespace norvi {

TEST(UniformValue, HasTheTypeThatIsAskedFor) {
    const struct {
        const char* type;
        const char* text;
        Data value;
    } cases[] = {
        {"float32", "0.1", 0.1f},
        {"float32", "-inf", -std::numeric_limits<Float32>::infinity()},
        {"half", "0.5", HalfFloat(0.5f)},
        {"int32", "-2147483648", std::numeric_limits<Int32>::min()},
        {"int32", "1e3", Int32{1000}},
        {"uint32", "4294967295", UInt32{4294967295u}},
        {"int64", "9223372036854775807", std::numeric_limits<Int64>::max()},
        {"uint64", "18446744073709551615", std::numeric_limits<UInt64>::max()},
        {"uchar", "255", UChar{255}},
        {"bool", "true", true},
        {"bool", "0", false},
        {"vec2", "1,-2", Vector2d32{1, -2}},
        {"ivec3", "1,2,3", Vec3<Int32>{1, 2, 3}},
        {"mat3", "1,2,3,4,5,6,7,8,9", SquareMatrix32{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}},
    };
    for (const auto& [type, text, expected] : cases) {
        const auto value = ParseUniform(**FindElementType(String(type)), text);
        ASSERT_TRUE(value) << MessageOf(value);
        EXPECT_TRUE(*value == expected) << type << " from '" << text << "' is " << value->ToString();
    }
}

TEST(UniformValue, TextsThatDoNotFitGiveErrors) {
    const struct {
        const char* type;
        const char* text;
        const char* message;
    } cases[] = {
        {"float32", "", "'' is no number"},
        {"float32", "1.0f", "'1.0f' is no number"},
        {"float32", " 1", "' 1' is no number"},
        {"float32", "1e39", "float32 cannot hold 1e39"},
        {"half", "70000", "half cannot hold 70000"},
        {"int32", "1.5", "int32 cannot hold 1.5"},
        {"int32", "nan", "int32 cannot hold nan"},
        {"int32", "2147483648", "int32 cannot hold 2147483648"},
        {"int64", "9223372036854775808", "int64 cannot hold 9223372036854775808"},
        {"uint32", "-1", "uint32 cannot hold -1"},
        {"bool", "2", "bool cannot hold 2"},
        {"vec3", "1,2", "'1,2' has 2 numbers, vec3 takes 3"},
        {"vec2", "1,", "'' is no number"},
        {"float32", "1,2", "'1,2' has 2 numbers, float32 takes 1"},
    };
    for (const auto& [type, text, message] : cases)
        EXPECT_EQ(MessageOf(ParseUniform(**FindElementType(String(type)), text)), message);
}

} // namespace norvi
