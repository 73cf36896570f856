#include "c/sample_layout.h"

#include "c/presentation_record.h"
#include "quorvex/Attributes.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/Tags.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace quorvex::c {
namespace {

std::int32_t WordOf(const CDcmObject& header, std::uint32_t tag, std::int32_t absent) {
    return Read<unsigned short>(header, tag).value_or(static_cast<unsigned short>(absent));
}

/// As GetAFrameUnpacked() gives them; 0 where it gives none.
std::int32_t SampleBytes(std::int32_t bits, FrameCoding coding) noexcept {
    const bool isNative = coding != FrameCoding::kJpeg && coding != FrameCoding::kJpeg2000 &&
                          coding != FrameCoding::kJpegLs && coding != FrameCoding::kJpegXl;
    if (bits == 64) return 8;
    if (bits < 1 || bits > 32) return 0;
    if (bits <= 8) return 1;
    return bits <= 16 || !isNative ? 2 : 4;
}

bool IsLossy(const CDcmObject& header, const TransferSyntax* syntax) {
    const auto stated = Read<CString>(header, tag::kLossyImageCompression);
    return (syntax != nullptr && syntax->isLossy) || stated == CString("01");
}

template <class Sample>
double Load(const unsigned char* bytes) noexcept {
    Sample sample{};
    std::memcpy(&sample, bytes, sizeof sample);
    return static_cast<double>(sample);
}

/// Reads whole numbers: the bits that are stored, with their sign.
class StoredInteger {
public:
    explicit StoredInteger(const quorvex_facts& facts) noexcept
        : bytes_(static_cast<std::size_t>(facts.sample_bytes)),
          unused_(64 - (facts.bits_stored >= 1 && facts.bits_stored <= facts.bits_allocated
                            ? std::min(facts.bits_stored, 8 * facts.sample_bytes)
                            : 8 * facts.sample_bytes)),
          isSigned_(facts.is_signed != 0) {}
    [[nodiscard]] double At(const unsigned char* bytes) const noexcept {
        std::uint64_t word = 0;
        for (std::size_t i = 0; i < bytes_; ++i) word |= std::uint64_t{bytes[i]} << (8 * i);
        word <<= unused_;
        if (!isSigned_) return static_cast<double>(word >> unused_);
        return static_cast<double>(static_cast<std::int64_t>(word) >> unused_);
    }

private:
    std::size_t bytes_;
    int unused_;
    bool isSigned_;
};

/// The entries of a Modality LUT; those of 8 bits may lie two in a word.
std::vector<std::uint16_t> TableOf(const CDcmObject& header, const CXGSPSInfo& info) {
    const auto entries =
        static_cast<std::size_t>(info.modalityLUTCount == 0 ? 65536 : info.modalityLUTCount);
    std::vector<std::uint16_t> table(info.modalityLUTData, info.modalityLUTData + entries);
    const auto item = Read<CDcmItem>(header, tag::kModalityLUTSequence);
    int words = 0;
    if (!item || item->GetValueCount(tag::kLUTData, words) != kDcmSuccess) return table;
    const bool isPacked = words > 0 && static_cast<std::size_t>(words) == (entries + 1) / 2;
    if (!isPacked || entries < 2) return table;
    for (std::size_t i = entries; i-- > 0;)
        table[i] = static_cast<std::uint16_t>((table[i / 2] >> (8 * (i % 2))) & 0xFF);
    return table;
}

}  // namespace

std::optional<quorvex_facts> FactsOf(const CxDcmParser& parser) {
    const CDcmObject* const header = parser.GetHeader();
    if (header == nullptr) return std::nullopt;
    TRANSFER_SYNTAX number = kSyntaxNone;
    header->GetTransferSyntax(number);
    const TransferSyntax* const syntax = TransferSyntaxOf(number);
    quorvex_facts facts{};
    facts.frames = parser.GetFrameCount();
    facts.rows = WordOf(*header, tag::kRows, 0);
    facts.columns = WordOf(*header, tag::kColumns, 0);
    facts.samples = WordOf(*header, tag::kSamplesPerPixel, 1);
    facts.bits_allocated = WordOf(*header, tag::kBitsAllocated, 0);
    facts.bits_stored = WordOf(*header, tag::kBitsStored, facts.bits_allocated);
    facts.is_signed = WordOf(*header, tag::kPixelRepresentation, 0) == 1 ? 1 : 0;
    facts.sample_type = static_cast<std::int32_t>(parser.GetSampleType());
    facts.is_lossy = IsLossy(*header, syntax) ? 1 : 0;
    facts.sample_bytes = SampleBytes(facts.bits_allocated,
                                     syntax != nullptr ? syntax->coding : FrameCoding::kNative);
    if (facts.rows == 0 || facts.columns == 0 || facts.sample_bytes == 0) return std::nullopt;
    facts.frame_bytes =
        static_cast<std::size_t>(facts.rows) * static_cast<std::size_t>(facts.columns) *
        static_cast<std::size_t>(facts.samples) * static_cast<std::size_t>(facts.sample_bytes);
    if (const auto spacing = ReadPair<double>(*header, tag::kPixelSpacing)) {
        facts.row_spacing = spacing->first;
        facts.column_spacing = spacing->second;
    }
    return facts;
}

ModalityOf::ModalityOf(CxDcmParser& parser, int frame) {
    PresentationRecord record;
    CXGSPSInfo& info = record.Info();
    CXGSPSObject reader;
    reader.SetRules(Rules::kStandard);
    CDcmObject* const header = parser.GetHeader();
    reader.GSPSApplier(header, &info, CString(), frame + 1);
    if (info.modalityLUTData != nullptr) {
        table_ = TableOf(*header, info);
        const bool isSigned = WordOf(*header, tag::kPixelRepresentation, 0) == 1;
        first_ =
            isSigned ? static_cast<std::int16_t>(info.modalityLUTFirst) : info.modalityLUTFirst;
        return;
    }
    if (info.rescaleSlope != 0.0) {
        slope_ = info.rescaleSlope;
        intercept_ = info.rescaleIntercept;
        return;
    }
    slope_ = Read<double>(*header, tag::kDoseGridScaling).value_or(1.0);
}

double ModalityOf::Value(double stored) const noexcept {
    if (table_.empty()) return stored * slope_ + intercept_;
    const auto last = static_cast<double>(table_.size() - 1);
    const double place = std::clamp(stored - first_, 0.0, last);
    return table_[static_cast<std::size_t>(place)];
}

void ToValues(const quorvex_facts& facts, const ModalityOf& modality,
              std::span<const unsigned char> samples, std::span<float> values) noexcept {
    const auto bytes = static_cast<std::size_t>(facts.sample_bytes);
    const std::size_t count = std::min(values.size(), samples.size() / bytes);
    const StoredInteger integer(facts);
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char* const sample = samples.data() + i * bytes;
        double stored = 0.0;
        if (facts.sample_type == QUORVEX_SAMPLES_FLOAT32)
            stored = Load<float>(sample);
        else if (facts.sample_type == QUORVEX_SAMPLES_FLOAT64)
            stored = Load<double>(sample);
        else
            stored = integer.At(sample);
        values[i] = static_cast<float>(modality.Value(stored));
    }
}

}  // namespace quorvex::c
