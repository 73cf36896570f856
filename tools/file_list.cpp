#include "tools/file_list.h"

#include "tools/report.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace quorvex::tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardInput = "-";
constexpr unsigned kMostShards = 1'000'000;

// FNV-1a with the finish of splitmix64: the same on every machine and in every release.
std::uint64_t StableHash(const std::string& name) noexcept {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    hash = (hash ^ (hash >> 30)) * 0xBF58476D1CE4E5B9U;
    hash = (hash ^ (hash >> 27)) * 0x94D049BB133111EBU;
    return hash ^ (hash >> 31);
}

// A relative path; steps out of the output folder are removed.
std::string NameInsideAFolder(const std::string& path) {
    fs::path inside;
    for (const auto& part : fs::path(path).lexically_normal().relative_path())
        if (part != ".." && part != ".") inside /= part;
    return inside.string();
}

bool IsSameFolder(const fs::path& one, const fs::path& other) {
    std::error_code failure;
    return !other.empty() && fs::equivalent(one, other, failure);
}

}  // namespace

bool Shard::Has(const std::string& name) const noexcept {
    return count == 1 || StableHash(name) % count == index - 1;
}

Shard ParseShard(const std::string& text) {
    Shard shard{.index = 0, .count = 0};
    const char* end = text.data() + text.size();
    const auto index = std::from_chars(text.data(), end, shard.index);
    const bool hasBoth = index.ec == std::errc{} && index.ptr != end && *index.ptr == '/';
    const auto count = std::from_chars(hasBoth ? index.ptr + 1 : end, end, shard.count);
    if (!hasBoth || count.ec != std::errc{} || count.ptr != end || shard.index < 1 ||
        shard.index > shard.count || shard.count > kMostShards)
        throw WrongUsage("a shard is I/N with I from 1 to N, as in 2/8, not " + text);
    return shard;
}

bool HasFolder(const std::vector<std::string>& arguments) {
    std::error_code failure;
    return std::ranges::any_of(
        arguments, [&](const std::string& path) { return fs::is_directory(path, failure); });
}

/// The open list of paths.
struct FileList::List {
    explicit List(const std::string& path)
        : name(path), file(path == kStandardInput ? stdin : std::fopen(path.c_str(), "re")) {
        if (file == nullptr) throw SystemFailure(path);
    }
    ~List() {
        if (file != stdin) static_cast<void>(std::fclose(file));
    }
    List(const List&) = delete;
    List& operator=(const List&) = delete;

    // One entry without its separator; nothing at the end.
    std::optional<std::string> Next(char separator) {
        std::string entry;
        int c = 0;
        while ((c = std::getc(file)) != EOF && c != separator) entry += static_cast<char>(c);
        if (std::ferror(file) != 0) throw SystemFailure(name);
        if (c == EOF && entry.empty()) return std::nullopt;
        if (separator == '\n' && entry.ends_with('\r')) entry.pop_back();
        return entry;
    }

    std::string name;
    std::FILE* file;
};

FileList::FileList(FileListSource source) : source_(std::move(source)) {}

FileList::~FileList() = default;

std::optional<InputFile> FileList::Next() {
    for (;;) {
        auto input = NextOfAll();
        if (!input || source_.shard.Has(input->name)) return input;
    }
}

std::optional<InputFile> FileList::NextOfAll() {
    if (auto input = NextOfFolder()) return input;
    if (auto input = NextOfArguments()) return input;
    return NextOfList();
}

std::optional<InputFile> FileList::NextOfArguments() {
    while (nextArgument_ < source_.arguments.size()) {
        const std::string& path = source_.arguments[nextArgument_++];
        std::error_code failure;
        if (!fs::is_directory(path, failure))
            return InputFile{path, NameInsideAFolder(fs::path(path).filename().string()), true};
        if (IsSameFolder(path, source_.leftOutFolder))
            throw WrongUsage(path + " is the output folder too");
        folder_ = path;
        isFolderEmpty_ = true;
        Enter(folder_);
        if (auto input = NextOfFolder()) return input;
    }
    return std::nullopt;
}

std::optional<InputFile> FileList::NextOfFolder() {
    while (!walk_.empty()) {
        if (walk_.back() == fs::directory_iterator()) {
            walk_.pop_back();
            if (walk_.empty()) LeaveTopFolder();
            continue;
        }
        const fs::directory_entry entry = *walk_.back();
        std::error_code failure;
        walk_.back().increment(failure);
        if (failure) Miss(entry.path().parent_path(), failure);
        const bool isFile = entry.is_regular_file(failure);
        if (failure && failure != std::errc::no_such_file_or_directory)
            Miss(entry.path(), failure);
        else if (entry.is_directory(failure) && !entry.is_symlink(failure))
            Enter(entry.path());
        if (!isFile) continue;
        isFolderEmpty_ = false;
        return InputFile{entry.path().string(),
                         NameInsideAFolder(entry.path().lexically_relative(folder_).string()),
                         false};
    }
    return std::nullopt;
}

void FileList::Enter(const fs::path& folder) {
    if (IsSameFolder(folder, source_.leftOutFolder)) return;
    std::error_code failure;
    fs::directory_iterator entries(folder, failure);
    if (failure)
        Miss(folder, failure);
    else
        walk_.push_back(std::move(entries));
}

void FileList::LeaveTopFolder() {
    if (isFolderEmpty_ && !isQuiet_) Complain(folder_.string(), "warning: the folder has no files");
}

void FileList::Miss(const fs::path& path, const std::error_code& failure) {
    status_ = kEnvironment;
    isFolderEmpty_ = false;
    if (!isQuiet_) Complain(path.string(), "it cannot be opened: " + failure.message());
}

std::optional<InputFile> FileList::NextOfList() {
    if (source_.list.empty()) return std::nullopt;
    if (!list_) list_ = std::make_unique<List>(source_.list);
    while (auto path = list_->Next(source_.isNulSeparated ? '\0' : '\n'))
        if (!path->empty()) return InputFile{*path, NameInsideAFolder(*path), false};
    return std::nullopt;
}

std::optional<std::size_t> FileList::Count(const FileListSource& source) {
    if (source.list == kStandardInput) return std::nullopt;
    FileList files(source);
    files.isQuiet_ = true;
    std::size_t count = 0;
    while (files.Next()) ++count;
    return count;
}

}  // namespace quorvex::tools
