#include "foundation/dicom/model/transfer_syntax.h"

#include <algorithm>
#include <array>

namespace quorvex::dicom {
namespace {

constexpr TransferSyntax Encapsulated(std::string_view uid, TRANSFER_SYNTAX number) {
    return {uid, number, true, false, false, true};
}

constexpr TRANSFER_SYNTAX Jpeg(std::uint32_t number) {
    return static_cast<TRANSFER_SYNTAX>(number);
}

constexpr std::array kSyntaxes = {
    TransferSyntax{"1.2.840.10008.1.2", kImplicitLittleEndian, false, false, false, false},
    TransferSyntax{"1.2.840.10008.1.2.1", kExplicitLittleEndian, true, false, false, false},
    TransferSyntax{"1.2.840.10008.1.2.2", kExplicitBigEndian, true, true, false, false},
    TransferSyntax{"", kImplicitBigEndian, false, true, false, false},
    TransferSyntax{"1.2.840.10008.1.2.1.99", kDeflatedExplicitLittleEndian, true, false, true,
                   false},
    Encapsulated("1.2.840.10008.1.2.5", kRle),
    Encapsulated("1.2.840.10008.1.2.4.50", kJpegBaseline),
    Encapsulated("1.2.840.10008.1.2.4.51", kJpegExtended),
    Encapsulated("1.2.840.10008.1.2.4.52", Jpeg(108)),
    Encapsulated("1.2.840.10008.1.2.4.53", Jpeg(109)),
    Encapsulated("1.2.840.10008.1.2.4.54", Jpeg(110)),
    Encapsulated("1.2.840.10008.1.2.4.55", Jpeg(111)),
    Encapsulated("1.2.840.10008.1.2.4.56", Jpeg(112)),
    Encapsulated("1.2.840.10008.1.2.4.57", kJpegLossless),
    Encapsulated("1.2.840.10008.1.2.4.58", Jpeg(114)),
    Encapsulated("1.2.840.10008.1.2.4.59", Jpeg(115)),
    Encapsulated("1.2.840.10008.1.2.4.60", Jpeg(116)),
    Encapsulated("1.2.840.10008.1.2.4.61", Jpeg(117)),
    Encapsulated("1.2.840.10008.1.2.4.62", Jpeg(118)),
    Encapsulated("1.2.840.10008.1.2.4.63", Jpeg(119)),
    Encapsulated("1.2.840.10008.1.2.4.64", Jpeg(120)),
    Encapsulated("1.2.840.10008.1.2.4.65", Jpeg(121)),
    Encapsulated("1.2.840.10008.1.2.4.66", Jpeg(122)),
    Encapsulated("1.2.840.10008.1.2.4.70", kJpegLosslessFirstOrder),
    Encapsulated("1.2.840.10008.1.2.4.80", kJpegLsLossless),
    Encapsulated("1.2.840.10008.1.2.4.81", kJpegLsNearLossless),
    Encapsulated("1.2.840.10008.1.2.4.90", kJpeg2000Lossless),
    Encapsulated("1.2.840.10008.1.2.4.91", kJpeg2000),
    Encapsulated("1.2.840.10008.1.2.1.98", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.92", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.93", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.100", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.100.1", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.101", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.101.1", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.102", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.102.1", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.103", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.103.1", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.104", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.104.1", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.105", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.105.1", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.106", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.106.1", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.107", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.108", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.110", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.111", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.112", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.201", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.202", kOtherEncapsulated),
    Encapsulated("1.2.840.10008.1.2.4.203", kOtherEncapsulated),
};

template <class Test>
const TransferSyntax* FindSyntax(Test test) {
    const auto* place = std::find_if(kSyntaxes.begin(), kSyntaxes.end(), test);
    return place == kSyntaxes.end() ? nullptr : place;
}

}  // namespace

const TransferSyntax* SyntaxOfUid(std::string_view uid) noexcept {
    if (uid.empty()) return nullptr;
    return FindSyntax([&](const TransferSyntax& syntax) { return syntax.uid == uid; });
}

const TransferSyntax* SyntaxOfNumber(TRANSFER_SYNTAX number) noexcept {
    if (number == kOtherEncapsulated) return nullptr;
    return FindSyntax([&](const TransferSyntax& syntax) { return syntax.number == number; });
}

}  // namespace quorvex::dicom
