#include "tools/cause_summary.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace quorvex::tools {

ExitStatus CauseSummary::Status() const {
    return causes_.empty() ? kAllDone : causes_.rbegin()->first.first;
}

std::size_t CauseSummary::CountOf(ExitStatus status) const {
    std::size_t count = 0;
    for (const auto& [cause, number] : causes_)
        if (cause.first == status) count += number;
    return count;
}

std::size_t CauseSummary::Failures() const {
    return CountOf(kBadInput) + CountOf(kEnvironment);
}

std::string CauseSummary::Text(const std::string& done) const {
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start_;
    std::array<char, 32> seconds{};
    std::snprintf(seconds.data(), seconds.size(), " in %.1f s\n", taken.count());
    std::string text = std::to_string(done_) + ' ' + done;
    if (notDicom_ > 0) text += ", " + std::to_string(notDicom_) + " not DICOM";
    if (const auto bad = CountOf(kBadInput); bad > 0) text += ", " + std::to_string(bad) + " bad";
    if (const auto failed = CountOf(kEnvironment); failed > 0)
        text += ", " + std::to_string(failed) + " failed";
    text += seconds.data();
    std::vector<std::pair<std::size_t, std::string>> rows;
    for (const auto& [cause, count] : causes_) rows.emplace_back(count, cause.second);
    std::ranges::stable_sort(rows, std::greater{}, &std::pair<std::size_t, std::string>::first);
    for (const auto& [count, cause] : rows)
        text += "  " + std::to_string(count) + " x " + Printable(cause) + '\n';
    return text;
}

}  // namespace quorvex::tools
