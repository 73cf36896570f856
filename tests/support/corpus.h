/// Real files for tests: where they lie, where they are there.
#pragma once

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <vector>

namespace quorvex::test {

/// The corpus that may lie beside the project, or an empty path.
inline std::filesystem::path CorpusFolder() {
    const std::filesystem::path source = QUORVEX_SOURCE_DIR;
    for (const char* beside : {"../shared/corpus", "../../shared/corpus"}) {
        const auto folder = source / beside;
        if (std::filesystem::is_directory(folder / "files")) return folder;
    }
    return {};
}

inline bool IsOtherKind(const std::filesystem::path& file) {
    constexpr const char* kOthers[] = {".txt", ".gz", ".dump", ".py", ".pyc", ".json"};
    return file.stem() == "README" ||
           std::find(std::begin(kOthers), std::end(kOthers), file.extension()) != std::end(kOthers);
}

/// Every file of the corpus and of Debian's pydicom samples; empty where neither is there.
inline std::vector<std::filesystem::path> RealFiles() {
    std::vector<std::filesystem::path> files;
    const std::filesystem::path samples = "/usr/lib/python3/dist-packages/pydicom/data";
    for (const auto& folder : {CorpusFolder() / "files", samples}) {
        if (!std::filesystem::is_directory(folder)) continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file() && !IsOtherKind(entry.path())) {
                files.push_back(entry.path());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace quorvex::test
