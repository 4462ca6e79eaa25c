#include <norvi/host/data.h>

namespace norvi {

namespace {

void* AllocateAligned(DataType type) {
    return ::operator new(static_cast<std::size_t>(type->size), std::align_val_t(type->alignment));
}

void FreeAligned(DataType type, void* memory) noexcept {
    ::operator delete(memory, std::align_val_t(type->alignment));
}

} // namespace

Data::Data(const Data& other) {
    if (!other.type_)
        return;
    Construct(other.type_,
              [&](void* memory) { other.type_->operations.copyConstruct(memory, other.Address()); });
}

Data::Data(Data&& other) noexcept {
    TakeOver(other);
}

Data& Data::operator=(Data other) noexcept {
    Destroy();
    TakeOver(other);
    return *this;
}

Data::~Data() {
    Destroy();
}

Data Data::Copy(DataType type, const void* value) {
    Data data;
    data.Construct(type, [&](void* memory) { type->operations.copyConstruct(memory, value); });
    return data;
}

String Data::ToString() const {
    if (!type_)
        return "nothing";
    return type_->operations.toText ? type_->operations.toText(Address()) : type_.ToString();
}

std::size_t Data::GetHashCode() const {
    return type_ && type_->operations.hash ? type_->operations.hash(Address()) : 0;
}

bool Data::operator==(const Data& other) const {
    if (type_ != other.type_)
        return false;
    return !type_ || (type_->operations.equal && type_->operations.equal(Address(), other.Address()));
}

Failure Data::TypeMismatch(DataType expected, SourceLocation at) const {
    return IllegalStateError(
        Format("Data holds @, but @ is needed.", type_ ? type_.ToString() : "nothing", expected), at);
}

void* Data::Reserve(DataType type) {
    if (FitsInline(type))
        return inline_;
    heap_ = AllocateAligned(type);
    return heap_;
}

void Data::Free(DataType type) noexcept {
    if (!FitsInline(type))
        FreeAligned(type, heap_);
}

void Data::Destroy() noexcept {
    if (!type_)
        return;
    type_->operations.destruct(Address());
    Free(type_);
    type_ = {};
}

void Data::TakeOver(Data& other) noexcept {
    if (!other.type_)
        return;
    if (FitsInline(other.type_))
        other.type_->operations.moveConstruct(inline_, other.inline_);
    else
        heap_ = other.heap_;
    type_ = other.type_;
    if (FitsInline(other.type_))
        other.Destroy();
    else
        other.type_ = {};
}

} // namespace norvi
