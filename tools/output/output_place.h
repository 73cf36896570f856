/// Where the outputs of several inputs go.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace quorvex::tools {

/// Throws a WrongUsage where an output, standard output included, is the same file as one of the
/// inputs, by whatever name or link.
void RefuseToReplace(const std::string& output, const std::vector<std::string>& inputs);

/// One output file, or a folder of them. Names come from the inputs' own names, never from values
/// inside a file.
class OutputPlace {
public:
    /// @param output        a folder when there may be several inputs, when it ends in '/' or is a
    ///                      folder already; it is made when it is first needed
    /// @param namedInputs   files that no output may replace
    OutputPlace(std::string output, bool hasSeveralInputs,
                const std::vector<std::string>& namedInputs);

    [[nodiscard]] bool IsFolder() const noexcept { return isFolder_; }
    [[nodiscard]] const std::string& Path() const noexcept { return output_; }

    /// The output's path for an input of that name (see InputFile), or nothing, with a complaint
    /// about `inputPath`, where another input has it already or it is an input itself.
    std::optional<std::string> For(const std::string& inputPath, const std::string& name);

private:
    [[nodiscard]] bool IsAnInput(const std::string& path, const std::string& inputPath) const;

    std::string output_;
    bool isFolder_;
    std::unordered_set<std::string> inputs_;  // device and number of each
    std::unordered_set<std::size_t> taken_;   // hashes of the paths that were handed out
};

/// Makes a folder, with those that it lies in. An EnvironmentFailure where that fails.
void MakeFolder(const std::filesystem::path& folder);
/// The same for the folder that a file is to lie in.
void MakeFolderOf(const std::string& path);

}  // namespace quorvex::tools
