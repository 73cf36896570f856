#include "tools/convert/source_reading.h"

#include "quorvex/CxDcmParser.h"
#include "tools/convert/refusal.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <optional>

namespace quorvex::tools {
namespace {

constexpr std::size_t kPreambleBytes = 128;
using Preamble = std::array<char, kPreambleBytes>;

/// Nothing for a file without the marker behind it.
std::optional<Preamble> PreambleOf(const std::string& path) {
    Preamble preamble{};
    std::array<char, 4> marker{};
    std::ifstream file(path, std::ios::binary);
    if (!file.read(preamble.data(), preamble.size()) || !file.read(marker.data(), marker.size()) ||
        std::memcmp(marker.data(), "DICM", marker.size()) != 0)
        return std::nullopt;
    return preamble;
}

}  // namespace

// What is not a plain Part 10 file is left to the parser, whose own copy of the file is gone when
// this returns.
CDcmObject ReadWhole(const std::string& path) {
    CDcmApp app;
    CDcmObject object;
    object.Open(path);
    if (object.ReadFile(&app, nullptr, nullptr) == kDcmSuccess) return object;
    CxDcmParser parser;
    Require(parser.Initialize(&app, path, 1));
    return *parser.GetHeader();
}

CDcmObject ReadSource(const InputFile& input) {
    try {
        return ReadWhole(input.path);
    } catch (const Refusal& refusal) {
        if (input.isNamed || refusal.code != QVM_ERROR_FAILED_TO_PARSE_DICOM ||
            PreambleOf(input.path))
            throw;
        throw Refusal{Outcome::kNotDicom, refusal.code, refusal.message};
    }
}

bool HasClearPreamble(const std::string& path) {
    const auto preamble = PreambleOf(path);
    return preamble && std::ranges::all_of(*preamble, [](char byte) { return byte == 0; });
}

}  // namespace quorvex::tools
