/// Independent checkers of objects, where they are installed.
#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace quorvex::test {

inline bool HasTool(const std::string& name) {
    return std::system(("command -v " + name + " > /dev/null 2>&1").c_str()) == 0;
}

/// What a command line prints.
inline std::string PrintedBy(const std::string& command) {
    struct Close {
        void operator()(std::FILE* pipe) const noexcept { static_cast<void>(pclose(pipe)); }
    };
    const std::unique_ptr<std::FILE, Close> pipe(popen(command.c_str(), "r"));
    std::string printed;
    std::array<char, 4096> block{};
    while (pipe && std::fgets(block.data(), block.size(), pipe.get()) != nullptr)
        printed += block.data();
    return printed;
}

/// The errors that dciodvfy sees in a file as it is; empty without dciodvfy.
inline std::string ErrorsIn(const std::string& path) {
    if (!HasTool("dciodvfy")) return {};
    return PrintedBy("dciodvfy '" + path + "' 2>&1 | grep -a '^Error'");
}

/// The complaints of dcmpschk about a presentation state; empty without dcmpschk.
inline std::string ComplaintsAboutState(const std::string& path) {
    if (!HasTool("dcmpschk")) return {};
    const std::string printed = PrintedBy("dcmpschk '" + path + "' 2>&1");
    return printed.find("Test passed") != std::string::npos ? "" : printed;
}

}  // namespace quorvex::test
