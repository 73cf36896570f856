#include "foundation/dicom/reading/resynchronise.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/model/value_representation.h"
#include "foundation/dicom/reading/element_header.h"
#include "foundation/dicom/reading/unknown_vr.h"

#include <algorithm>
#include <optional>

namespace quorvex::dicom {
namespace {

constexpr int kFewestElements = 2;

bool EndsHeader(std::uint32_t tag) {
    return tag == tag::kPixelData || tag == tag::kFloatPixelData ||
           tag == tag::kDoubleFloatPixelData || tag == tag::kDataSetTrailingPadding;
}

bool HoldsFragments(const ElementHeader& header) {
    return Describe(header.vr).kind == ValueKind::kRaw && header.vr != MC_VR_UN;
}

/// Rules out, without looking further, most of what only looks like group 0008.
bool IsTooLong(const unsigned char* eight, Encoding encoding) {
    if (encoding.isExplicit) return false;
    const auto length = Load<std::uint32_t>(eight + 4, encoding.isBigEndian);
    return length > kLongestFirstValue && length != kUndefinedLength;
}

bool IsMeta(const unsigned char* eight) {
    return IsMetaTag(LoadTag(eight, false)) && IsVr(eight + kTagBytes);
}

/// Of a data set whose first element begins with these eight bytes.
std::optional<Encoding> EncodingAt(const unsigned char* eight) {
    for (const bool isBigEndian : {false, true}) {
        const bool isFirst = GroupOf(LoadTag(eight, isBigEndian)) == kFirstGroup;
        if (isFirst) return Encoding{IsVr(eight + 4), isBigEndian};
    }
    return std::nullopt;
}

}  // namespace

/// One walk along the elements from a position. It marks each place that it visits as failed; after
/// a walk that succeeds, a second one clears the marks.
class ChainWalk {
public:
    enum class Manner { kMark, kClear, kLenient };

    ChainWalk(DataSetFinder& finder, std::size_t at, Encoding encoding, Manner manner)
        : finder_(finder), data_(finder.data_), at_(at), encoding_(encoding), manner_(manner) {}

    /// What looks ahead in the data.
    [[nodiscard]] bool Has(std::size_t position, std::size_t count) {
        const std::size_t size = finder_.size_;
        if (position > size || count > size - position) return false;
        return finder_.HasAtHand(position, count);
    }
    [[nodiscard]] const unsigned char* At(std::size_t position) const noexcept {
        return data_.data() + position;
    }

    bool Run() {
        if (Left() < kShortHeader || !IsMeta(data_.data() + at_)) return RunDataSet();
        bool namesSyntax = false;
        if (!RunMeta(namesSyntax) || !Has(at_, kShortHeader)) return false;
        if (namesSyntax) return true;  // bytes that do so by chance are not met
        const auto encoding = EncodingAt(data_.data() + at_);
        if (encoding) encoding_ = *encoding;
        return encoding && RunDataSet();
    }

private:
    bool RunMeta(bool& namesSyntax) {
        for (std::uint32_t lastTag = 0;;) {
            if (Left() < kShortHeader) return true;
            if (!Has(at_, kShortHeader)) return false;
            if (!IsMetaTag(LoadTag(At(at_), false))) return true;
            const auto header = Header();
            if (!header) return false;
            if (lastTag == 0 ? !IsFirst(*header) : header->tag <= lastTag) return false;
            if (!Visit(&DataSetFinder::FailedPlaces::elements)) return false;
            lastTag = header->tag;
            const std::size_t value = at_ + header->bytes;
            if (!SkipValue(*header, 0)) return false;
            if (lastTag != tag::kTransferSyntaxUID) continue;
            if (!Has(value, at_ - value)) return false;
            namesSyntax = TransferSyntaxOfUid(UidOf(data_.subspan(value, at_ - value))) != nullptr;
        }
    }

    bool RunDataSet() {
        std::uint32_t lastTag = 0;
        for (int count = 0;;) {
            if (IsAtEnd()) return count >= kFewestElements;
            const auto header = Header();
            if (!header) return IsLenient() && count >= kFewestElements;
            if (EndsHeader(header->tag)) return count >= kFewestElements;
            if (IsLenient() && header->tag == 0)
                return count >= kFewestElements;  // padded with zeros
            const bool isStray = IsItemTag(header->tag);
            const bool isInOrder = isStray || header->tag > lastTag || IsLenient();
            if (count == 0 ? !IsFirst(*header) : !isInOrder) return false;
            if (!Visit(&DataSetFinder::FailedPlaces::elements)) return false;
            if (isStray ? !SkipStray(*header) : !SkipValue(*header, 0)) return false;
            if (isStray) continue;
            lastTag = header->tag;
            ++count;
        }
    }

    /// Steps over what some writers leave behind outside of any sequence.
    bool SkipStray(const ElementHeader& header) {
        at_ += kShortHeader;
        if (header.tag != tag::kItem) return true;
        if (header.IsUndefined()) return SkipNested(1);
        const bool isHeaderAlone = IsLenient() && header.length > Left();
        return isHeaderAlone || SkipBytes(header.length);
    }

