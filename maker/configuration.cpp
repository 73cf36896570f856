#include "maker/configuration.h"

#include "foundation/platform/file_reader.h"
#include "foundation/platform/host.h"
#include "foundation/types/limits.h"

#include <optional>
#include <string>

namespace quorvex {
namespace {

constexpr std::string_view kFileName = "Quorvex.INI";

struct Setting {
    std::string_view tagLine;
    CString MakerConfiguration::*value;
    std::string_view byDefault;
};

constexpr Setting kSettings[] = {
    {"[QUORVEX_UID_PREFIX]", &MakerConfiguration::uidPrefix, "1.2.999.700040"},
    {"[QUORVEX_MANUFACTURER]", &MakerConfiguration::manufacturer, "SORVANEX"},
    {"[QUORVEX_MODEL_NAME]", &MakerConfiguration::modelName, "SORVANEX PACS"},
};

/// The next line without its end; nothing behind the last one.
std::optional<std::string_view> TakeLine(std::string_view& text) {
    if (text.empty()) return std::nullopt;
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

std::optional<std::string> ContentOf(const std::string& path) {
    const FileReader file(path);
    if (!file.IsOpen() || file.Size() > kLargestConfiguration) return std::nullopt;
    std::string text(file.Size(), '\0');
    if (!file.Read(0, {reinterpret_cast<unsigned char*>(text.data()), text.size()}))
        return std::nullopt;
    return text;
}

std::optional<std::string> OwnContent() {
    return ContentOf(HostDirectory() + std::string(kFileName));
}

}  // namespace

MakerConfiguration DefaultConfiguration() {
    MakerConfiguration configuration;
    for (const Setting& setting : kSettings) configuration.*setting.value = setting.byDefault;
    return configuration;
}

MakerConfiguration ParseConfiguration(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    MakerConfiguration configuration;
    while (const auto tagLine = TakeLine(text)) {
        const auto value = TakeLine(text);
        for (const Setting& setting : kSettings) {
            if (value && *tagLine == setting.tagLine) configuration.*setting.value = *value;
        }
    }
    return configuration;
}

CString ConfiguredUidRoot() {
    const auto text = OwnContent();
    return text ? ParseConfiguration(*text).uidPrefix : CString();
}

MakerConfiguration ReadConfiguration() {
    const auto text = OwnContent();
    return text ? ParseConfiguration(*text) : DefaultConfiguration();
}

}  // namespace quorvex
