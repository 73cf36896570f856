/// Runs the quorvex command that this build made.
#pragma once

#include "tests/support/scratch_folder.h"

#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::test {

inline const std::string kSamples = QUORVEX_SOURCE_DIR "/samples/";
inline const std::string kSlice = kSamples + "ct.dcm";
inline const std::string kState = kSamples + "ct_state.dcm";  // for the slice
inline const std::string kRadiograph = kSamples + "radiograph.dcm";
inline const std::string kLoop = kSamples + "ultrasound_loop.dcm";
inline const std::string kCommand = QUORVEX_BINARY_DIR "/bin/quorvex";

using Arguments = std::vector<std::string>;

struct CommandResult {
    int status = -1;
    std::string output;
    std::string complaints;
    double seconds = 0.0;
};

/// Runs the command with these arguments and waits for its end.
CommandResult RunCommand(const Arguments& arguments);

/// Runs what has to succeed, without a complaint; gives its standard output.
std::string OutputOf(const Arguments& arguments);

/// Expects a status and, unless it is 0, one line of complaint in which `part` stands.
CommandResult ExpectStatus(int status, const Arguments& arguments, std::string_view part = {});

/// The first arguments, then the others.
Arguments operator+(Arguments first, const Arguments& others);

/// What `info` says of a file, and all its frames as `frame` gives them.
std::string InfoOf(const std::string& path);
std::string FramesOf(const std::string& path);

/// Every file below a folder, by its path in there.
std::set<std::string> FilesBelow(const std::string& folder);

/// Whether `part` stands in `text`.
inline bool Has(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// A picture read back: rows from the top, one or three bytes a pixel.
struct ReadPicture {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<unsigned char> pixels;
    /// Width, height and channels.
    [[nodiscard]] std::array<int, 3> Shape() const { return {width, height, channels}; }
    [[nodiscard]] int At(int x, int y) const {
        return pixels.at(static_cast<std::size_t>((y * width + x) * channels));
    }
};
ReadPicture ReadPng(const std::string& path);

/// The PNG picture that the command makes with these arguments and an output; it must make no other
/// file.
ReadPicture PictureBy(const Arguments& arguments);

}  // namespace quorvex::test
