/// What several inputs came to, counted by cause.
#pragma once

#include "tools/report.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <utility>

namespace quorvex::tools {

/// Counts inputs that are done, and those that are not by the sentence that says why.
class CauseSummary {
public:
    void AddDone() noexcept { ++done_; }
    /// One that was found in a folder and is of no concern.
    void AddNotDicom() noexcept { ++notDicom_; }
    void Add(ExitStatus status, const std::string& cause) { ++causes_[{status, cause}]; }

    [[nodiscard]] ExitStatus Status() const;
    [[nodiscard]] std::size_t Failures() const;
    /// "12 made, 3 bad, 1 failed in 0.5 s", and a line for each cause with its count, the most
    /// frequent first. `done` is the word for those that are done.
    [[nodiscard]] std::string Text(const std::string& done) const;

private:
    [[nodiscard]] std::size_t CountOf(ExitStatus status) const;

    std::size_t done_ = 0;
    std::size_t notDicom_ = 0;
    std::map<std::pair<ExitStatus, std::string>, std::size_t> causes_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace quorvex::tools
