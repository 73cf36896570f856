/// A progress bar for commands that work through several files.
#pragma once

#include <chrono>
#include <cstddef>

namespace quorvex::tools {

/// Shows how many of `total` files are done, on standard error, when that is a terminal, there are
/// several files and they have taken longer than half a second. One at a time.
class Progress {
public:
    explicit Progress(std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// One more file is done, well or badly.
    void Step();

private:
    void Show(std::chrono::steady_clock::time_point now);

    std::size_t total_;
    std::size_t done_ = 0;
    bool isWanted_;
    std::chrono::steady_clock::time_point nextShow_;
};

/// Takes the bar off the terminal ahead of a line of text; the next step shows it again.
void HideProgress();

}  // namespace quorvex::tools
