// Objects of registered classes, and counted references to their interfaces.
#pragma once

#include <norvi/host/id.h>
#include <norvi/host/text.h>

namespace norvi {

class Class;
class ObjectInterface;
using ObjectRef = std::shared_ptr<ObjectInterface>;

/// What every object of a registered class can do. Interfaces derive from it.
class ObjectInterface {
  public:
    virtual ~ObjectInterface() = default;

    /// The object's implementation of the interface `interfaceId`, or null. The pointer is of the interface's
    /// type.
    virtual void* QueryInterface(const Id& interfaceId) = 0;

    /// A second object of the same class with the same state. Classes that cannot be copied keep this
    /// version: it writes a critical message and fails with the function-not-implemented error.
    virtual Result<ObjectRef> CopyInstance() const noexcept;

    /// The class that made the object; null for objects made otherwise.
    const Class* GetClass() const { return class_; }

  private:
    friend class Class;
    const Class* class_ = nullptr;
};

/// A registered class: its id and how objects are made. Classes live in static storage of their module.
class Class {
  public:
    using Factory = ObjectRef (*)();

    /// @param factory makes an object or throws std::bad_alloc.
    Class(const char* id, Factory factory) : id_(id), factory_(factory) {}

    const Id& GetId() const { return id_; }
    Result<ObjectRef> Create() const noexcept;

  private:
    Id id_;
    Factory factory_;
};

/// A counted reference to the interface `I` of an object.
template <typename I>
class Ref : public std::shared_ptr<I> {
  public:
    using std::shared_ptr<I>::shared_ptr;

    /// Makes an object of the class `classId` and asks it for the interface. An unknown class and an object
    /// without the interface are null-pointer errors.
    static Result<Ref> Create(const Id& classId) noexcept;
    /// As above, from the class itself, which may be null.
    static Result<Ref> Create(const Class* objectClass) noexcept;
    /// The interface of `object`; a null-pointer error if it is missing.
    static Result<Ref> Of(const ObjectRef& object) noexcept {
        return CatchOutOfMemory([&]() -> Result<Ref> {
            if (void* found = object ? object->QueryInterface(I::InterfaceId) : nullptr)
                return Ref(object, static_cast<I*>(found));
            return NullPtrError(Format("the object does not implement the interface '@'", I::InterfaceId));
        });
    }

  private:
    Ref(const ObjectRef& owner, I* interface) : std::shared_ptr<I>(owner, interface) {}
};

/// The class with this id among all that loaded modules have registered, or null.
const Class* FindClass(const Id& classId);

template <typename I>
Result<Ref<I>> Ref<I>::Create(const Class* objectClass) noexcept {
    return CatchOutOfMemory([&]() -> Result<Ref> {
        if (!objectClass)
            return NullPtrError("no such class is registered");
        NORVI_TRY_VALUE(object, objectClass->Create());
        return Of(object);
    });
}

template <typename I>
Result<Ref<I>> Ref<I>::Create(const Id& classId) noexcept {
    return CatchOutOfMemory([&]() -> Result<Ref> {
        if (const Class* found = FindClass(classId))
            return Create(found);
        return NullPtrError(Format("no class with the id '@' is registered", classId));
    });
}

} // namespace norvi
