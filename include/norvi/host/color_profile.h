// Colour spaces.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// Names a colour space; the empty profile names none.
class ColorProfile {
  public:
    ColorProfile() = default;
    explicit ColorProfile(String name) : name_(std::move(name)) {}

    const String& GetName() const { return name_; }
    Bool IsEmpty() const { return name_.empty(); }
    bool operator==(const ColorProfile&) const = default;

  private:
    String name_;
};

} // namespace norvi
