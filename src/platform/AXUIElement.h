#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace vardel {

// What a backend keeps behind an element reference. Two references are equal when their backend
// says they denote the same element (the platform's CFEqual).
class AXUIElementImpl {
public:
    virtual ~AXUIElementImpl() = default;
    virtual bool isEqual(const AXUIElementImpl& other) const = 0;
    // A stable name for traces and test output: the scenario id on the scripted desktop.
    virtual std::optional<std::string> traceName() const = 0;
};

// A reference to an accessibility element of some application. Cheap to copy.
class AXUIElement {
public:
    explicit AXUIElement(std::shared_ptr<const AXUIElementImpl> impl)
        : impl_(std::move(impl))
    {
    }

    const AXUIElementImpl& impl() const { return *impl_; }
    std::optional<std::string> traceName() const { return impl_->traceName(); }

    bool operator==(const AXUIElement& other) const { return impl_ == other.impl_ || impl_->isEqual(*other.impl_); }

private:
    std::shared_ptr<const AXUIElementImpl> impl_;
};

std::ostream& operator<<(std::ostream&, const AXUIElement&);

} // namespace vardel
