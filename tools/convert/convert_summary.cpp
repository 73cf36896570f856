#include "tools/convert/convert_summary.h"

#include <cstdio>

namespace quorvex::tools {
namespace {

std::string Rounded(double number, const char* unit) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", number, unit);
    return text.data();
}

std::string Megabytes(std::uint64_t bytes) {
    return Rounded(static_cast<double>(bytes) / 1e6, "MB");
}

}  // namespace

void ConvertSummary::Add(const ConvertRecord& record) {
    ++counts_[static_cast<std::size_t>(record.outcome)];
    if (record.result.bytes == 0) return;
    sourceBytes_ += record.source.bytes;
    resultBytes_ += record.result.bytes;
    if (record.verification != Verification::kLossy) return;
    greatestError_ = std::max(greatestError_, record.greatestError);
    if (worst_.input.empty() || record.psnr < worst_.psnr) worst_ = record;
}

ExitStatus ConvertSummary::Status() const {
    if (Of(Outcome::kFailed) > 0) return kEnvironment;
    return Of(Outcome::kBad) + Of(Outcome::kUnsupported) > 0 ? kBadInput : kAllDone;
}

std::string ConvertSummary::LossText() const {
    if (worst_.input.empty()) return {};
    return "; greatest error " + Rounded(greatestError_, "") + ", lowest PSNR " +
           Rounded(worst_.psnr, "dB") + " (" + Printable(worst_.input) + ')';
}

std::string ConvertSummary::Line(double seconds, bool isDryRun) const {
    struct Count {
        Outcome outcome;
        const char* name;
    };
    constexpr std::array kCounts = {
        Count{Outcome::kCarried, "carried"},
        Count{Outcome::kKept, "kept"},
        Count{Outcome::kNotDicom, "not DICOM"},
        Count{Outcome::kUnsupported, "not supported"},
        Count{Outcome::kBad, "bad"},
        Count{Outcome::kFailed, "failed"},
    };
    std::string line = isDryRun ? "dry run: " : "";
    line += std::to_string(Of(Outcome::kDone)) + " converted";
    if (doneBefore_ > 0) line += ", " + std::to_string(doneBefore_) + " done before";
    for (const auto& [outcome, name] : kCounts)
        if (Of(outcome) > 0) line += ", " + std::to_string(Of(outcome)) + ' ' + name;
    return line + "; " + Megabytes(sourceBytes_) + (isDryRun ? " would become " : " became ") +
           Megabytes(resultBytes_) + " in " + Rounded(seconds, "s") + LossText() + '\n';
}

}  // namespace quorvex::tools