    bool IsLenient() const { return manner_ == Manner::kLenient; }
    bool IsAtEnd() const { return at_ == finder_.size_; }
    std::size_t Left() const { return finder_.size_ - at_; }

    bool IsFirst(const ElementHeader& header) const {
        return header.IsUndefined() || header.length <= kLongestFirstValue;
    }

    std::optional<ElementHeader> Header() {
        if (!Has(at_, kShortHeader)) return std::nullopt;
        const unsigned char* bytes = At(at_);
        std::optional form = HeaderFormOf(bytes, encoding_);
        if (LacksVr(bytes, encoding_))
            form = UnknownVr(*this, finder_.size_, encoding_.isBigEndian, true).FormAt(at_);
        if (!form || !Has(at_, HeaderBytes(*form))) return std::nullopt;
        return ReadHeader(bytes, encoding_, *form);
    }

    /// False where a walk has failed from here before.
    bool Visit(std::vector<bool> DataSetFinder::FailedPlaces::*kind) {
        if (IsLenient()) return true;
        std::vector<bool>& places = finder_.FailedIn(encoding_).*kind;
        if (places.empty()) places.resize(data_.size());
        if (manner_ == Manner::kMark && places[at_]) return false;
        places[at_] = manner_ == Manner::kMark;
        return true;
    }

    bool SkipValue(const ElementHeader& header, int depth) {
        if (IsItemTag(header.tag)) return false;
        at_ += header.bytes;
        if (!header.IsUndefined()) return SkipBytes(header.length);
        const Encoding outer = encoding_;
        if (header.vr == MC_VR_UN && outer.isExplicit) encoding_ = {false, false};
        const bool isGood = SkipItems(depth, HoldsFragments(header));
        encoding_ = outer;
        return isGood;
    }

    bool SkipBytes(std::uint32_t length) {
        if (!IsLenient() && (length % 2 != 0 || length > Left())) return false;
        at_ += std::min<std::size_t>(length, Left());
        return true;
    }

    /// Items up to the delimiter; depth is that of the data set that holds the sequence.
    bool SkipItems(int depth, bool areFragments) {
        if (depth == kDeepestNesting) return RefuseBy(Limit::kDeepestNesting);
        while (Left() >= kShortHeader) {
            if (!Has(at_, kShortHeader)) return false;
            const ElementHeader item = ReadHeader(At(at_), encoding_);
            if (!Visit(&DataSetFinder::FailedPlaces::items)) return false;
            at_ += kShortHeader;
            if (item.tag == tag::kSequenceDelimitationItem) return true;
            if (item.tag != tag::kItem || (item.IsUndefined() && areFragments)) return false;
            if (item.IsUndefined() ? !SkipNested(depth + 1) : !SkipBytes(item.length)) return false;
        }
        return IsLenient();
    }

    bool SkipNested(int depth) {
        while (const auto header = Header()) {
            if (!Visit(&DataSetFinder::FailedPlaces::nested)) return false;
            if (header->tag == tag::kItemDelimitationItem) {
                at_ += kShortHeader;
                return true;
            }
            if (!SkipValue(*header, depth)) return false;
        }
        return IsLenient() && IsAtEnd();
    }

    DataSetFinder& finder_;
    Bytes data_;
    std::size_t at_;
    Encoding encoding_;
    Manner manner_;
};

DataSetFinder::FailedPlaces& DataSetFinder::FailedIn(Encoding encoding) {
    return failed_[(encoding.isExplicit ? 1U : 0U) + (encoding.isBigEndian ? 2U : 0U)];
}

bool DataSetFinder::CanBegin(std::size_t position, Encoding encoding) {
    if (!ChainWalk(*this, position, encoding, ChainWalk::Manner::kMark).Run()) return false;
    static_cast<void>(ChainWalk(*this, position, encoding, ChainWalk::Manner::kClear).Run());
    return true;
}

bool DataSetFinder::CanBeginFile() {
    if (IsMeta(data_.data())) return true;
    const auto encoding = EncodingAt(data_.data());
    return encoding && ChainWalk(*this, 0, *encoding, ChainWalk::Manner::kLenient).Run();
}

FileBeginning DataSetFinder::BeginningOf(Bytes start, std::size_t size) {
    if (size < kShortHeader) return {};
    if (start.size() < kShortHeader) return {.needed = kShortHeader};
    DataSetFinder finder(start);
    finder.size_ = size;
    const bool canBegin = finder.CanBeginFile();
    return {.canBegin = canBegin, .needed = finder.needed_};
}

bool DataSetFinder::CanBeginAt(std::size_t position) {
    if (position >= data_.size() || data_.size() - position < kShortHeader) return false;
    if (position == 0) return CanBeginFile();
    const unsigned char* first = data_.data() + position;
    const auto encoding = IsMeta(first) ? Encoding{true, false} : EncodingAt(first);
    if (!encoding || IsTooLong(first, *encoding) || placesLeft_ == 0) return false;
    if (!CanBegin(position, *encoding)) return false;
    --placesLeft_;
    return true;
}

}  // namespace quorvex::dicom
