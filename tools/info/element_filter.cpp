#include "tools/info/element_filter.h"

#include "tools/report.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <new>
#include <optional>

namespace quorvex::tools {
namespace {

std::string InSmallLetters(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::optional<std::uint32_t> NumberOf(std::string text) {
    constexpr std::size_t kDigits = 8;
    constexpr int kHexadecimal = 16;
    if (text.starts_with('(') && text.ends_with(')')) text = text.substr(1, text.size() - 2);
    if (text.size() == kDigits + 1 && text[4] == ',') text.erase(4, 1);
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number, kHexadecimal);
    const bool isNumber = text.size() == kDigits && read.ec == std::errc{} && read.ptr == end;
    return isNumber ? std::optional(number) : std::nullopt;
}

bool Matches(const DcmElementView& element, const WantedTag& wanted) {
    if (wanted.keyword.empty()) return element.tag == wanted.tag;
    return InSmallLetters(element.keyword) == wanted.keyword;
}

/// Marks what is wanted, element by element in the order of the walk.
struct Marker {
    const std::vector<WantedTag>& wanted;
    std::vector<bool> isKept;
    std::vector<std::size_t> ancestors;  // numbers of the sequences that are open
    std::optional<int> wholeDepth;       // everything deeper is kept

    void Add(const DcmElementView& element) {
        const auto number = isKept.size();
        const auto depth = static_cast<std::size_t>(element.depth);
        ancestors.resize(std::min(ancestors.size(), depth));
        if (wholeDepth && element.depth <= *wholeDepth) wholeDepth.reset();
        const bool isWanted = std::ranges::any_of(
            wanted, [&](const WantedTag& tag) { return Matches(element, tag); });
        isKept.push_back(isWanted || wholeDepth.has_value());
        if (isWanted && !wholeDepth) wholeDepth = element.depth;
        if (isWanted)
            for (const auto ancestor : ancestors) isKept[ancestor] = true;
        if (element.vr == MC_VR_SQ) ancestors.push_back(number);
    }
    static MC_STATUS Visit(const DcmElementView& element, void* user) {
        static_cast<Marker*>(user)->Add(element);
        return kMcContinue;
    }
};

struct Giver {
    const std::vector<bool>& isKept;
    bool keepsAll;
    const std::function<void(const DcmElementView&)>& take;
    std::size_t number = 0;

    static MC_STATUS Visit(const DcmElementView& element, void* user) {
        auto& giver = *static_cast<Giver*>(user);
        if (giver.keepsAll || giver.isKept[giver.number]) giver.take(element);
        ++giver.number;
        return kMcContinue;
    }
};

}  // namespace

WantedTag ParseTag(const std::string& text) {
    if (const auto number = NumberOf(text)) return {.keyword = {}, .tag = *number};
    const bool isKeyword = !text.empty() && std::ranges::all_of(text, [](unsigned char c) {
        return std::isalnum(c) != 0;
    }) && std::isalpha(static_cast<unsigned char>(text.front())) != 0;
    if (!isKeyword)
        throw WrongUsage("a tag is a keyword or a number, as in PatientName or 0010,0010, not " +
                         text);
    return {.keyword = InSmallLetters(text), .tag = 0};
}

bool WalkWanted(const CDcmObject& object, const std::vector<WantedTag>& wanted,
                const std::function<void(const DcmElementView&)>& take) {
    const auto walk = [&](void* user, ElementVisitor visitor) {
        if (object.WalkElements(user, visitor) == kDcmOutOfMemory) throw std::bad_alloc();
    };
    Marker marker{.wanted = wanted, .isKept = {}, .ancestors = {}, .wholeDepth = {}};
    if (!wanted.empty()) walk(&marker, Marker::Visit);
    Giver giver{.isKept = marker.isKept, .keepsAll = wanted.empty(), .take = take};
    walk(&giver, Giver::Visit);
    return wanted.empty() || std::ranges::find(marker.isKept, true) != marker.isKept.end();
}

}  // namespace quorvex::tools
