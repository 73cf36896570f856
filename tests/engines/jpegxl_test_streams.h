/// JPEG XL streams that no coder writes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <utility>
#include <vector>

namespace quorvex::testing {

/// A codestream in boxes: in one, or in as many parts.
inline std::vector<unsigned char> InBoxes(std::span<const unsigned char> codestream,
                                          std::size_t parts) {
    std::vector<unsigned char> all = {0,   0,   0, 12, 'J', 'X', 'L', ' ', 13,  10,  0x87,
                                      10,  0,   0, 0,  20,  'f', 't', 'y', 'p', 'j', 'x',
                                      'l', ' ', 0, 0,  0,   0,   'j', 'x', 'l', ' '};
    const auto append = [&](std::initializer_list<unsigned char> bytes) {
        all.insert(all.end(), bytes);
    };
    const std::size_t step = codestream.size() / parts + 1;
    for (std::size_t i = 0; i < parts; ++i) {
        const auto part = codestream.subspan(std::min(i * step, codestream.size()));
        const auto content = part.first(std::min(step, part.size()));
        const std::size_t length = content.size() + (parts == 1 ? 8 : 12);
        append({0, 0, static_cast<unsigned char>(length >> 8), static_cast<unsigned char>(length),
                'j', 'x', 'l', static_cast<unsigned char>(parts == 1 ? 'c' : 'p')});
        const bool isLast = i + 1 == parts;
        if (parts > 1)
            append({static_cast<unsigned char>(isLast ? 0x80 : 0), 0, 0,
                    static_cast<unsigned char>(i)});
        all.insert(all.end(), content.begin(), content.end());
    }
    return all;
}

/// A picture of 8 x 8 behind so many hidden frames of that side, all of whose sections are empty.
inline std::vector<unsigned char> WithHiddenFrame(std::uint32_t side, int frames) {
    std::vector<unsigned char> bytes;
    unsigned used = 0;
    const auto put = [&](std::initializer_list<std::pair<unsigned, std::uint32_t>> fields) {
        for (const auto& [bits, value] : fields) {
            for (unsigned i = 0; i < bits; ++i, ++used) {
                if (used % 8 == 0) bytes.push_back(0);
                bytes.back() =
                    static_cast<unsigned char>(bytes.back() | (value >> i & 1) << used % 8);
            }
        }
    };
    const auto align = [&] { used = (used + 7) / 8 * 8; };
    put({{8, 0xFF}, {8, 0x0A}, {1, 1}, {5, 0}, {3, 1}, {1, 1}, {1, 1}});
    align();
    for (int i = 0; i < frames; ++i) {
        // Not all as usual, a reference, modular, no flags, groups of 1024, with a size of its own.
        put({{1, 0}, {2, 2}, {1, 1}, {2, 0}, {2, 0}, {2, 3}, {1, 1}});
        for (int j = 0; j < 2; ++j) {
            if (side < 256) put({{2, 0}, {8, side}});
            if (side >= 256) put({{2, 3}, {30, side - 18688}});
        }
        put({{2, 0}, {1, 1}, {2, 0}, {1, 1}, {2, 0}, {1, 0}});
        align();
        const std::uint64_t across = (side + 1023) / 1024;
        const std::uint64_t groups = across * across;
        const std::uint64_t low = ((side + 7) / 8 + 1023) / 1024;
        const std::uint64_t sections = groups == 1 ? 1 : 2 + low * low + groups;
        for (std::uint64_t j = 0; j < std::min<std::uint64_t>(sections, 1U << 20); ++j)
            put({{12, 0}});
        align();
    }
    put({{8, 1}});  // the picture itself, all as usual
    bytes.resize(bytes.size() + 64);
    return bytes;
}

}  // namespace quorvex::testing
