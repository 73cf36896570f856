/// RLE frames for tests: a plain encoder, and a decoder that goes byte by byte.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace quorvex::test {

using Bytes = std::vector<unsigned char>;

inline void PutWord(Bytes& bytes, std::size_t at, std::size_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<unsigned char>(value >> (8 * i));
}

/// Random runs, so that every length and both kinds of run come up; padded to an even length.
inline Bytes EncodeSegment(const Bytes& plane, std::mt19937& random) {
    Bytes out;
    for (std::size_t i = 0; i < plane.size();) {
        if (random() % 16 == 0) out.push_back(0x80);
        std::size_t same = 1;
        while (i + same < plane.size() && same < 128 && plane[i + same] == plane[i]) ++same;
        if (same > 1 && random() % 8 != 0) {
            out.push_back(static_cast<unsigned char>(257 - same));
            out.push_back(plane[i]);
            i += same;
            continue;
        }
        const std::size_t most = random() % 3 == 0 ? 128 : 1 + random() % 20;
        const std::size_t count = std::min<std::size_t>(most, plane.size() - i);
        out.push_back(static_cast<unsigned char>(count - 1));
        for (std::size_t k = 0; k < count; ++k) out.push_back(plane[i + k]);
        i += count;
    }
    if (out.size() % 2 != 0) out.push_back(0);
    return out;
}

inline Bytes JoinSegments(const std::vector<Bytes>& segments) {
    Bytes frame(64);
    PutWord(frame, 0, segments.size());
    for (std::size_t i = 0; i < segments.size(); ++i) {
        PutWord(frame, 4 * (i + 1), frame.size());
        frame.insert(frame.end(), segments[i].begin(), segments[i].end());
    }
    return frame;
}

/// Noise with stretches of one value.
inline Bytes RunnyBytes(std::size_t count, std::mt19937& random) {
    Bytes bytes;
    while (bytes.size() < count) {
        const auto value = static_cast<unsigned char>(random());
        const std::size_t length = random() % 4 == 0 ? random() % 300 : 1;
        for (std::size_t i = 0; i < length && bytes.size() < count; ++i) bytes.push_back(value);
    }
    return bytes;
}

/// Segment i gives bytes first + k * step, k from 0.
struct Placement {
    std::size_t first;
    std::size_t step;
    std::size_t limit;
};

/// One step of a frame, one byte at a time. False ends the frame.
template <class Place>
bool DecodeSlowly(const Bytes& source, std::size_t count, Bytes& frame, Place place) {
    const auto word = [&](std::size_t at) {
        return std::size_t{source[at]} | std::size_t{source[at + 1]} << 8 |
               std::size_t{source[at + 2]} << 16 | std::size_t{source[at + 3]} << 24;
    };
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t read = word(4 * (i + 1));
        const std::size_t end = i + 1 < count ? word(4 * (i + 2)) : source.size();
        const Placement where = place(i);
        std::size_t write = where.first;
        while (read < end && write < where.limit) {
            const int control = static_cast<signed char>(source[read++]);
            if (control == -128) continue;
            const bool isLiteral = control >= 0;
            const auto length = static_cast<std::size_t>(isLiteral ? control + 1 : 1 - control);
            if (isLiteral && length > end - read) break;
            for (std::size_t k = 0; k < length; ++k, write += where.step) {
                if (read >= end || write >= where.limit) return false;
                frame[write] = source[read];
                if (isLiteral) ++read;
            }
            if (!isLiteral) ++read;
        }
        if (i + 1 == count && write > where.limit) return false;
    }
    return true;
}

}  // namespace quorvex::test
