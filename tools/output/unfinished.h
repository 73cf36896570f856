/// What a command that is stopped in the middle must not leave behind.
#pragma once

#include <string>

namespace quorvex::tools {

/// Remembers a temporary file, or a folder that holds nothing but files, for as long as it lives.
/// There is room for a few at a time; one that finds none is not remembered.
class Unfinished {
public:
    Unfinished() = default;
    ~Unfinished() { Forget(); }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    void Remember(const std::string& path);
    void Forget() noexcept;

private:
    int slot_ = -1;
};

/// While it lives, signals that stop the command wait: a file is made and remembered in one step.
class StopsWait {
public:
    StopsWait() noexcept;
    ~StopsWait();
    StopsWait(const StopsWait&) = delete;
    StopsWait& operator=(const StopsWait&) = delete;

private:
    bool isBlocked_;
};

/// Removes everything that is remembered. A signal handler may call it.
void RemoveUnfinished() noexcept;

/// From now on SIGINT, SIGTERM and SIGHUP, unless they are ignored, remove what is unfinished and
/// end the command with a line and kEnvironment; a file that grows past its limit is a failed write
/// and no signal.
void EndCleanlyWhenStopped() noexcept;

}  // namespace quorvex::tools
