/// Runs the quorvex command that this build made, and makes the files that it is to choke on.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quorvex::test {

struct CommandResult {
    int status = -1;
    std::string output;
    std::string complaints;
    double seconds = 0.0;
};

/// Runs the command with these arguments and waits for its end.
CommandResult RunCommand(const std::vector<std::string>& arguments);

/// A folder of its own, gone with the object.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::string Path(const std::string& name) const {
        return (path_ / name).string();
    }
    std::string Write(const std::string& name, const std::string& bytes) const;
    [[nodiscard]] std::vector<std::string> Names() const;

private:
    std::filesystem::path path_;
};

std::string ReadAll(const std::string& path);

/// A picture read back: rows from the top, one or three bytes a pixel.
struct ReadPicture {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<unsigned char> pixels;
    [[nodiscard]] int At(int x, int y) const {
        return pixels.at(static_cast<std::size_t>((y * width + x) * channels));
    }
};
ReadPicture ReadPng(const std::string& path);

/// The bytes of little-endian DICOM, put together piece by piece.
std::string Number16(unsigned value);
std::string Number32(std::uint32_t value);
std::string Element(std::uint32_t tag, const std::string& vr, const std::string& value);
/// Preamble, meta information for `syntax`, then `dataSet`.
std::string Part10(const std::string& syntax, const std::string& dataSet);

}  // namespace quorvex::test
