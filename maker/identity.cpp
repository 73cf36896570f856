#include "foundation/platform/clock.h"
#include "foundation/platform/host.h"
#include "foundation/types/answer.h"
#include "quorvex/CxDcmMaker.h"

#include <algorithm>
#include <string>

namespace quorvex {
namespace {

/// In at least `width` digits.
std::string Digits(int number, std::size_t width) {
    const std::string text = std::to_string(number);
    return std::string(width - std::min(width, text.size()), '0') + text;
}

constexpr int kShortDate = 6;  ///< YYMMDD
constexpr int kShortTime = 6;  ///< HHMMSS

CString MakeUid(const CString& prefix, const CString& time) {
    const std::string random = Digits(RandomSixDigits(), 6);
    const std::string machine = std::to_string(MachineNumber());
    const CString date = CxDcmMaker::GetDate().Right(kShortDate);
    return prefix + "." + machine + "." + date + "." + time + "." + random;
}

}  // namespace

CString CxDcmMaker::GetTime() {
    const CalendarTime now = LocalTime();
    return Answer(CString(), [&]() -> CString {
        return Digits(now.hour, 2) + Digits(now.minute, 2) + Digits(now.second, 2) + "." +
               Digits(now.millisecond, 6);
    });
}

CString CxDcmMaker::GetDate() {
    const CalendarTime now = LocalTime();
    return Answer(CString(), [&]() -> CString {
        return Digits(now.year, 4) + Digits(now.month, 2) + Digits(now.day, 2);
    });
}

CString CxDcmMaker::GetSeriesUID(CString prefix) {
    return Answer(CString(), [&] { return MakeUid(prefix, GetTime().Left(kShortTime)); });
}

CString CxDcmMaker::GetSOPInstanceUID(CString prefix) {
    return Answer(CString(), [&] { return MakeUid(prefix, GetTime()); });
}

}  // namespace quorvex
