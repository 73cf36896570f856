#include "tools/convert/manifest/manifest.h"

#include "quorvex/Types.h"
#include "tools/convert/manifest/flat_json.h"
#include "tools/json.h"
#include "tools/report.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::tools {
namespace {

constexpr const char* kOutcomes[] = {"done",    "not DICOM", "bad",          "failed",
                                     "carried", "kept",      "not supported"};
static_assert(std::size(kOutcomes) == kOutcomeCount);
constexpr const char* kKeptReasons[] = {"", "not supported", "lossy"};
constexpr const char* kVerifications[] = {"", "off", "equal", "lossy", "different"};

// The members that name a file, ahead of which a comma stands.
std::string NameMembers(const std::string& name, const std::string& path) {
    auto json = JsonMember(name, JsonString(path));
    if (CString(path).ToValidUtf8() == path) return json;
    return json + JsonMember(name + "Bytes", JsonString(Hexadecimal(path)));
}

std::string FromHexadecimal(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        unsigned byte = 0;
        std::from_chars(digits.data() + i, digits.data() + i + 2, byte, 16);
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string Text(const std::string& name, const std::string& value) {
    return value.empty() ? "" : JsonMember(name, JsonString(value));
}

template <class Number>
std::string Count(const std::string& name, Number value) {
    return JsonMember(name, std::to_string(value));
}

std::string DigestMembers(const std::string& prefix, const FileDigest& digest) {
    if (digest.sha256.empty()) return {};
    return Text(prefix + "Sha256", digest.sha256) + Count(prefix + "Bytes", digest.bytes);
}

std::string NameList(const std::string& name, const std::vector<std::string>& values) {
    return JsonMember(name, JsonArray(values, JsonString));
}

std::string VerificationMembers(const ConvertRecord& record) {
    std::string json = Text("verify", kVerifications[static_cast<int>(record.verification)]);
    if (!record.compared.empty())
        json += NameList("compared", record.compared) + NameList("changed", record.changed);
    if (record.verification != Verification::kLossy) return json;
    return json + JsonMember("greatestError", JsonNumber(record.greatestError)) +
           JsonMember("psnr", JsonNumber(record.psnr));
}

std::string NameOf(const std::map<std::string, std::string>& line, const std::string& name) {
    if (const auto bytes = line.find(name + "Bytes"); bytes != line.end())
        return FromHexadecimal(bytes->second);
    const auto text = line.find(name);
    return text == line.end() ? std::string() : text->second;
}

template <class Number>
Number NumberOf(const std::map<std::string, std::string>& line, const char* name) {
    Number number = 0;
    const auto text = line.find(name);
    if (text == line.end()) return number;
    std::from_chars(text->second.data(), text->second.data() + text->second.size(), number);
    return number;
}

bool HasSize(const std::string& path, std::uint64_t bytes) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && static_cast<std::uint64_t>(status.st_size) == bytes;
}

/// The first digits of a digest.
std::array<char, 16> ContentOf(const std::string& sha256) {
    std::array<char, 16> content{};
    std::copy_n(sha256.begin(), std::min(sha256.size(), content.size()), content.begin());
    return content;
}

/// The file for one process alone.
class Lock {
public:
    explicit Lock(int descriptor) : descriptor_(descriptor) {
        while (flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) continue;
    }
    ~Lock() { flock(descriptor_, LOCK_UN); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    int descriptor_;
};

}  // namespace

std::string AsJsonLine(const ConvertRecord& record) {
    std::string json = NameMembers("input", record.input);
    json.front() = '{';
    if (!record.output.empty()) json += NameMembers("output", record.output);
    json += Text("status", kOutcomes[static_cast<int>(record.outcome)]) +
            Text("to", record.target) + Count("quality", record.quality) +
            (record.leavesLossy ? JsonMember("leaveLossy", "true") : "") +
            Text("kept", kKeptReasons[static_cast<int>(record.kept)]) +
            DigestMembers("source", record.source) +
            (record.source.sha256.empty() ? "" : Count("sourceModified", record.source.modified)) +
            DigestMembers("result", record.result) + Text("studyUid", record.studyUid) +
            Text("seriesUid", record.seriesUid) + Text("instanceUid", record.instanceUid) +
            (record.resultUid == record.instanceUid ? "" : Text("resultUid", record.resultUid)) +
            Text("syntaxIn", record.syntaxIn) + Text("syntaxOut", record.syntaxOut) +
            Count("frames", record.frames) + VerificationMembers(record) +
            Count("milliseconds", record.milliseconds) + Count("code", record.code) +
            Text("message", record.message);
    return json + "}\n";
}

Manifest::Manifest(const std::string& path)
    : path_(path), descriptor_(open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0666)) {
    if (descriptor_ < 0) throw SystemFailure(path);
    try {
        const Lock lock(descriptor_);
        RefuseWhatIsNone();
        CutTornLine();
        ReadLines();
    } catch (...) {
        close(descriptor_);
        throw;
    }
}

