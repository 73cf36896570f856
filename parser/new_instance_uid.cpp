#include "foundation/platform/clock.h"
#include "foundation/platform/host.h"
#include "parser/frames/frame_events.h"
#include "parser/parsed_file.h"

#include <string>

namespace quorvex {
namespace {

constexpr const char* kRoot = "1.2.999.700040.";

std::string TwoDigits(int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

CString ParsedFile::GetNewSOPInstanceUID() {
    const CalendarTime now = UniversalTime();
    const std::string stamp = TwoDigits(now.hour) + TwoDigits(now.minute) + TwoDigits(now.second) +
                              std::to_string(now.millisecond);
    return kRoot + std::to_string(MachineNumber()) + "." + stamp +
           std::to_string(RandomSixDigits()) + "." + std::to_string(LatestFrameEvents());
}

}  // namespace quorvex
