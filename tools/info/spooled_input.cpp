#include "tools/info/spooled_input.h"

#include "tools/report.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace quorvex::tools {
namespace {

constexpr const char* kName = "standard input";

void WriteAll(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const auto written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw SystemFailure(kName);
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

}  // namespace

SpooledInput::SpooledInput()
    : descriptor_(open(std::filesystem::temp_directory_path().c_str(),
                       O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)),
      path_("/proc/self/fd/" + std::to_string(descriptor_)) {
    if (descriptor_ < 0) throw SystemFailure(kName);
    std::array<char, std::size_t{1} << 16> piece{};
    for (;;) {
        const auto count = read(STDIN_FILENO, piece.data(), piece.size());
        if (count == 0) return;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw SystemFailure(kName);
        WriteAll(descriptor_, piece.data(), static_cast<std::size_t>(count));
    }
}

SpooledInput::~SpooledInput() {
    close(descriptor_);
}

}  // namespace quorvex::tools
