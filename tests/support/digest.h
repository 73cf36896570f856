/// A number that stands for bytes, or for everything in a data set.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Tags.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>

namespace quorvex::test {

/// FNV-1a over whatever is added.
class Digest {
public:
    void Add(std::span<const unsigned char> bytes) noexcept {
        for (const unsigned char byte : bytes) Add(std::uint64_t{byte});
    }
    void Add(std::uint64_t number) noexcept { value_ = (value_ ^ number) * 0x100000001B3U; }
    [[nodiscard]] std::uint64_t Value() const noexcept { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

/// What the maker gives anew to each object: UIDs, dates and times.
inline constexpr std::uint32_t kNewEachTime[] = {tag::kMediaStorageSOPInstanceUID,
                                                 tag::kInstanceCreationDate,
                                                 tag::kInstanceCreationTime,
                                                 tag::kSOPInstanceUID,
                                                 tag::kSeriesDate,
                                                 tag::kContentDate,
                                                 tag::kSeriesTime,
                                                 tag::kContentTime,
                                                 tag::kSeriesInstanceUID,
                                                 tag::kPresentationCreationDate,
                                                 tag::kPresentationCreationTime};

/// Changes with every element, its place and every byte of its value.
inline std::uint64_t DigestOf(const CDcmObjectCommon& object,
                              std::span<const std::uint32_t> skipped = {}) {
    struct Sum {
        Digest digest;
        std::span<const std::uint32_t> skipped;
    } sum{{}, skipped};
    const ElementVisitor add = [](const DcmElementView& element, void* user) -> MC_STATUS {
        auto& [digest, without] = *static_cast<Sum*>(user);
        if (std::ranges::find(without, element.tag) != without.end()) return kMcContinue;
        digest.Add(element.tag);
        digest.Add(static_cast<std::uint64_t>(element.vr));
        digest.Add(static_cast<std::uint64_t>(element.depth));
        digest.Add(element.length);
        if (element.data != nullptr) digest.Add({element.data, element.length});
        return kMcContinue;
    };
    static_cast<void>(object.WalkElements(&sum, add));
    return sum.digest.Value();
}

}  // namespace quorvex::test
