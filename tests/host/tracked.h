// A value that shows what happens to it.
#pragma once

#include <memory>
#include <new>

#include <gtest/gtest.h>

#include <norvi/host/text.h>

namespace norvi {

/// Owns memory, counts those that live, knows when its bytes were copied behind its back, and runs out of
/// memory on request.
class Tracked {
  public:
    explicit Tracked(Int number = 0) : number_(Make(number)) { ++living; }
    Tracked(const Tracked& other) : number_(Make(other.GetNumber())) { ++living; }
    Tracked(Tracked&& other) noexcept : number_(std::move(other.number_)) {
        ++living;
        ++moves;
    }
    Tracked& operator=(const Tracked& other) {
        number_ = Make(other.GetNumber());
        return *this;
    }
    ~Tracked() {
        EXPECT_EQ(self_, this) << "destroyed where it was not constructed";
        self_ = nullptr;
        --living;
    }

    Int GetNumber() const { return number_ ? *number_ : -1; }
    String ToString() const { return Format("tracked @", GetNumber()); }
    bool operator==(const Tracked& other) const { return GetNumber() == other.GetNumber(); }

    static inline Int living = 0;
    static inline Int moves = 0;
    /// How many may still be constructed or copied before one fails; negative: any number.
    static inline Int allowed = -1;

  private:
    static std::unique_ptr<Int> Make(Int number) {
        if (allowed == 0)
            throw std::bad_alloc();
        allowed -= allowed > 0;
        return std::make_unique<Int>(number);
    }

    std::unique_ptr<Int> number_;
    const Tracked* self_ = this;
};

/// Lets `count` constructions of Tracked succeed while it lives.
class AllowTracked {
  public:
    explicit AllowTracked(Int count) { Tracked::allowed = count; }
    ~AllowTracked() { Tracked::allowed = -1; }
    AllowTracked(const AllowTracked&) = delete;
    AllowTracked& operator=(const AllowTracked&) = delete;
};

} // namespace norvi
