#include "tools/info/preamble.h"

#include <array>
#include <fstream>

namespace quorvex::tools {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kPreamble = 128;
constexpr auto kMarker = "DICM"sv;

struct Signature {
    std::string_view bytes;
    std::string_view kind;
};
constexpr std::array kSignatures = {
    Signature{"MZ"sv, "PE program"sv},
    Signature{"\x7F"
              "ELF"sv,
              "ELF program"sv},
    Signature{"\xFE\xED\xFA\xCE"sv, "Mach-O program"sv},
    Signature{"\xFE\xED\xFA\xCF"sv, "Mach-O program"sv},
    Signature{"\xCE\xFA\xED\xFE"sv, "Mach-O program"sv},
    Signature{"\xCF\xFA\xED\xFE"sv, "Mach-O program"sv},
    Signature{"\xCA\xFE\xBA\xBE"sv, "Mach-O program"sv},
    Signature{"\xCA\xFE\xBA\xBF"sv, "Mach-O program"sv},
    Signature{"II*\0"sv, "TIFF picture"sv},
    Signature{"MM\0*"sv, "TIFF picture"sv},
    Signature{"II+\0"sv, "TIFF picture"sv},
    Signature{"MM\0+"sv, "TIFF picture"sv},
};

}  // namespace

std::string_view PreambleKind(const std::string& path) {
    std::array<char, kPreamble + kMarker.size()> head{};
    std::ifstream file(path, std::ios::binary);
    if (!file.read(head.data(), head.size())) return {};
    const std::string_view bytes(head.data(), head.size());
    if (!bytes.ends_with(kMarker)) return {};
    for (const auto& signature : kSignatures)
        if (bytes.starts_with(signature.bytes)) return signature.kind;
    return {};
}

}  // namespace quorvex::tools
