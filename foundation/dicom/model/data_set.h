/// A data set: elements sorted by tag, with their values in place in the bytes that were read or
/// owned by the elements.
#pragma once

#include "foundation/dicom/model/element.h"
#include "foundation/dicom/model/encoding.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvex::dicom {

/// Main data sets hold their file meta information (group 0002) like any other element. A copy is
/// cheap and shares content; `Unshared` copies the content of an element before it is changed.
class DataSet {
public:
    DataSet() = default;
    DataSet(std::shared_ptr<const ByteBuffer> source, std::vector<Element> sorted)
        : source_(std::move(source)), elements_(std::move(sorted)) {}

    [[nodiscard]] std::span<const Element> Elements() const noexcept { return elements_; }
    /// Null where there is no such element.
    [[nodiscard]] const Element* Find(std::uint32_t tag) const noexcept {
        const Element* first = elements_.data();
        for (std::size_t count = elements_.size(); count != 0; count /= 2) {
            const Element* const middle = first + count / 2;
            if (middle->tag == tag) return middle;
            if (middle->tag > tag) continue;
            first = middle + 1;
            --count;
        }
        return nullptr;
    }

    /// Puts an element in its place; replaces one of the same tag.
    Element& Put(Element element);
    /// The same with a value that the element owns, little endian.
    Element& PutBytes(std::uint32_t tag, MC_VR vr, ByteBuffer value);
    Element& PutItems(std::uint32_t tag, Items items);
    /// `ranges` count in `bytes`; the first is the offset table item.
    Element& PutFragments(std::uint32_t tag, MC_VR vr, ByteBuffer bytes,
                          std::vector<ByteRange> ranges);
    void Remove(std::uint32_t tag) noexcept;
    /// The element for changing, or null. What it owns may be shared: change that by `Unshared`.
    [[nodiscard]] Element* FindMutable(std::uint32_t tag) noexcept;

    /// The stored bytes of a value; of a sequence or encapsulated data that were read, everything
    /// up to their delimiter. Valid until the data set changes.
    [[nodiscard]] Bytes ValueOf(const Element& element) const noexcept {
        if (const auto* bytes = std::get_if<ByteBuffer>(element.content.get())) return *bytes;
        if (source_ == nullptr) return {};
        return Bytes(*source_).subspan(element.offset, element.length);
    }
    /// Empty for a value that is not encapsulated.
    [[nodiscard]] FragmentView FragmentsOf(const Element& element) const noexcept;

    /// The text of Specific Character Set that applies here: this data set's own, or else the one
    /// of the data set that this item was read from.
    [[nodiscard]] std::string_view CharacterSetText() const noexcept;
    void InheritCharacterSet(std::shared_ptr<const std::string> text) noexcept {
        inheritedCharacterSet_ = std::move(text);
    }

    /// Levels of items below this data set; at most `kDeepestNesting`.
    [[nodiscard]] int Depth() const noexcept;

    /// How the data set was read; of one that was not, how its transfer syntax writes it.
    Encoding encoding;
    /// Main data sets only. Follows what the bytes are where a file's label lies about VR or order.
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    /// VR of the Pixel Data that the reading stopped ahead of.
    MC_VR pixelDataVr = MC_VR_OW;
    /// Length of the header of Pixel Data that stopped the reading; 0 where nothing of it was seen.
    std::size_t pixelDataHeaderBytes = 0;

private:
    std::shared_ptr<const ByteBuffer> source_;
    std::vector<Element> elements_;
    std::shared_ptr<const std::string> inheritedCharacterSet_;
};

/// The content of an element as `Kind` (ByteBuffer, Items or Fragments), owned by this element
/// alone: shared content is copied first, content of another kind is replaced by an empty one.
template <class Kind>
[[nodiscard]] Kind& Unshared(Element& element) {
    auto* kind = std::get_if<Kind>(element.content.get());
    if (kind == nullptr) {
        element.content = std::make_shared<Content>(Kind{});
    } else if (element.content.use_count() > 1) {
        element.content = std::make_shared<Content>(*kind);
    }
    return std::get<Kind>(*element.content);
}

}  // namespace quorvex::dicom
