/// A folder of its own for one test.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::test {

/// The bytes of a file; none where it cannot be read.
inline std::string ReadAll(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

/// A new, empty folder, removed with the object. Any number of threads and processes may have one
/// each.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "quorvex_XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder");
        path_ = name;
    }
    ~ScratchFolder() {
        std::error_code failure;
        std::filesystem::remove_all(path_, failure);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::string Path(const std::string& name) const {
        return (path_ / name).string();
    }
    /// Writes a file, with the folders that it lies in; gives its path.
    template <class Bytes>
    std::string Write(const std::string& name, const Bytes& bytes) const {
        const auto path = path_ / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary)
            .write(static_cast<const char*>(static_cast<const void*>(bytes.data())),
                   static_cast<std::streamsize>(bytes.size()));
        return path.string();
    }
    std::string Write(const std::string& name, const char* text) const {
        return Write(name, std::string_view(text));
    }
    [[nodiscard]] std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        return names;
    }

private:
    std::filesystem::path path_;
};

}  // namespace quorvex::test
