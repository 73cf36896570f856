/// Reads elements, items and fragments from a feed, whatever lengths they claim.
///
/// A value that would reach past the end of its item, or of the data, is cut there and marked as
/// cut. Items nest `kDeepestNesting` levels at most, so that the reading may recurse.
#pragma once

#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/reading/byte_feed.h"
#include "foundation/dicom/reading/element_header.h"
#include "foundation/types/limits.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::dicom {

inline constexpr std::uint32_t kNoStopTag = 0xFFFFFFFF;

class ElementReader {
public:
    ElementReader(ByteFeed& feed, std::size_t position, std::size_t mostParts = kMostParts) noexcept
        : feed_(feed), position_(position), mostParts_(mostParts) {}

    /// Reads elements of group 0002, up to the first one of another group.
    [[nodiscard]] bool ReadMeta(Encoding encoding);
    /// Reads the elements of the main data set up to the first one whose tag is above `stopTag`, or
    /// to the end of the data. False for what is no data set; `Failure` then says why.
    [[nodiscard]] bool ReadMain(Encoding encoding, std::uint32_t stopTag);

    [[nodiscard]] std::size_t Position() const noexcept { return position_; }
    [[nodiscard]] std::size_t ElementCount() const noexcept { return pending_.size(); }
    [[nodiscard]] const char* Failure() const noexcept { return failure_; }
    /// The form of the header here, where it should have a VR and has none, by what follows it;
    /// nothing for any other header. Eight bytes must be there.
    [[nodiscard]] std::optional<HeaderForm> UnknownForm(Encoding encoding) {
        return UnknownForm(encoding, kOpenEnd, false);
    }
    /// Whether the data end inside the element that was read last.
    [[nodiscard]] bool IsCutOff() const noexcept {
        return !pending_.empty() && pending_.back().isCut;
    }
    [[nodiscard]] std::uint32_t LastTag() const noexcept {
        return pending_.empty() ? 0 : pending_.back().tag;
    }
    /// The value of an element of the main data set that was read; empty where there is none.
    [[nodiscard]] Bytes ValueRead(std::uint32_t tag) const noexcept;

    /// All that was read, sorted; of two elements with one tag the first one stays.
    [[nodiscard]] std::shared_ptr<DataSet> TakeDataSet(Encoding encoding);

private:
    static constexpr std::size_t kOpenEnd = std::numeric_limits<std::size_t>::max();

    /// A data set that is being read: the main one or an item.
    struct Level {
        std::size_t end = kOpenEnd;
        Encoding encoding;
        int depth = 0;
        bool isMeta = false;
        bool isSigned = false;  ///< Pixel Representation, which decides what "US or SS" is
        std::uint32_t stopTag = kNoStopTag;
        std::shared_ptr<const std::string> characterSet{};
    };
    enum class Step { kElement, kEnd, kSkip, kStrayItem, kFailure };

    [[nodiscard]] bool HasWithin(std::size_t end, std::size_t count) {
        return end - position_ >= count && feed_.Has(position_, count);
    }
    [[nodiscard]] std::size_t Available(std::size_t length, std::size_t end);
    [[nodiscard]] std::uint32_t TagHere(bool isBigEndian) const noexcept {
        return LoadTag(feed_.At(position_), isBigEndian);
    }
    [[nodiscard]] bool IsAt(std::uint32_t tag, const Level& level);

    [[nodiscard]] std::optional<HeaderForm> UnknownForm(Encoding encoding, std::size_t end,
                                                        bool isItem);
    [[nodiscard]] bool ReadElements(Level& level);
    [[nodiscard]] Step NextStep(const Level& level);
    [[nodiscard]] bool SkipJunk(const Level& level);
    void StepOverItem(const Level& level);
    [[nodiscard]] bool DropItem(const Level& level);
    [[nodiscard]] bool GoesOnAt(std::size_t position, const Level& level);
    [[nodiscard]] bool ReadElement(Level& level);
    [[nodiscard]] bool ReadDefined(const ElementHeader& header, Element element, Level& level);
    [[nodiscard]] bool ReadUndefined(const ElementHeader& header, Element element,
                                     const Level& level);
    void Note(const Element& element, Level& level);

    [[nodiscard]] bool ReadSequence(Element element, const Level& level, std::size_t end,
                                    bool isUndefined);
    [[nodiscard]] bool ReadItem(Items& items, const Level& level, std::size_t end);
    [[nodiscard]] bool ReadFragments(Element element, const Level& level);
    void ReadOpenValue(Element element, const Level& level);
    [[nodiscard]] std::shared_ptr<DataSet> MakeDataSet(std::size_t first, Encoding encoding);
    [[nodiscard]] bool Fail(const char* why) noexcept;
    [[nodiscard]] bool Fail(Limit limit) noexcept;
    /// Counts one more element, item or fragment; false above the limit.
    [[nodiscard]] bool CountPart() noexcept {
        return ++parts_ <= mostParts_ || Fail(Limit::kMostParts);
    }

    ByteFeed& feed_;
    std::size_t position_;
    std::vector<Element> pending_;  ///< of all open levels, the innermost last
    std::size_t mostParts_;
    std::size_t parts_ = 0;
    const char* failure_ = "";
};

}  // namespace quorvex::dicom
