#include "finish_module.h"

#include <algorithm>
#include <set>
#include <span>
#include <unordered_map>

namespace norvi {

namespace {

// Numbers of the SPIR-V specification.
enum Operation : UInt32 {
    TypeVoid = 19,
    TypeInt = 21,
    TypeFloat = 22,
    TypeVector = 23,
    TypeMatrix = 24,
    TypeArray = 28,
    TypeRuntimeArray = 29,
    TypeStruct = 30,
    TypePointer = 32,
    Constant = 43,
    Decorate = 71,
    MemberDecorate = 72,
};
enum Decoration : UInt32 { RowMajor = 4, ArrayStride = 6, MatrixStride = 7, Offset = 35, NoContraction = 42 };

/// Additions, products, quotients and sums of products of floats.
constexpr UInt32 arithmetic[] = {129, 131, 133, 136, 140, 141, 142, 143, 144, 145, 146, 147, 148};

constexpr UInt32 magicNumber = 0x07230203;
constexpr size_t headerSize = 5;

struct Layout {
    UInt32 size = 0;
    UInt32 alignment = 1;
    UInt32 columns = 0, rows = 0; ///< of a matrix, or of the matrices in an array
    UInt32 componentSize = 0;
    UInt32 arrayStride = 0;
    BaseArray<UInt32> members; ///< types
    BaseArray<UInt32> offsets; ///< of members
};

UInt32 RoundUp(UInt32 value, UInt32 alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

class ModuleFinisher {
  public:
    explicit ModuleFinisher(BaseArray<UInt32>& words) : words_(words) {}

    Result<void> Finish() {
        NORVI_TRY(FindInstructions());
        for (const std::span<UInt32> instruction : instructions_)
            Read(instruction);
        if (typesBegin_ == 0)
            return IllegalArgumentError("the SPIR-V module is damaged");
        for (const std::span<UInt32> instruction : instructions_)
            SetLayout(instruction);
        ForbidContraction();
        return OK;
    }

  private:
    Result<void> FindInstructions() {
        if (words_.size() < headerSize || words_[0] != magicNumber)
            return IllegalArgumentError("this is no SPIR-V module");
        for (size_t i = headerSize; i < words_.size();) {
            const size_t length = words_[i] >> 16;
            if (length < MinimumLength(words_[i] & 0xFFFF) || length > words_.size() - i)
                return IllegalArgumentError("the SPIR-V module is damaged");
            instructions_.emplace_back(words_.data() + i, length);
            i += length;
        }
        return OK;
    }

    /// Words that are looked at without a further test.
    static size_t MinimumLength(UInt32 operation) {
        switch (operation) {
        case TypeInt:
        case TypeFloat:
        case TypeRuntimeArray:
        case Decorate:
            return 3;
        case TypeVector:
        case TypeMatrix:
        case TypeArray:
        case Constant:
        case MemberDecorate:
            return 4;
        case TypeStruct:
            return 2;
        default:
            return IsArithmetic(operation) ? 3 : 1;
        }
    }

    static bool IsArithmetic(UInt32 operation) {
        return std::find(std::begin(arithmetic), std::end(arithmetic), operation) != std::end(arithmetic);
    }

    static UInt32 OperationOf(std::span<UInt32> instruction) { return instruction[0] & 0xFFFF; }

    /// Types are defined before they are used, and behind all decorations.
    void Read(std::span<UInt32> instruction) {
        const UInt32 id = instruction.size() > 1 ? instruction[1] : 0;
        const UInt32 operation = OperationOf(instruction);
        if (typesBegin_ == 0 && operation >= TypeVoid && operation <= TypePointer)
            typesBegin_ = static_cast<size_t>(instruction.data() - words_.data());
        switch (operation) {
        case Decorate:
            if (instruction[2] == NoContraction)
                uncontracted_.insert(id);
            break;
        case MemberDecorate:
            if (instruction[3] == RowMajor)
                rowMajorMembers_.emplace(id, instruction[2]);
            break;
        case Constant:
            constants_[instruction[2]] = instruction[3];
            break;
        case TypeInt:
        case TypeFloat: {
            Layout& number = layouts_[id];
            number.size = number.componentSize = number.alignment = std::max(instruction[2] / 8, 1u);
            break;
        }
        case TypeVector:
            layouts_[id] = Repeat(layouts_[instruction[2]], instruction[3]);
            layouts_[id].rows = instruction[3];
            break;
        case TypeMatrix:
            layouts_[id] = Repeat(layouts_[instruction[2]], instruction[3]);
            layouts_[id].columns = instruction[3];
            break;
        case TypeArray:
            layouts_[id] = Repeat(layouts_[instruction[2]], constants_[instruction[3]]);
            break;
        case TypeRuntimeArray:
            layouts_[id] = Repeat(layouts_[instruction[2]], 0);
            break;
        case TypeStruct:
            layouts_[id] = LayOut(instruction.subspan(2));
            break;
        default:
            break;
        }
    }

    static Layout Repeat(Layout element, UInt32 count) {
        element.members.clear();
        element.offsets.clear();
        element.arrayStride = RoundUp(element.size, element.alignment);
        element.size = element.arrayStride * count;
        return element;
    }

    Layout LayOut(std::span<const UInt32> members) {
        Layout all;
        for (const UInt32 member : members) {
            const Layout& layout = layouts_[member];
            all.alignment = std::max(all.alignment, layout.alignment);
            all.members.push_back(member);
            all.offsets.push_back(RoundUp(all.size, layout.alignment));
            all.size = all.offsets.back() + layout.size;
        }
        all.size = RoundUp(all.size, all.alignment);
        return all;
    }

    void SetLayout(std::span<UInt32> instruction) {
        const auto found = layouts_.find(instruction.size() > 1 ? instruction[1] : 0);
        if (found == layouts_.end())
            return;
        const Layout& layout = found->second;
        if (OperationOf(instruction) == Decorate && instruction.size() == 4 && instruction[2] == ArrayStride)
            instruction[3] = layout.arrayStride;
        if (OperationOf(instruction) != MemberDecorate || instruction.size() != 5 ||
            instruction[2] >= layout.members.size())
            return;
        const UInt32 member = instruction[2];
        if (instruction[3] == Offset)
            instruction[4] = layout.offsets[member];
        if (instruction[3] == MatrixStride) {
            const Layout& matrix = layouts_[layout.members[member]];
            const bool isRowMajor = rowMajorMembers_.contains({instruction[1], member});
            instruction[4] = matrix.componentSize * (isRowMajor ? matrix.columns : matrix.rows);
        }
    }

    void ForbidContraction() {
        BaseArray<UInt32> decorations;
        for (const std::span<UInt32> instruction : instructions_) {
            const UInt32 operation = OperationOf(instruction);
            if (IsArithmetic(operation) && uncontracted_.insert(instruction[2]).second)
                decorations.insert(decorations.end(), {3u << 16 | Decorate, instruction[2], NoContraction});
        }
        words_.insert(words_.begin() + static_cast<Int>(typesBegin_), decorations.begin(), decorations.end());
    }

    BaseArray<UInt32>& words_;
    BaseArray<std::span<UInt32>> instructions_;
    size_t typesBegin_ = 0; ///< word of the first type; decorations stand before it
    std::unordered_map<UInt32, Layout> layouts_;
    std::unordered_map<UInt32, UInt32> constants_;
    std::set<std::pair<UInt32, UInt32>> rowMajorMembers_; ///< struct and number of the member
    std::set<UInt32> uncontracted_;
};

} // namespace

Result<void> FinishModule(BaseArray<UInt32>& words) noexcept {
    return CatchOutOfMemory([&] { return ModuleFinisher(words).Finish(); });
}

} // namespace norvi
