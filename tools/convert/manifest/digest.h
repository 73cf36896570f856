/// SHA-256 of files and texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::tools {

struct FileDigest {
    std::string sha256;  ///< 64 hexadecimal digits, or none
    std::uint64_t bytes = 0;
    std::int64_t modified = 0;  ///< when, in nanoseconds since 1970
};

/// An EnvironmentFailure where the file cannot be read to its end. Its time is that of before the
/// reading.
FileDigest DigestOfFile(const std::string& path);

/// The same without the digest, which reads the whole file.
FileDigest LengthOfFile(const std::string& path);

/// The 32 bytes of a text's SHA-256.
std::string DigestOfText(std::string_view text);

}  // namespace quorvex::tools
