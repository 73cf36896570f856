/// Which item holds the element that a walk has reached, so that its text can be decoded there.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::tools {

/// Follows a walk over `root` element by element and reads their text.
///
/// Plain ASCII is taken as it stands. Only for the rest is the item looked up, since a value's
/// character set is known to the data set that holds it.
class ElementOwner {
public:
    explicit ElementOwner(const CDcmObjectCommon& root) noexcept : root_(root) {}

    /// The walk has reached this element.
    void Follow(const DcmElementView& element);
    /// Its text as UTF-8, values joined with backslashes, without padding.
    std::string Text(const DcmElementView& element);
    /// The same, value by value; prose (LT, ST, UT, UR) is one value.
    std::vector<std::string> Values(const DcmElementView& element);

private:
    struct Step {
        std::uint32_t sequence = 0;
        int index = 0;
        int itemIndex = -1;  // which item `item` is
        std::optional<CDcmItem> item;
    };
    const CDcmObjectCommon* Resolve();

    const CDcmObjectCommon& root_;
    std::vector<Step> path_;
    std::uint32_t lastTag_ = 0;
};

}  // namespace quorvex::tools
