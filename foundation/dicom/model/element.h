/// One element of a data set: its tag, and where its value lies.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvex::dicom {

class DataSet;

using Bytes = std::span<const unsigned char>;
using ByteBuffer = std::vector<unsigned char>;

/// Items of a sequence. An item with more than one owner is never changed in place.
using Items = std::vector<std::shared_ptr<DataSet>>;

[[nodiscard]] inline std::string_view CharactersOf(Bytes bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A place in a buffer.
struct ByteRange {
    std::size_t offset = 0;
    std::size_t length = 0;
};

/// Encapsulated data: the offset table item first (possibly empty), then the fragments.
struct Fragments {
    /// What the ranges count in; null where that is the data set's own source.
    std::shared_ptr<const ByteBuffer> bytes;
    std::vector<ByteRange> ranges;
};

/// What an element owns when its value does not lie in the source of its data set.
using Content = std::variant<ByteBuffer, Items, Fragments>;

/// `offset` and `length` are the value's place in the source that its data set was read from. Where
/// there is a `content`, the value is that. Sequences and encapsulated data always have one; the
/// place of one that was read spans everything behind the element's header up to the delimiter.
struct Element {
    std::uint32_t tag = 0;
    MC_VR vr = MC_VR_UN;
    std::size_t offset = 0;
    std::size_t length = 0;
    std::shared_ptr<Content> content{};
    bool isCut = false;        ///< the data ended before the value did
    bool isBigEndian = false;  ///< the byte order of the value, whatever the data set's syntax
    bool isUtf8 = false;       ///< text that was set: UTF-8 under any Specific Character Set
};

[[nodiscard]] inline const Items* ItemsOf(const Element& element) noexcept {
    return std::get_if<Items>(element.content.get());
}

/// The pieces of one encapsulated value, [0] being the content of the offset table item. Valid as
/// long as the element and its data set stay as they are.
class FragmentView {
public:
    FragmentView() = default;
    FragmentView(Bytes bytes, std::span<const ByteRange> ranges) : bytes_(bytes), ranges_(ranges) {}

    [[nodiscard]] std::size_t Count() const noexcept { return ranges_.size(); }
    [[nodiscard]] bool IsEmpty() const noexcept { return ranges_.empty(); }
    [[nodiscard]] Bytes operator[](std::size_t index) const {
        return bytes_.subspan(ranges_[index].offset, ranges_[index].length);
    }

private:
    Bytes bytes_;
    std::span<const ByteRange> ranges_;
};

}  // namespace quorvex::dicom
