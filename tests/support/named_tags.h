// The attributes that the library knows by name, as they stand in quorvex/Tags.h.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace quorvex::test {

struct NamedTag {
    std::string name;
    std::uint32_t tag = 0;
};

inline std::vector<NamedTag> NamedTags() {
    std::vector<NamedTag> tags;
    std::ifstream header(QUORVEX_SOURCE_DIR "/include/quorvex/Tags.h");
    std::string name;
    for (std::string word; header >> word;) {
        if (word.starts_with('k')) name = word.substr(1);
        if (word.size() != 11 || !word.starts_with("0x")) continue;
        tags.push_back({name, static_cast<std::uint32_t>(std::stoul(word, nullptr, 16))});
    }
    return tags;
}

}  // namespace quorvex::test
