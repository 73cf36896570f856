/// What a conversion came to.
#pragma once

#include "tools/convert/manifest/manifest.h"
#include "tools/report.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace quorvex::tools {

/// Counts what became of the inputs.
class ConvertSummary {
public:
    void Add(const ConvertRecord& record);
    void AddDoneBefore() { ++doneBefore_; }
    /// An input that was given up before it was looked at.
    void AddBad() { ++counts_[static_cast<std::size_t>(Outcome::kBad)]; }

    [[nodiscard]] ExitStatus Status() const;
    /// One line for a reader, the line feed included.
    /// @param isDryRun  nothing of it was done
    [[nodiscard]] std::string Line(double seconds, bool isDryRun) const;

private:
    [[nodiscard]] std::size_t Of(Outcome outcome) const {
        return counts_[static_cast<std::size_t>(outcome)];
    }
    [[nodiscard]] std::string LossText() const;

    std::array<std::size_t, kOutcomeCount> counts_{};  // by outcome
    std::size_t doneBefore_ = 0;
    std::uint64_t sourceBytes_ = 0;
    std::uint64_t resultBytes_ = 0;
    ConvertRecord worst_;  // of the lossy ones; without an input where there is none
    double greatestError_ = 0.0;
};

}  // namespace quorvex::tools
