/// One CXWindowing in many threads.
#pragma once

#include <string>

namespace quorvex::test {

/// Changes and reads one object from several threads at once. A window is read as the pair that was
/// written, a table as the table of one window, no step is lost.
/// @return what was wrong, or an empty text
std::string StressWindowing();

}  // namespace quorvex::test
