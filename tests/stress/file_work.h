/// All that a host does with one file, by objects of its own, and what came of it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quorvex::test {

/// What one operation answered, and a digest of all that it handed over.
struct StepResult {
    const char* step;
    int code;
    std::uint64_t digest;
    bool operator==(const StepResult&) const = default;
};
using FileResults = std::vector<StepResult>;

/// How much is done with a file.
enum class Amount {
    kEverything,        ///< frames, thumbnails, renders, one conversion, a new object, a state
    kOpenRenderConvert  ///< what a viewer's day consists of: one of each
};

/// `turn` chooses among the forms that a file is converted into. The same file and turn give the
/// same results, whichever thread works.
FileResults WorkOnFile(const std::filesystem::path& path, unsigned turn, Amount amount);

/// Where two results differ; empty where they do not.
std::string DifferenceOf(const FileResults& one, const FileResults& other);

}  // namespace quorvex::test
