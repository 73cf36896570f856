/// Objects that belong to one holder, and are copied with it.
#pragma once

#include <memory>
#include <utility>

namespace quorvex {

/// An object on the heap: a copy of the holder has a copy of the object.
///
/// What has been moved from has no object: it may only be assigned to or destroyed.
template <class Object>
class Owned {
public:
    Owned() : object_(std::make_unique<Object>()) {}
    /// Takes over an object, which must be there.
    Owned(std::unique_ptr<Object> object) noexcept : object_(std::move(object)) {}
    Owned(const Owned& other) : object_(std::make_unique<Object>(*other.object_)) {}
    Owned(Owned&&) noexcept = default;
    Owned& operator=(const Owned& other) {
        *this = Owned(other);
        return *this;
    }
    Owned& operator=(Owned&&) noexcept = default;
    ~Owned() = default;

    [[nodiscard]] Object& operator*() noexcept { return *object_; }
    [[nodiscard]] const Object& operator*() const noexcept { return *object_; }
    [[nodiscard]] Object* operator->() noexcept { return object_.get(); }
    [[nodiscard]] const Object* operator->() const noexcept { return object_.get(); }

private:
    std::unique_ptr<Object> object_;
};

}  // namespace quorvex
