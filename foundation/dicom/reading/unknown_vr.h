/// Explicit headers whose VR is none: blanks, zeros, small letters, one of a later standard.
///
/// Nothing in such a header says how long it is. What follows does: of the forms that it may have,
/// that one is taken behind whose value an element with a known VR and no lower tag begins, or
/// another such header that leads to one, or where the data end.
#pragma once

#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/encoding.h"
#include "foundation/dicom/model/value_representation.h"
#include "foundation/dicom/reading/element_header.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvex::dicom {

/// `Source` tells by `Has` whether bytes are there, and gives them by `At`.
template <class Source>
class UnknownVr {
public:
    /// @param end     where the item ends that holds the header; far beyond any data for none
    /// @param isItem  a delimiter may follow
    UnknownVr(Source& source, std::size_t end, bool isBigEndian, bool isItem)
        : source_(source), end_(end), isBigEndian_(isBigEndian), isItem_(isItem) {}

    /// The form of the header at `position`, of which eight bytes are there; nothing where none is
    /// likely.
    [[nodiscard]] std::optional<HeaderForm> FormAt(std::size_t position) {
        if (LeadsOn(position)) return HeaderForm::kShort;
        return IsLong(position) ? std::optional(HeaderForm::kLong) : std::nullopt;
    }

private:
    static constexpr int kMostInARow = 16;

    [[nodiscard]] std::uint32_t TagAt(std::size_t position) const {
        return LoadTag(source_.At(position), isBigEndian_);
    }
    [[nodiscard]] bool HasHeader(std::size_t position) {
        return position <= end_ && end_ - position >= kShortHeader &&
               source_.Has(position, kShortHeader);
    }
    [[nodiscard]] bool IsEnd(std::size_t position) {
        return position == end_ || (source_.Has(position, 0) && !source_.Has(position, 1));
    }
    [[nodiscard]] std::size_t BehindShort(std::size_t position) const {
        return position + kShortHeader +
               Load<std::uint16_t>(source_.At(position) + kShortHeader - 2, isBigEndian_);
    }

    /// Whether the headers from here on, read as short ones, lead to one that is known.
    [[nodiscard]] bool LeadsOn(std::size_t position) {
        for (int i = 0; i < kMostInARow; ++i) {
            const std::uint32_t tag = TagAt(position);
            position = BehindShort(position);
            if (const auto isEnd = IsGoodEnd(position, tag)) return *isEnd;
        }
        return false;
    }

    /// True for what a value may end at, false for what it cannot; nothing for a header that is as
    /// unknown.
    [[nodiscard]] std::optional<bool> IsGoodEnd(std::size_t position, std::uint32_t lastTag) {
        if (IsEnd(position)) return true;
        if (!HasHeader(position)) return false;
        const std::uint32_t tag = TagAt(position);
        if (IsItemTag(tag)) return isItem_;
        if (tag < lastTag) return false;  // some writers repeat an element
        return IsVr(source_.At(position) + kTagBytes) ? std::optional(true) : std::nullopt;
    }

    [[nodiscard]] bool IsLong(std::size_t position) {
        const std::uint32_t tag = TagAt(position);
        const DictionaryEntry& entry = LookUp(tag);
        const bool mayBeLong = entry.vr == MC_VR_UN || Describe(entry.vr).hasLongLength;
        const unsigned char* header = source_.At(position);
        if (!mayBeLong || header[6] != 0 || header[7] != 0) return false;
        if (!source_.Has(position, kLongHeader)) return false;
        const auto length = Load<std::uint32_t>(source_.At(position) + 8, isBigEndian_);
        const std::size_t value = position + kLongHeader;
        if (length == kUndefinedLength) return HasHeader(value) && TagAt(value) == tag::kItem;
        const auto isGoodEnd = IsGoodEnd(value + length, tag);
        return isGoodEnd ? *isGoodEnd : LeadsOn(value + length);
    }

    Source& source_;
    std::size_t end_;
    bool isBigEndian_;
    bool isItem_;
};

/// Whether the header that begins with these eight bytes should have a VR and has none.
[[nodiscard]] inline bool LacksVr(const unsigned char* eight, Encoding encoding) noexcept {
    return encoding.isExplicit && !IsVr(eight + kTagBytes) &&
           !IsItemTag(LoadTag(eight, encoding.isBigEndian));
}

}  // namespace quorvex::dicom
