#include "tools/verbs/nearest.h"

#include <algorithm>
#include <cstddef>

namespace quorvex::tools {
namespace {

// Optimal string alignment: edits, with two neighbours that are swapped as one.
std::size_t Distance(std::string_view from, std::string_view to) {
    const std::size_t width = to.size() + 1;
    std::vector<std::size_t> table((from.size() + 1) * width);
    const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& {
        return table[i * width + j];
    };
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                at(i, j) = i + j;
                continue;
            }
            const std::size_t change = from[i - 1] == to[j - 1] ? 0 : 1;
            at(i, j) = std::min({at(i - 1, j) + 1, at(i, j - 1) + 1, at(i - 1, j - 1) + change});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
        }
    }
    return table.back();
}

}  // namespace

std::string Nearest(std::string_view typed, const std::vector<std::string>& words) {
    constexpr std::size_t kLongestWord = 64;
    if (typed.size() < 2 || typed.size() > kLongestWord) return {};
    for (const auto& word : words)
        if (word.starts_with(typed)) return word;
    std::string nearest;
    std::size_t least = std::max<std::size_t>(typed.size() / 3, 1) + 1;
    for (const auto& word : words) {
        const std::size_t distance = Distance(typed, word);
        if (distance >= least) continue;
        least = distance;
        nearest = word;
    }
    return nearest;
}

}  // namespace quorvex::tools
