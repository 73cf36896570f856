#include "foundation/dicom/model/data_set.h"

#include "foundation/dicom/model/tags.h"

#include <algorithm>

namespace quorvex::dicom {
namespace {

template <class Iterator>
Iterator LowerBound(Iterator first, Iterator last, std::uint32_t tag) {
    return std::lower_bound(
        first, last, tag, [](const Element& element, std::uint32_t t) { return element.tag < t; });
}

}  // namespace

Element* DataSet::FindMutable(std::uint32_t tag) noexcept {
    const auto place = LowerBound(elements_.begin(), elements_.end(), tag);
    return place != elements_.end() && place->tag == tag ? &*place : nullptr;
}

Element& DataSet::Put(Element element) {
    const auto place = LowerBound(elements_.begin(), elements_.end(), element.tag);
    if (place == elements_.end() || place->tag != element.tag) {
        return *elements_.insert(place, std::move(element));
    }
    *place = std::move(element);
    return *place;
}

Element& DataSet::PutBytes(std::uint32_t tag, MC_VR vr, ByteBuffer value) {
    return Put({.tag = tag, .vr = vr, .content = std::make_shared<Content>(std::move(value))});
}

Element& DataSet::PutItems(std::uint32_t tag, Items items) {
    return Put(
        {.tag = tag, .vr = MC_VR_SQ, .content = std::make_shared<Content>(std::move(items))});
}

Element& DataSet::PutFragments(std::uint32_t tag, MC_VR vr, ByteBuffer bytes,
                               std::vector<ByteRange> ranges) {
    Fragments fragments{std::make_shared<const ByteBuffer>(std::move(bytes)), std::move(ranges)};
    return Put({.tag = tag, .vr = vr, .content = std::make_shared<Content>(std::move(fragments))});
}

void DataSet::Remove(std::uint32_t tag) noexcept {
    const auto place = LowerBound(elements_.begin(), elements_.end(), tag);
    if (place != elements_.end() && place->tag == tag) elements_.erase(place);
}

FragmentView DataSet::FragmentsOf(const Element& element) const noexcept {
    const auto* fragments = std::get_if<Fragments>(element.content.get());
    if (fragments == nullptr) return {};
    const ByteBuffer* bytes = fragments->bytes ? fragments->bytes.get() : source_.get();
    if (bytes == nullptr) return {};
    return {*bytes, fragments->ranges};
}

std::string_view DataSet::CharacterSetText() const noexcept {
    if (const Element* own = Find(tag::kSpecificCharacterSet)) return CharactersOf(ValueOf(*own));
    return inheritedCharacterSet_ ? std::string_view(*inheritedCharacterSet_) : std::string_view();
}

int DataSet::Depth() const noexcept {
    int deepest = 0;
    for (const Element& element : elements_) {
        const Items* items = ItemsOf(element);
        if (items == nullptr) continue;
        for (const auto& item : *items) deepest = std::max(deepest, 1 + item->Depth());
    }
    return deepest;
}

}  // namespace quorvex::dicom
