/// Packet headers that stand apart from their packets: PPM and PPT segments.
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/byte_reader.h"

#include <cstdint>
#include <vector>

namespace quorvex::j2k {

/// Segments of one kind, put in order by the number that each begins with.
class PackedHeaderParts {
public:
    /// False for a segment without a number. Throws std::bad_alloc.
    [[nodiscard]] bool Add(Bytes content);
    /// The numbers begin anew in the next tile-part.
    void EndTilePart() noexcept { ++group_; }
    [[nodiscard]] bool IsEmpty() const noexcept { return parts_.empty(); }
    /// Throws std::bad_alloc.
    [[nodiscard]] std::vector<unsigned char> Join() const;

private:
    struct Part {
        std::uint64_t order;
        Bytes content;
    };
    std::vector<Part> parts_;
    std::uint64_t group_ = 0;
};

/// The joined PPM segments, tile-part by tile-part: each share has its length before it.
class PackedHeaderShares {
public:
    explicit PackedHeaderShares(Bytes joined) noexcept : reader_(joined) {}
    /// The next tile-part's share; empty where none is left.
    [[nodiscard]] Bytes Next() noexcept;

private:
    ByteReader reader_;
};

}  // namespace quorvex::j2k
