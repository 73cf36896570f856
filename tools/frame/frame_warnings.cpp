#include "tools/frame/frame_warnings.h"

#include "tools/report.h"

#include <string>

namespace quorvex::tools {

void FrameWarnings::Note(int frame, FrameQuality quality) noexcept {
    if (quality == FrameQuality::kPartial) partial_.Note(frame);
    if (quality == FrameQuality::kGuessed) guessed_.Note(frame);
}

void FrameWarnings::Complain(std::string_view file) const {
    partial_.Complain(file, "only partly there: the pixels end early or are damaged");
    guessed_.Complain(file, "told apart by a guess: the file does not say where each frame begins");
}

void FrameWarnings::Kind::Note(int frame) noexcept {
    if (count++ == 0) first = frame;
}

void FrameWarnings::Kind::Complain(std::string_view file, std::string_view what) const {
    if (count == 0) return;
    std::string which = "warning: frame " + std::to_string(first);
    if (count > 1) which += " and " + std::to_string(count - 1) + " more";
    tools::Complain(file, which + (count > 1 ? " are " : " is ") + std::string(what));
}

}  // namespace quorvex::tools
