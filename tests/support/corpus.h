/// Real files for tests: the samples, Debian's pydicom files, and the folder that the environment
/// variable QUORVEX_CORPUS names (one with a MANIFEST.json and a folder files/).
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <vector>

namespace quorvex::test {

/// An empty path where the variable is not set.
inline std::filesystem::path CorpusFolder() {
    const char* folder = std::getenv("QUORVEX_CORPUS");
    return folder == nullptr ? "" : folder;
}

inline bool IsOtherKind(const std::filesystem::path& file) {
    constexpr const char* kOthers[] = {".txt", ".gz", ".dump", ".py", ".pyc", ".json", ".md"};
    return file.stem() == "README" ||
           std::find(std::begin(kOthers), std::end(kOthers), file.extension()) != std::end(kOthers);
}

inline std::vector<std::filesystem::path> RealFiles() {
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (const auto& folder : {fs::path(QUORVEX_SOURCE_DIR "/samples"), CorpusFolder() / "files",
                               fs::path("/usr/lib/python3/dist-packages/pydicom/data")}) {
        if (!fs::is_directory(folder)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file() && !IsOtherKind(entry.path())) {
                files.push_back(entry.path());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace quorvex::test
