// Where a file is.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// A resource location: "directory/name", with a scheme such as "relative:" in front or without one.
class Url {
  public:
    Url() = default;
    Url(String text) : text_(std::move(text)) {}
    Url(const char* text) : text_(text) {}

    const String& ToString() const { return text_; }
    Bool IsEmpty() const { return text_.empty(); }
    /// The last component, suffix included: "heat.kernel" of "relative:kernels/heat.kernel".
    String GetName() const;

    bool operator==(const Url&) const = default;

  private:
    String text_;
};

} // namespace norvi
