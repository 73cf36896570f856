#include "tools/sop_class/sop_class.h"

#include <algorithm>
#include <iterator>

namespace quorvex::tools {
namespace {

struct SopClass {
    std::string_view uid;
    std::string_view name;
};

#include "tools/sop_class/sop_class_table.inc"

static_assert(std::ranges::is_sorted(kSopClasses, {}, &SopClass::uid));

}  // namespace

std::string_view SopClassName(std::string_view uid) noexcept {
    const auto* place = std::ranges::lower_bound(kSopClasses, uid, {}, &SopClass::uid);
    return place != std::end(kSopClasses) && place->uid == uid ? place->name : std::string_view();
}

}  // namespace quorvex::tools
