/// What is to be said of frames that are not quite what their file promises.
#pragma once

#include "quorvex/Types.h"

#include <string_view>

namespace quorvex::tools {

/// Notes frames as they come, and warns once for each kind of trouble. No warning changes what the
/// command answers.
class FrameWarnings {
public:
    void Note(int frame, FrameQuality quality) noexcept;
    /// A line of standard error for each kind that was noted.
    void Complain(std::string_view file) const;

private:
    struct Kind {
        int count = 0;
        int first = 0;  ///< the first frame of that kind
        void Note(int frame) noexcept;
        void Complain(std::string_view file, std::string_view what) const;
    };
    Kind partial_;
    Kind guessed_;
};

}  // namespace quorvex::tools
