#include "foundation/dicom/object/object_state.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace quorvex {
namespace {

using dicom::Cursor;
using dicom::DataSet;

/// What all empty objects share, so that a new item takes one block and not two. It is never
/// released: objects may still be made while the program ends.
const std::shared_ptr<DataSet>& EmptyContent() {
    static const auto& empty = *new std::shared_ptr<DataSet>(std::make_shared<DataSet>());
    return empty;
}

}  // namespace

ObjectState::ObjectState() : content_(EmptyContent()) {}

ObjectState::ObjectState(const ObjectState& other)
    : name(other.name), content_(other.content_), errorMessage_(other.errorMessage_) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): what it gives itself stays as it was
ObjectState& ObjectState::operator=(const ObjectState& other) {
    CString otherName = other.name;  // all that can fail
    Adopt(other.content_);
    std::swap(name, otherName);
    errorMessage_ = other.errorMessage_;
    return *this;
}

DataSet& ObjectState::Writable() {
    if (content_.use_count() > 1) content_ = std::make_shared<DataSet>(*content_);
    // Other owners may have let go in other threads: what they read comes before what is written.
    std::atomic_thread_fence(std::memory_order_acquire);
    return *content_;
}

void ObjectState::Adopt(std::shared_ptr<DataSet> content) noexcept {
    content_ = std::move(content);
    cursors_.clear();
}

void ObjectState::Clear() noexcept {
    Adopt(EmptyContent());
}

Cursor* ObjectState::FindCursor(std::uint32_t tag) noexcept {
    const auto place = std::ranges::find(cursors_, tag, &Cursor::tag);
    return place == cursors_.end() ? nullptr : &*place;
}

Cursor& ObjectState::AddCursor(Cursor cursor) {
    return cursors_.emplace_back(std::move(cursor));
}

void ObjectState::EraseCursor(std::uint32_t tag) noexcept {
    std::erase_if(cursors_, [&](const Cursor& cursor) { return cursor.tag == tag; });
}

}  // namespace quorvex
