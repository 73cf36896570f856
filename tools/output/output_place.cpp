#include "tools/output/output_place.h"

#include "tools/output/output_file.h"
#include "tools/report.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::tools {
namespace {

namespace fs = std::filesystem;

std::string IdentityOf(int answer, const struct stat& status) {
    if (answer != 0 || !S_ISREG(status.st_mode)) return {};
    return std::to_string(status.st_dev) + '/' + std::to_string(status.st_ino);
}

// Identifies a file, whatever path leads to it; empty where there is no plain file.
std::string IdentityOf(const std::string& path) {
    struct stat status {};
    const int answer = stat(path.c_str(), &status);
    return IdentityOf(answer, status);
}

// The same for an output, which may be standard output.
std::string IdentityOfOutput(const std::string& path) {
    if (path != kStandardOutput) return IdentityOf(path);
    struct stat status {};
    const int answer = fstat(STDOUT_FILENO, &status);
    return IdentityOf(answer, status);
}

bool IsFolderPath(const std::string& path) {
    std::error_code failure;
    return path.ends_with('/') || fs::is_directory(path, failure);
}

}  // namespace

void RefuseToReplace(const std::string& output, const std::vector<std::string>& inputs) {
    const auto identity = IdentityOfOutput(output);
    if (identity.empty()) return;
    const auto input = std::ranges::find(inputs, identity,
                                         [](const std::string& path) { return IdentityOf(path); });
    if (input != inputs.end())
        throw WrongUsage("the output " + output + " would replace the input " + *input);
}

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
    const auto identity = IdentityOfOutput(path);
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
