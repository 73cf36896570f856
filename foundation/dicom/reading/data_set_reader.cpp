#include "foundation/dicom/reading/data_set_reader.h"

#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/reading/element_reader.h"
#include "foundation/dicom/reading/inflate.h"

#include <optional>
#include <string_view>

namespace quorvex::dicom {
namespace {

/// Of a data set without meta information ahead: fewer elements are more likely junk.
constexpr std::size_t kFewestOfBare = 2;

/// How the data set behind the meta information is said to be encoded.
struct Label {
    TRANSFER_SYNTAX number = kSyntaxNone;  ///< none for a UID that is not known
    Encoding encoding;
    bool isDeflated = false;
    bool isEncapsulated = false;
};

Label LabelOf(const TransferSyntax* syntax) {
    if (syntax == nullptr) return {};
    return {syntax->number,
            {syntax->isExplicit, syntax->isBigEndian},
            syntax->isDeflated,
            syntax->isEncapsulated};
}

TRANSFER_SYNTAX NativeSyntax(Encoding encoding) {
    if (encoding.isBigEndian) return encoding.isExplicit ? kExplicitBigEndian : kImplicitBigEndian;
    return encoding.isExplicit ? kExplicitLittleEndian : kImplicitLittleEndian;
}

class DataSetReader {
public:
    DataSetReader(ByteFeed& feed, std::size_t begin) : feed_(feed), elements_(feed, begin) {}

    /// Reads group 0002, where it stands ahead, and labels the data set by its UID or `fallback`.
    /// False for one that is damaged.
    [[nodiscard]] bool ReadMeta(const Label& fallback);
    /// Group of the first element; 0xFFFF where there is none.
    [[nodiscard]] std::uint32_t FirstGroup();
    [[nodiscard]] bool InflateRest();
    /// Looks at the first element for the encoding that the data set really has.
    void CorrectLabel();
    [[nodiscard]] ReadOutcome ReadRest(std::uint32_t stopTag);
    [[nodiscard]] ReadOutcome Refuse(const char* why);
    [[nodiscard]] bool HasMeta() const noexcept { return metaCount_ != 0; }

    [[nodiscard]] const Label& GetLabel() const noexcept { return label_; }

private:
    [[nodiscard]] bool HasElement() { return feed_.Has(elements_.Position(), kShortHeader); }
    [[nodiscard]] const unsigned char* Next() const { return feed_.At(elements_.Position()); }
    [[nodiscard]] std::uint32_t NextTag(bool isBigEndian) const {
        return LoadTag(Next(), isBigEndian);
    }
    [[nodiscard]] std::optional<ElementHeader> PixelDataHere();
    [[nodiscard]] bool IsJunk() const;
    [[nodiscard]] ReadOutcome Outcome(DCMRESULT result, std::size_t offset, const char* failure);

