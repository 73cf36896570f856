#include "tools/output/output_place.h"

#include "tools/output/output_file.h"
#include "tools/report.h"

#include <filesystem>
#include <sys/stat.h>

namespace quorvex::tools {
namespace {

namespace fs = std::filesystem;

// Identifies a file, whatever path leads to it; empty where there is no plain file.
std::string IdentityOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return std::to_string(status.st_dev) + '/' + std::to_string(status.st_ino);
}

bool IsFolderPath(const std::string& path) {
    std::error_code failure;
    return path.ends_with('/') || fs::is_directory(path, failure);
}

}  // namespace

OutputPlace::OutputPlace(std::string output, bool hasSeveralInputs,
                         const std::vector<std::string>& namedInputs)
    : output_(std::move(output)), isFolder_(IsFolderPath(output_)) {
    if (hasSeveralInputs && !isFolder_) {
        std::error_code failure;
        if (output_ == kStandardOutput || fs::exists(output_, failure))
            throw WrongUsage("several inputs need a folder for their outputs, not " + output_);
        isFolder_ = true;
    }
    for (const auto& input : namedInputs)
        if (auto identity = IdentityOf(input); !identity.empty()) inputs_.insert(identity);
}

std::optional<std::string> OutputPlace::For(const std::string& inputPath, const std::string& name) {
    const std::string path = isFolder_ ? (fs::path(output_) / name).string() : output_;
    if (isFolder_ && !taken_.insert(std::hash<std::string>{}(path)).second) {
        Complain(inputPath, "another input has the output " + path + " already");
        return std::nullopt;
    }
    if (IsAnInput(path, inputPath)) {
        Complain(inputPath, "the output " + path + " would replace an input");
        return std::nullopt;
    }
    return path;
}

bool OutputPlace::IsAnInput(const std::string& path, const std::string& inputPath) const {
    const auto identity = IdentityOf(path);
    return !identity.empty() && (identity == IdentityOf(inputPath) || inputs_.contains(identity));
}

void MakeFolder(const fs::path& folder) {
    std::error_code failure;
    if (!folder.empty()) fs::create_directories(folder, failure);
    if (failure) throw PathFailure(folder, failure);
}

void MakeFolderOf(const std::string& path) {
    MakeFolder(fs::path(path).parent_path());
}

}  // namespace quorvex::tools