Manifest::~Manifest() {
    close(descriptor_);
}

// Another file, named by mistake, must not lose what follows its last line.
void Manifest::RefuseWhatIsNone() const {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) throw SystemFailure(path_);
    char first = '{';
    if (!S_ISREG(status.st_mode) || pread(descriptor_, &first, 1, 0) < 0 || first != '{')
        throw WrongUsage(path_ + " is no file to keep a manifest in");
}

void Manifest::CutTornLine() {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) throw SystemFailure(path_);
    off_t end = status.st_size;
    char last = '\n';
    while (end > 0) {
        if (pread(descriptor_, &last, 1, end - 1) != 1) throw SystemFailure(path_);
        if (last == '\n') break;
        --end;
    }
    if (end != status.st_size && ftruncate(descriptor_, end) != 0) throw SystemFailure(path_);
}

void Manifest::ReadLines() {
    std::ifstream file(path_, std::ios::binary);
    std::string line;
    while (std::getline(file, line)) ReadLine(line);
    if (file.bad()) throw SystemFailure(path_);
    std::ranges::sort(done_, {}, &Done::key);
}

void Manifest::ReadLine(const std::string& text) {
    const auto read = ReadFlatJson(text);
    if (!read) return;
    const auto& line = *read;
    const std::string status = NameOf(line, "status");
    const auto is = [&](Outcome outcome) { return status == kOutcomes[static_cast<int>(outcome)]; };
    if (!is(Outcome::kDone) && !is(Outcome::kCarried) && !is(Outcome::kKept)) return;
    ConvertRecord record;
    record.input = NameOf(line, "input");
    record.output = NameOf(line, "output");
    record.target = NameOf(line, "to");
    record.quality = NumberOf<int>(line, "quality");
    record.leavesLossy = line.contains("leaveLossy");
    Done done{
        .key = KeyOf(record),
        .isVerified =
            NameOf(line, "verify") != kVerifications[static_cast<int>(Verification::kOff)],
        .isUnsupported = NameOf(line, "kept") == kKeptReasons[static_cast<int>(Kept::kUnsupported)],
        .content = {},
        .sourceModified = NumberOf<std::int64_t>(line, "sourceModified"),
        .sourceBytes = NumberOf<std::uint64_t>(line, "sourceBytes"),
        .resultBytes = NumberOf<std::uint64_t>(line, "resultBytes")};
    done.content = ContentOf(NameOf(line, "sourceSha256"));
    done_.push_back(done);
}

std::array<char, 15> Manifest::KeyOf(const ConvertRecord& wanted) {
    std::string text = wanted.input;
    for (const auto& part : {wanted.output, wanted.target, std::to_string(wanted.quality)})
        text += '\0' + part;
    if (wanted.leavesLossy) text += '\0';
    std::array<char, 15> key{};
    std::ranges::copy_n(DigestOfText(text).begin(), key.size(), key.begin());
    return key;
}

bool Manifest::IsSameSource(const std::string& path, const Done& done) {
    const FileDigest now = LengthOfFile(path);
    if (now.bytes != done.sourceBytes) return false;
    return now.modified == done.sourceModified ||
           ContentOf(DigestOfFile(path).sha256) == done.content;
}

bool Manifest::IsDone(const ConvertRecord& wanted, Wish wish) const {
    const auto key = KeyOf(wanted);
    const auto isAhead = [](const Done& done, const auto& other) { return done.key < other; };
    const auto found = std::lower_bound(done_.begin(), done_.end(), key, isAhead);
    const auto end = std::find_if(found, done_.end(), [&](const Done& d) { return d.key != key; });
    return std::any_of(found, end, [&](const Done& done) {
        return (done.isVerified || !wish.isVerified) &&
               (!done.isUnsupported || wish.keepsUnsupported) &&
               HasSize(wanted.output, done.resultBytes) && IsSameSource(wanted.input, done);
    });
}

void Manifest::Add(const ConvertRecord& record) {
    const std::string line = AsJsonLine(record);
    const Lock lock(descriptor_);
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) throw SystemFailure(path_);
    const auto written = write(descriptor_, line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size())) return;
    if (written >= 0) errno = ENOSPC;
    const int cause = errno;
    static_cast<void>(ftruncate(descriptor_, status.st_size) == 0);  // the next opening cuts it too
    errno = cause;
    throw SystemFailure(path_);
}

}  // namespace quorvex::tools
