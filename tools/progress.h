/// A progress bar for commands that work through several files.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace quorvex::tools {

/// Shows how many of `total` files are done, how many a second, and how long the rest will take, on
/// standard error, when that is a terminal, there are several files or frames and they have taken
/// longer than half a second. Without a total there is no bar and no remaining time. One at a time,
/// and for one thread at a time.
class Progress {
public:
    explicit Progress(std::optional<std::size_t> total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Whether a bar can be seen at all, so that a total is worth finding out.
    static bool IsPossible();

    /// One more file is done, well or badly.
    void Step();
    /// How far the file at work is: what is being done ("coding"), how many frames of it are done,
    /// and how many there are. For a single file too.
    void Within(const char* step, int done, int all);

private:
    [[nodiscard]] bool HasSeveral() const { return total_.value_or(2) > 1; }
    void Show(std::chrono::steady_clock::time_point now);
    [[nodiscard]] std::string Line(double seconds) const;

    std::optional<std::size_t> total_;
    std::size_t done_ = 0;
    bool isPossible_;
    std::string within_;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point nextShow_;
};

/// Takes the bar off the terminal ahead of a line of text; the next step shows it again.
void HideProgress();

}  // namespace quorvex::tools
