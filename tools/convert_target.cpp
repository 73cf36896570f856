#include "tools/convert_target.h"

#include "quorvex/Tags.h"
#include "tools/report.h"

#include <algorithm>
#include <array>

namespace quorvex::tools {
namespace {

constexpr std::array kTargets = {
    ConvertTarget{"implicit", kXferUncompressedImplicit, kImplicitLittleEndian, true, 0, 0, 0,
                  nullptr},
    ConvertTarget{"explicit", kXferUncompressedExplicit, kExplicitLittleEndian, true, 0, 0, 0,
                  nullptr},
    ConvertTarget{"jpeg", kXferJpegBaseline, kJpegBaseline, false, 97, 1, 100, nullptr},
    ConvertTarget{"jpeg12", kXferJpegExtended, kJpegExtended, false, 1, 1000, 1, nullptr},
    ConvertTarget{"jpeg-lossless", kXferJpegLossless, kJpegLosslessFirstOrder, true, 0, 0, 0,
                  nullptr},
    ConvertTarget{"j2k", kXferJpeg2000, kJpeg2000, false, 5, 1000, 1, "YBR_ICT"},
    ConvertTarget{"j2k-lossless", kXferJpeg2000Lossless, kJpeg2000Lossless, true, 0, 0, 0,
                  "YBR_RCT"},
};

}  // namespace

void NameColoursOf(CDcmObject& object, const ConvertTarget& target) {
    CString photometric;
    object.GetValue(tag::kPhotometricInterpretation, photometric);
    if (target.codedColours != nullptr && photometric == CString("RGB"))
        object.SetValue(tag::kPhotometricInterpretation, target.codedColours);
}

const ConvertTarget& ConvertTargetOf(const std::string& name) {
    const auto* found = std::ranges::find_if(
        kTargets, [&](const ConvertTarget& target) { return name == target.name; });
    if (found != kTargets.end()) return *found;
    throw WrongUsage(
        "the target is implicit, explicit, jpeg, jpeg12, jpeg-lossless, j2k or j2k-lossless, not " +
        name);
}

}  // namespace quorvex::tools
