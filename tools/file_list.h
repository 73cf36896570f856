/// The inputs of a verb that works through many files, one at a time.
#pragma once

#include "tools/report.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace quorvex::tools {

/// One input, and the name that its output has inside the output folder.
struct InputFile {
    std::string path;
    /// A relative path without "..": the last part of a file of the command line, the path below a
    /// folder of it, or the whole path of an entry of a list.
    std::string name;
    bool isNamed = false;  ///< stands on the command line itself
};

/// One of several equal parts of the inputs, chosen by a hash of their names, so that machines that
/// share a list take different files without talking to each other.
struct Shard {
    unsigned index = 1;  ///< 1 to `count`
    unsigned count = 1;

    [[nodiscard]] bool Has(const std::string& name) const noexcept;
};

/// "2/8". Everything else is a WrongUsage.
Shard ParseShard(const std::string& text);

/// Where inputs come from.
struct FileListSource {
    std::vector<std::string> arguments;  ///< files and folders
    std::string list;                    ///< a file with one path a line, - for standard input
    bool isNulSeparated = false;
    Shard shard;
    std::string leftOutFolder;  ///< not walked into, so that outputs never become inputs
};

/// Whether one of the arguments is a folder, so that there may be any number of inputs.
bool HasFolder(const std::vector<std::string>& arguments);

/// Gives one input after the other, and keeps none of them in memory.
class FileList {
public:
    explicit FileList(FileListSource source);
    ~FileList();
    FileList(const FileList&) = delete;
    FileList& operator=(const FileList&) = delete;

    /// Nothing when there are no more. A folder that cannot be opened is told on standard error,
    /// and the others follow; one without files is told too. A list that cannot be read is an
    /// EnvironmentFailure.
    std::optional<InputFile> Next();

    /// kEnvironment where a folder could not be read as a whole.
    [[nodiscard]] ExitStatus Status() const noexcept { return status_; }

    /// How many inputs there are, by walking all folders and the list; nothing where the list is
    /// standard input, which can be read but once.
    static std::optional<std::size_t> Count(const FileListSource& source);

private:
    struct List;

    std::optional<InputFile> NextOfAll();
    std::optional<InputFile> NextOfFolder();
    void Enter(const std::filesystem::path& folder);
    void LeaveTopFolder();
    void Miss(const std::filesystem::path& path, const std::error_code& failure);
    std::optional<InputFile> NextOfArguments();
    std::optional<InputFile> NextOfList();

    FileListSource source_;
    std::size_t nextArgument_ = 0;
    std::filesystem::path folder_;                           // that of the command line
    std::vector<std::filesystem::directory_iterator> walk_;  // in there, one in the other
    bool isFolderEmpty_ = false;                             // so far
    bool isQuiet_ = false;
    ExitStatus status_ = kAllDone;
    std::unique_ptr<List> list_;
};

}  // namespace quorvex::tools