    ByteFeed& feed_;
    ElementReader elements_;
    Label label_;
    std::size_t begin_ = 0;  ///< of the data set behind the meta information
    std::size_t metaCount_ = 0;
};

bool DataSetReader::ReadMeta(const Label& fallback) {
    label_ = fallback;
    const bool hasMeta = HasElement() && IsMetaTag(NextTag(false));
    if (hasMeta && !elements_.ReadMeta({IsVr(Next() + 4), false})) return false;
    if (elements_.IsCutOff()) return false;
    const std::string_view uid = UidOf(elements_.ValueRead(tag::kTransferSyntaxUID));
    if (!uid.empty()) label_ = LabelOf(TransferSyntaxOfUid(uid));
    begin_ = elements_.Position();
    metaCount_ = elements_.ElementCount();
    return true;
}

std::uint32_t DataSetReader::FirstGroup() {
    return HasElement() ? GroupOf(NextTag(label_.encoding.isBigEndian)) : 0xFFFF;
}

/// A data set that is labelled as deflated and is not stays as it is.
bool DataSetReader::InflateRest() {
    const bool isPlain = HasElement() && GroupOf(NextTag(false)) == kFirstGroup && IsVr(Next() + 4);
    if (isPlain) return true;
    feed_.PullAll();
    const auto inflated = Inflate({Next(), feed_.Size() - begin_});
    if (inflated) feed_.Replace(begin_, *inflated);
    return inflated.has_value();
}

void DataSetReader::CorrectLabel() {
    if (!HasElement() || IsItemTag(NextTag(label_.encoding.isBigEndian))) return;
    Encoding& encoding = label_.encoding;
    const Encoding labelled = encoding;
    const bool isSwapped = GroupOf(NextTag(!labelled.isBigEndian)) == kFirstGroup;
    if (isSwapped) encoding.isBigEndian = !labelled.isBigEndian;
    // As implicit VR the letters would be a length of 16 KiB and more, which no first element has.
    const bool isOdd = labelled.isExplicit && elements_.UnknownForm(encoding).has_value();
    encoding.isExplicit = isOdd || IsVr(Next() + 4);
    const bool isByEncoding = label_.number != kSyntaxNone && !label_.isEncapsulated;
    if (isByEncoding && encoding != labelled) label_.number = NativeSyntax(encoding);
}

ReadOutcome DataSetReader::Outcome(DCMRESULT result, std::size_t offset, const char* failure) {
    ReadOutcome outcome{result, offset, elements_.TakeDataSet(label_.encoding), failure};
    outcome.dataSet->syntax = label_.number;
    return outcome;
}

ReadOutcome DataSetReader::Refuse(const char* why) {
    return Outcome(kDcmFailure, begin_, why);
}

std::optional<ElementHeader> DataSetReader::PixelDataHere() {
    if (!HasElement() || NextTag(label_.encoding.isBigEndian) != tag::kPixelData) return {};
    const auto unknown = elements_.UnknownForm(label_.encoding);
    const HeaderForm form = unknown.value_or(HeaderFormOf(Next(), label_.encoding));
    if (!feed_.Has(elements_.Position(), HeaderBytes(form))) return {};
    return ReadHeader(Next(), label_.encoding, form);
}

/// Almost any bytes read as one element that is longer than the data.
bool DataSetReader::IsJunk() const {
    const bool isAlone = elements_.ElementCount() == metaCount_ + 1;
    return isAlone && elements_.IsCutOff() && *LookUp(elements_.LastTag()).keyword == 0;
}

ReadOutcome DataSetReader::ReadRest(std::uint32_t stopTag) {
    bool isGood = elements_.ReadMain(label_.encoding, stopTag);
    const std::size_t offset = elements_.Position();
    const auto pixelData = PixelDataHere();
    if (isGood && label_.isDeflated) isGood = elements_.ReadMain(label_.encoding, kNoStopTag);
    if (feed_.IsRefused()) return Refuse("the data could not be read to their end");
    if (!isGood) return Refuse(elements_.Failure());
    const std::size_t fewest = HasMeta() ? 1 : kFewestOfBare;
    const bool isNone = elements_.ElementCount() < metaCount_ + fewest || IsJunk();
    if (isNone) return Refuse("there is no data set");
    ReadOutcome outcome = Outcome(kDcmSuccess, offset, "");
    if (pixelData) {
        outcome.dataSet->pixelDataHeaderBytes = pixelData->bytes;
        outcome.dataSet->pixelDataVr = pixelData->vr;
    }
    return outcome;
}

}  // namespace

ReadOutcome ReadPart10(ByteFeed& feed, std::uint32_t stopTag) {
    DataSetReader reader(feed, kPart10Start);
    const bool isPart10 = feed.Has(0, kPart10Start) && HasPart10Marker({feed.At(0), kPart10Start});
    if (!isPart10) return reader.Refuse("this is no DICOM file: it has no marker");
    if (!reader.ReadMeta(LabelOf(TransferSyntaxOf(kExplicitLittleEndian)))) {
        return reader.Refuse("the meta information cannot be read");
    }
    if (reader.GetLabel().isDeflated && !reader.InflateRest()) {
        return reader.Refuse("the deflated data set cannot be inflated");
    }
    reader.CorrectLabel();
    return reader.ReadRest(stopTag);
}

ReadOutcome ReadBareDataSet(ByteFeed& feed, std::uint32_t startTag, std::uint32_t stopTag,
                            TRANSFER_SYNTAX syntax) {
    DataSetReader reader(feed, 0);
    if (!reader.ReadMeta(LabelOf(TransferSyntaxOf(syntax)))) {
        return reader.Refuse("the meta information cannot be read");
    }
    if (reader.GetLabel().isDeflated && !reader.InflateRest()) {
        return reader.Refuse("the deflated data set cannot be inflated");
    }
    reader.CorrectLabel();
    if (!reader.HasMeta() && reader.FirstGroup() != GroupOf(startTag)) {
        return reader.Refuse("no data set begins here");
    }
    return reader.ReadRest(stopTag);
}

}  // namespace quorvex::dicom
