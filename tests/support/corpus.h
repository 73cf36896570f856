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

namespace detail {

/// A file of a folder that is no DICOM file.
inline bool IsOtherKind(const std::filesystem::path& file) {
    constexpr const char* kOthers[] = {".txt", ".gz", ".dump", ".py", ".pyc", ".json", ".md"};
    return file.stem() == "README" ||
           std::find(std::begin(kOthers), std::end(kOthers), file.extension()) != std::end(kOthers);
}

}  // namespace detail

/// The files named, and those in the folders named, in order; what is not there is left out.
inline std::vector<std::filesystem::path> FilesIn(
    const std::vector<std::filesystem::path>& places) {
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (const auto& place : places) {
        if (fs::is_regular_file(place)) files.push_back(place);
        if (!fs::is_directory(place)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(place)) {
            if (entry.is_regular_file() && !detail::IsOtherKind(entry.path()))
                files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

inline std::vector<std::filesystem::path> RealFiles() {
    return FilesIn({QUORVEX_SOURCE_DIR "/samples", CorpusFolder() / "files",
                    "/usr/lib/python3/dist-packages/pydicom/data"});
}

}  // namespace quorvex::test
