#include "tools/convert/checks/attribute_comparison.h"

#include "quorvex/Tags.h"
#include "tools/convert_target.h"

#include <algorithm>
#include <array>
#include <compare>
#include <cstdio>
#include <new>
#include <span>
#include <utility>

namespace quorvex::tools {
namespace {

constexpr std::uint32_t kMetaGroup = 0x0002;
constexpr std::uint32_t kItemGroup = 0xFFFE;

bool IsCompared(const DcmElementView& element) {
    const std::uint32_t group = element.tag >> 16;
    if ((element.tag & 0xFFFF) == 0 || group == kItemGroup) return false;
    if (element.depth > 0) return true;
    constexpr std::array kPixels = {tag::kPixelData, tag::kExtendedOffsetTable,
                                    tag::kExtendedOffsetTableLengths};
    if (std::ranges::find(kPixels, element.tag) != kPixels.end()) return false;
    return group != kMetaGroup || element.tag == tag::kTransferSyntaxUID;
}

/// The bytes that a change of byte order reverses.
std::size_t UnitOf(MC_VR vr) {
    switch (vr) {
        case MC_VR_AT:
        case MC_VR_OW:
        case MC_VR_SS:
        case MC_VR_US:
            return 2;
        case MC_VR_OF:
        case MC_VR_OL:
        case MC_VR_FL:
        case MC_VR_SL:
        case MC_VR_UL:
            return 4;
        case MC_VR_OD:
        case MC_VR_OV:
        case MC_VR_FD:
        case MC_VR_SV:
        case MC_VR_UV:
            return 8;
        default:
            return 1;
    }
}

/// The elements of an object as its walk shows them.
struct Elements {
    std::vector<DcmElementView> views;
    bool isBigEndian = false;
    bool isExplicit = false;
};

MC_STATUS Collect(const DcmElementView& element, void* user) {
    if (IsCompared(element)) static_cast<std::vector<DcmElementView>*>(user)->push_back(element);
    return kMcContinue;
}

Elements ElementsOf(const CDcmObject& object) {
    Elements elements;
    if (object.WalkElements(&elements.views, Collect) != kDcmSuccess) throw std::bad_alloc();
    const TransferSyntax* syntax = SyntaxOf(object);
    elements.isBigEndian = syntax != nullptr && syntax->isBigEndian;
    elements.isExplicit = syntax == nullptr || syntax->isExplicit;
    return elements;
}

/// One byte of a value as a little-endian object has it.
unsigned char ByteAt(const DcmElementView& element, std::size_t unit, std::size_t at) {
    const std::size_t swapped = at - at % unit + (unit - 1 - at % unit);
    return element.data[swapped < element.length ? swapped : at];
}

bool IsPad(const DcmElementView& element) {
    const unsigned char last = element.data[element.length - 1];
    return last == 0 || last == ' ';
}

/// Whether two lengths differ by no more than the byte that makes one of them even.
bool FitInLength(const DcmElementView& one, const DcmElementView& other) {
    if (one.length == other.length) return true;
    const auto& [shorter, longer] =
        one.length < other.length ? std::pair(one, other) : std::pair(other, one);
    return shorter.length + 1 == longer.length && longer.length % 2 == 0 && IsPad(longer);
}

class Comparison {
public:
    Comparison(const CDcmObject& source, const CDcmObject& output)
        : source_(ElementsOf(source)), output_(ElementsOf(output)) {}

    std::vector<ChangedAttribute> Run() {
        CompareLevel(source_.views, output_.views);
        return std::move(changed_);
    }

private:
    using Views = std::span<const DcmElementView>;

    /// Items of one sequence, or the main data sets.
    void CompareLevel(Views one, Views other) {
        while (!one.empty() || !other.empty()) {
            const auto order = OrderOf(one, other);
            if (std::is_lt(order)) {
                Note(one.front());
                one = one.subspan(ExtentOf(one));
            } else if (std::is_gt(order)) {
                Note(other.front());
                other = other.subspan(ExtentOf(other));
            } else {
                const std::size_t extent = ExtentOf(one);
                const std::size_t otherExtent = ExtentOf(other);
                ComparePair(one.first(extent), other.first(otherExtent));
                one = one.subspan(extent);
                other = other.subspan(otherExtent);
            }
        }
    }

    /// Which of them has an element that the other one may lack.
    static std::strong_ordering OrderOf(Views one, Views other) {
        if (other.empty()) return std::strong_ordering::less;
        if (one.empty()) return std::strong_ordering::greater;
        return std::pair(one.front().itemIndex, one.front().tag) <=>
               std::pair(other.front().itemIndex, other.front().tag);
    }

    /// An element with all that its items hold.
    static std::size_t ExtentOf(Views views) {
        const auto next = std::find_if(views.begin() + 1, views.end(), [&](const auto& view) {
            return view.depth <= views.front().depth;
        });
        return static_cast<std::size_t>(next - views.begin());
    }

    void ComparePair(Views one, Views other) {
        const DcmElementView& before = one.front();
        const DcmElementView& after = other.front();
        const bool areSequences = before.vr == MC_VR_SQ && after.vr == MC_VR_SQ;
        if (areSequences && before.valueCount == after.valueCount)
            return CompareLevel(one.subspan(1), other.subspan(1));
        if (areSequences || !HaveSameValue(before, after)) Note(before);
    }

    [[nodiscard]] bool HaveSameValue(const DcmElementView& one, const DcmElementView& other) const {
        if (!HaveSameVr(one, other)) return false;
        if (one.vr == MC_VR_SQ || other.vr == MC_VR_SQ)  // known to one of the objects only
            return (one.vr == MC_VR_SQ ? one.valueCount : one.length) == 0 &&
                   (other.vr == MC_VR_SQ ? other.valueCount : other.length) == 0;
        if (!FitInLength(one, other)) return false;
        const std::size_t unit = source_.isBigEndian ? UnitOf(one.vr) : 1;
        const std::size_t otherUnit = output_.isBigEndian ? UnitOf(other.vr) : 1;
        const std::size_t length = std::min(one.length, other.length);
        if (unit == 1 && otherUnit == 1) return std::equal(one.data, one.data + length, other.data);
        for (std::size_t i = 0; i < length; ++i)
            if (ByteAt(one, unit, i) != ByteAt(other, otherUnit, i)) return false;
        return true;
    }

    /// Where both objects name VRs, only a value too long for its VR may be UN now.
    [[nodiscard]] bool HaveSameVr(const DcmElementView& one, const DcmElementView& other) const {
        if (one.vr == other.vr || other.vr == MC_VR_UN) return true;
        return !source_.isExplicit || !output_.isExplicit;
    }

    void Note(const DcmElementView& element) {
        const auto isSame = [&](const auto& known) { return known.tag == element.tag; };
        if (std::ranges::any_of(changed_, isSame)) return;
        std::string name = element.keyword;
        if (name.empty()) {
            std::array<char, 16> text{};
            std::snprintf(text.data(), text.size(), "(%04x,%04x)", element.tag >> 16,
                          element.tag & 0xFFFF);
            name = text.data();
        }
        changed_.push_back({element.tag, std::move(name)});
    }

    Elements source_;
    Elements output_;
    std::vector<ChangedAttribute> changed_;
};

}  // namespace

std::vector<ChangedAttribute> CompareAttributes(const CDcmObject& source,
                                                const CDcmObject& output) {
    return Comparison(source, output).Run();
}

}  // namespace quorvex::tools
