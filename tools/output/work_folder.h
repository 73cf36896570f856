/// A folder for outputs that are not whole yet.
#pragma once

#include "tools/output/unfinished.h"

#include <atomic>
#include <string>

namespace quorvex::tools {

/// Lies beside the outputs, so that a finished one takes its place by a rename, and goes with the
/// object. Its name holds machine and process: what a killed process of this machine left behind is
/// removed when the next one starts and when it ends.
class WorkFolder {
public:
    explicit WorkFolder(const std::string& beside);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    /// Removes it ahead of the object's end, for a process that ends at once, though other threads
    /// may still be writing into it.
    void RemoveNow() noexcept;

    /// A path in it that nobody has yet. Any thread may ask.
    [[nodiscard]] std::string NewPath();

private:
    std::string prefix_;  // of the folders of this machine
    std::string path_;
    std::atomic<unsigned> count_ = 0;
    Unfinished unfinished_;
};

}  // namespace quorvex::tools
