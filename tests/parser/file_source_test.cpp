// Files that are read where and when they are needed: what is read, what is not, what goes wrong.
#include "quorvex/Attributes.h"
#include "tests/parser/parsed.h"
#include "tests/reliability/measured_child.h"
#include "tests/support/corpus.h"
#include "tests/support/host_source.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <sys/resource.h>
#include <thread>

namespace quorvex {
namespace {

using namespace test;
using namespace std::chrono_literals;

constexpr std::size_t kFrameBytes = 40'000;
constexpr ImageFacts kThreeFrames = {.rows = 200, .columns = 100, .frames = "3"};

Bytes FrameAt(int index) {
    Bytes frame(kFrameBytes);
    std::iota(frame.begin(), frame.end(), static_cast<unsigned char>(index));
    return frame;
}

/// Three frames, more than is kept in memory.
Bytes NativeFrames() {
    Bytes pixels;
    for (const int i : {0, 1, 2}) Append(pixels, FrameAt(i));
    return NativeFile(kExplicitUid, kThreeFrames, pixels);
}

Bytes BigEndianFrames() {
    Bytes pixels;
    for (const int i : {0, 1, 2}) Append(pixels, FrameAt(i));
    for (std::size_t i = 0; i < pixels.size(); i += 2) std::swap(pixels[i], pixels[i + 1]);
    return NativeFile(kBigEndianUid, kThreeFrames, pixels);
}

/// Without preamble and marker.
Bytes BareFrames() {
    Bytes pixels;
    for (const int i : {0, 1, 2}) Append(pixels, FrameAt(i));
    auto bare = DicomBuilder::In(kImplicitUid).SopUids().Image(kThreeFrames);
    return bare.Add(0x00420011, "OB", Bytes(5000)).Add(tag::kPixelData, "OW", pixels).Bytes();
}

/// An RLE segment of plain bytes only.
Bytes Literally(const Bytes& plane) {
    Bytes segment;
    for (std::size_t at = 0; at < plane.size(); at += 128) {
        const std::size_t count = std::min<std::size_t>(128, plane.size() - at);
        segment.push_back(static_cast<unsigned char>(count - 1));
        Append(segment, Bytes(plane.begin() + static_cast<std::ptrdiff_t>(at),
                              plane.begin() + static_cast<std::ptrdiff_t>(at + count)));
    }
    if (segment.size() % 2 != 0) segment.push_back(0);
    return segment;
}

Bytes RleOf(const Bytes& words) {
    Bytes high;
    Bytes low;
    for (std::size_t i = 0; i < words.size(); i += 2) {
        low.push_back(words[i]);
        high.push_back(words[i + 1]);
    }
    const Bytes first = Literally(high);
    DicomBuilder coded;
    coded.Number(2, 4).Number(64, 4).Number(64 + first.size(), 4).Raw(Bytes(64 - 12));
    return coded.Raw(first).Raw(Literally(low)).Bytes();
}

/// Each frame in as many fragments as its number, and one more.
Bytes RleFrames() {
    std::vector<Bytes> fragments;
    for (const int i : {0, 1, 2}) {
        const Bytes coded = RleOf(FrameAt(i));
        for (std::ptrdiff_t k = 0; k <= i; ++k) {
            const auto begin = coded.begin() + k * 1000;
            fragments.emplace_back(begin, k == i ? coded.end() : begin + 1000);
        }
    }
    return EncapsulatedFile(kRleUid, kThreeFrames, fragments);
}

struct FromSource {
    explicit FromSource(std::shared_ptr<FileSource> source, int readWholeFile = 0)
        : code(parser.Initialize(&app, std::move(source), readWholeFile)) {}
    CDcmApp app;
    CxDcmParser parser;
    QUORVEX_MESSAGE code;
};

struct Made {
    const char* what;
    Bytes file;
};
const std::vector<Made>& AllMade() {
    static const std::vector<Made> made = {{"native", NativeFrames()},
                                           {"big endian", BigEndianFrames()},
                                           {"bare", BareFrames()},
                                           {"RLE", RleFrames()}};
    return made;
}

// --- One result by every route -------------------------------------------------------------------

/// All that one route tells about a few frames.
std::string Told(CxDcmParser& parser) {
    std::string text;
    const int count = parser.GetFrameCount();
    for (const int index : {0, count / 2, count}) {
        const Answered frame = FrameOf(parser, index);
        const int events = CxDcmParser::FrameEventCount();
        const Place place = PlaceOf(parser, index);
        const Answered stored = StoredFrameOf(parser, index);
        text += std::to_string(index) + ": " + std::to_string(frame.code) + ' ' +
                std::to_string(frame.bytes.size()) + ' ' +
                std::to_string(std::hash<std::string_view>()(
                    {reinterpret_cast<const char*>(frame.bytes.data()), frame.bytes.size()})) +
                ' ' + std::to_string(static_cast<int>(parser.GetFrameQuality())) + ' ' +
                std::to_string(events) + ' ' + std::to_string(place.code) + ' ' +
                std::to_string(place.offset) + ' ' + std::to_string(place.size) + ' ' +
                std::to_string(stored.code) + ' ' +
                std::to_string(std::accumulate(stored.bytes.begin(), stored.bytes.end(), 0)) + '\n';
    }
    return text;
}

/// From a source, and from memory, where the object library says where Pixel Data begins.
void ExpectOneResult(const Bytes& file, const std::string& what) {
    FromSource read(std::make_shared<HostSource>(file));
    CDcmObject object;
    MemoryFile source{.bytes = file};
    unsigned long offset = 0;
    if (ReadUpTo(object, source, kUpToPixelData, &offset) != kDcmSuccess) return;
    ASSERT_EQ(read.code, QVM_SUCCESS) << what;
    if (offset + 12 > file.size()) return;
    const Bytes tag(file.begin() + static_cast<std::ptrdiff_t>(offset),
                    file.begin() + static_cast<std::ptrdiff_t>(offset) + 4);
    const bool isPixelData = tag == Bytes{0xE0, 0x7F, 0x10, 0} || tag == Bytes{0x7F, 0xE0, 0, 0x10};
    if (!isPixelData) return;  // an offset that a host gives is believed, others are not
    CDcmApp app;
    CxDcmParser inMemory;
    Bytes image = file;
    ASSERT_EQ(inMemory.Initialize(&app, &object, image.data(), image.size(), offset), QVM_SUCCESS);
    EXPECT_EQ(Told(read.parser), Told(inMemory)) << what;
}

TEST(FileSource, GivesWhatTheWholeFileGives) {
    // Behind more than is kept in memory, small files are read piece by piece too.
    const Bytes tail(std::size_t{64} << 10);
    std::vector<Made> files = AllMade();
    for (const auto& path : RealFiles()) {
        if (std::filesystem::file_size(path) < 300'000)
            files.push_back({"a real file", BytesOfFile(path)});
    }
    for (std::size_t i = 0; i < files.size(); ++i) {
        const Bytes& file = files[i].file;
        const std::string what = std::string(files[i].what) + ' ' + std::to_string(i) + ", ";
        Bytes longer = file;
        Append(longer, tail);
        ExpectOneResult(longer, what + "with more behind it");
        for (const std::size_t cut : {std::size_t{9}, file.size() / 2})
            ExpectOneResult(Beginning(file, file.size() - cut), what + std::to_string(cut));
    }
}

// --- What is read --------------------------------------------------------------------------------

TEST(FileSource, IsReadAsFarAsIsNeeded) {
    constexpr std::uint64_t kWindow = 16 << 10;
    for (const Made& made : AllMade()) {
        const auto source = std::make_shared<HostSource>(made.file);
        FromSource read(source);
        ASSERT_EQ(read.code, QVM_SUCCESS) << made.what;
        EXPECT_EQ(source->reads, 1) << made.what;
        EXPECT_LE(source->taken, kWindow) << made.what;
        for (const int index : {2, 0, 1}) {
            source->taken = 0;
            EXPECT_EQ(FrameOf(read.parser, index), Done(FrameAt(index))) << made.what << index;
            const std::uint64_t stored = PlaceOf(read.parser, index).size;
            const bool isFirst = index == 2;  // which finds all frames
            EXPECT_LE(source->taken, stored + (isFirst ? 8192 : 32)) << made.what << index;
        }
        FromSource whole(std::make_shared<HostSource>(made.file), 1);
        EXPECT_EQ(FrameOf(whole.parser, 1), Done(FrameAt(1))) << made.what;
    }
}

TEST(FileSource, LongHeadersTakeFewReads) {
    for (const bool isBare : {false, true}) {
        auto file = isBare ? DicomBuilder::In(kExplicitUid) : DicomBuilder::Part10(kExplicitUid);
        file.SopUids().Image(kThreeFrames).Add(0x00420011, "OB", Bytes(5 << 20));
        const auto source = std::make_shared<HostSource>(
            file.Add(tag::kPixelData, "OW", Bytes(3 * kFrameBytes)).Bytes());
        FromSource read(source);
        ASSERT_EQ(read.code, QVM_SUCCESS);
        EXPECT_LE(source->reads, 16);
        EXPECT_EQ(FrameOf(read.parser, 2), Done(Bytes(kFrameBytes)));
        EXPECT_EQ(Read<int>(*read.parser.GetHeader(), tag::kRows), 200);
    }
}

// --- What goes wrong -----------------------------------------------------------------------------

TEST(FileSource, ThatFailsGivesACodeAndNoMore) {
    for (const Made& made : AllMade()) {
        for (const auto wrong : {HostSource::kRefuses, HostSource::kGivesHalf, HostSource::kThrows,
                                 HostSource::kHasNoMemory}) {
            for (long n = 1;; ++n) {
                SCOPED_TRACE(std::string(made.what) + ' ' + std::to_string(wrong) + " at read " +
                             std::to_string(n));
                const auto source = std::make_shared<HostSource>(made.file);
                source->wrong = wrong;
                source->failAt = n;
                FromSource read(source);
                const bool isOpen = read.code == QVM_SUCCESS;
                EXPECT_TRUE(isOpen || read.code == QVM_ERROR_FAILED_TO_READ_FILE);
                for (const int index : {0, 1, 2}) {
                    const Answered frame = FrameOf(read.parser, index);
                    const auto code = isOpen ? QVM_ERROR_FAILED_TO_GET_PIXEL_DATA
                                             : QVM_ERROR_FAILED_TO_PARSE_DICOM;
                    EXPECT_TRUE(frame == Refused(code) ||
                                (isOpen && frame == Done(FrameAt(index))));
                    // The next one asks again, and succeeds.
                    if (isOpen && !frame.IsDone()) {
                        EXPECT_EQ(FrameOf(read.parser, index), Done(FrameAt(index)));
                    }
                }
                if (source->reads < n) break;
            }
        }
    }
}

TEST(FileSource, ThatLiesAboutItsSizeIsNoHarm) {
    const Bytes file = NativeFrames();
    const auto longer = std::make_shared<HostSource>(file);
    longer->addedSize = 1 << 20;
    FromSource read(longer);
    EXPECT_EQ(FrameOf(read.parser, 0), Done(FrameAt(0)));
    longer->addedSize = 1;  // it has changed
    EXPECT_EQ(FrameOf(read.parser, 0), Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA));
    longer->throwsForSize = true;
    EXPECT_EQ(FrameOf(read.parser, 0), Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA));
    EXPECT_EQ(PlaceOf(read.parser).code, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);

    const auto endless = std::make_shared<HostSource>(file);
    endless->addedSize = UINT64_MAX - file.size();
    EXPECT_EQ(FromSource(endless).code, QVM_ERROR_FAILED_TO_READ_FILE);
    EXPECT_EQ(FromSource(std::make_shared<HostSource>(Bytes())).code,
              QVM_ERROR_FAILED_TO_READ_FILE);
    EXPECT_EQ(FromSource(nullptr).code, QVM_ERROR_FAILED_TO_READ_FILE);
}

void Rewrite(const std::string& path, std::uintmax_t offset) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(offset));
    file.put('\x7F');
}

const struct {
    const char* what;
    void (*change)(const std::string& path);
} kChanges[] = {
    {"a byte of another frame", [](const std::string& path) { Rewrite(path, 110'000); }},
    {"cut", [](const std::string& path) { std::filesystem::resize_file(path, 100'000); }},
    {"longer", [](const std::string& path) { std::filesystem::resize_file(path, 900'000); }},
    {"empty", [](const std::string& path) { std::filesystem::resize_file(path, 0); }},
    {"gone", [](const std::string& path) { std::filesystem::remove(path); }},
    {"a folder",
     [](const std::string& path) {
         std::filesystem::remove(path);
         std::filesystem::create_directory(path);
     }},
    {"another file of the same bytes",
     [](const std::string& path) {
         std::filesystem::copy_file(path, path + ".new");
         std::filesystem::last_write_time(path + ".new", std::filesystem::last_write_time(path));
         std::filesystem::rename(path + ".new", path);
     }},
};

TEST(FileSource, AFileThatChangesGivesNoMoreFrames) {
    for (const Made& made : AllMade()) {
        for (const auto& c : kChanges) {
            SCOPED_TRACE(std::string(made.what) + ", " + c.what);
            const TemporaryFile file(made.file);
            std::filesystem::last_write_time(file.Path(),
                                             std::filesystem::file_time_type::clock::now() - 1h);
            Parsed parsed;
            ASSERT_EQ(parsed.parser.Initialize(&parsed.app, file.Path(), 0), QVM_SUCCESS);
            EXPECT_EQ(FrameOf(parsed.parser, 0), Done(FrameAt(0)));
            CxDcmParser copy(parsed.parser);
            c.change(file.Path());
            for (CxDcmParser* parser : {&parsed.parser, &copy}) {
                for (const int index : {1, 0}) {
                    EXPECT_EQ(FrameOf(*parser, index), Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA));
                    EXPECT_EQ(PlaceOf(*parser, index).code, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
                }
                EXPECT_EQ(parser->GetFrameCount(), 3);
            }
        }
    }
}

TEST(FileSource, WhatIsInMemoryOutlivesItsFile) {
    for (const auto& [bytes, readWhole] :
         {std::pair{NativeFile(kExplicitUid, {}, Bytes(8, 5)), 0}, {NativeFrames(), 1}}) {
        Parsed parsed(bytes, readWhole);
        parsed.onDisk.reset();
        EXPECT_EQ(FrameOf(parsed.parser).code, QVM_SUCCESS);
    }
    // A path stays the same file when the process goes elsewhere.
    const ScratchFolder folder;
    folder.Write("relative.dcm", NativeFrames());
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(folder.Path("x")).parent_path());
    Parsed parsed;
    EXPECT_EQ(parsed.parser.Initialize(&parsed.app, "relative.dcm", 0), QVM_SUCCESS);
    std::filesystem::current_path(before);
    EXPECT_EQ(FrameOf(parsed.parser, 1), Done(FrameAt(1)));
}

// --- Many and large ------------------------------------------------------------------------------

TEST(FileSource, NoFileStaysOpen) {
    rlimit former{};
    getrlimit(RLIMIT_NOFILE, &former);
    const rlimit few = {std::min<rlim_t>(1024, former.rlim_max), former.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const TemporaryFile file(NativeFrames());
    CDcmApp app;
    std::vector<CxDcmParser> parsers(5000);
    int failed = 0;
    for (CxDcmParser& parser : parsers)
        failed += parser.Initialize(&app, file.Path(), 0) == QVM_SUCCESS ? 0 : 1;
    for (CxDcmParser& parser : parsers) failed += FrameOf(parser, 2).code == QVM_SUCCESS ? 0 : 1;
    setrlimit(RLIMIT_NOFILE, &former);
    EXPECT_EQ(failed, 0);
}

TEST(FileSource, ServesCopiesSideBySide) {
    for (const Made& made : AllMade()) {
        FromSource read(std::make_shared<HostSource>(made.file));
        const TemporaryFile file(made.file);
        Parsed byPath;
        ASSERT_EQ(byPath.parser.Initialize(&byPath.app, file.Path(), 0), QVM_SUCCESS);
        std::vector<std::jthread> threads;
        for (const CxDcmParser* parser : {&read.parser, &byPath.parser}) {
            for (int i = 0; i < 3; ++i) {
                threads.emplace_back([copy = CxDcmParser(*parser), i]() mutable {
                    for (int round = 0; round < 20; ++round) {
                        const int index = (round + i) % 3;
                        EXPECT_EQ(FrameOf(copy, index), Done(FrameAt(index)));
                    }
                });
            }
        }
    }
}

constexpr std::uint64_t kMany = 100'000;
constexpr ImageFacts kSmall = {.rows = 64, .columns = 64, .bits = 8, .frames = "100000"};

/// An item whose RLE frame is all of one value, its number's lowest byte.
Bytes OneColour(std::uint64_t index, std::uint64_t itemBytes) {
    DicomBuilder item;
    item.Item(static_cast<std::uint32_t>(itemBytes - 8)).Number(1, 4).Number(64, 4).Raw(Bytes(56));
    for (int run = 0; run < 32; ++run) item.Number(0x81, 1).Number(index % 256, 1);
    return item.Bytes();
}

/// Offsets of items that are all as long.
Bytes TableOf(std::uint64_t itemBytes, int entryBytes) {
    DicomBuilder table;
    for (std::uint64_t i = 0; i < kMany; ++i) table.Number(i * itemBytes, entryBytes);
    return table.Bytes();
}

struct Endless {
    const char* what;
    std::uint64_t itemBytes;  ///< of a frame
    int basicBytes;           ///< of an entry of the basic table
    bool isExtended;
};
constexpr Endless kEndless[] = {
    {"no table", 200'000, 0, false},
    {"a basic table", 40'000, 4, false},
    {"extended tables", 200'000, 0, true},
};

void ExpectFrames(const std::shared_ptr<EndlessSource>& source, std::uint64_t frameBytes,
                  std::uint64_t headerBytes) {
    FromSource read(source);
    ASSERT_EQ(read.code, QVM_SUCCESS);
    for (const int index : {50'000, 0, 99'999}) {
        const Answered frame = FrameOf(read.parser, index);
        ASSERT_EQ(frame.code, QVM_SUCCESS) << index;
        EXPECT_EQ(frame.bytes[5], index % 256) << index;
        EXPECT_EQ(read.parser.GetFrameQuality(), FrameQuality::kWhole);
    }
    constexpr std::uint64_t kWindows = 2 << 20;
    const std::uint64_t itemHeaders = 8 * kMany;
    EXPECT_LE(source->taken, headerBytes + itemHeaders + 3 * frameBytes + kWindows);
}

TEST(FileSource, MayBeLargerThanMemory) {
    constexpr std::size_t kMostMemory = std::size_t{48} << 20;
    for (const Endless& c : kEndless) {
        auto header = ImageFile(kRleUid, kSmall);
        if (c.isExtended) header.Add(tag::kExtendedOffsetTable, "OV", TableOf(c.itemBytes, 8));
        const Bytes table = c.basicBytes == 0 ? Bytes() : TableOf(c.itemBytes, c.basicBytes);
        header.Header(tag::kPixelData, "OB", kUndefinedLength);
        header.Item(static_cast<std::uint32_t>(table.size())).Raw(table);
        const auto source = std::make_shared<EndlessSource>(
            header.Bytes(), kMany, c.itemBytes,
            [&c](std::uint64_t i) { return OneColour(i, c.itemBytes); });
        ExpectCost(
            c.what, 2.0, [&] { ExpectFrames(source, c.itemBytes, header.Size()); }, kMostMemory);
    }
    constexpr ImageFacts kNative = {.rows = 500, .columns = 400, .bits = 8, .frames = "100000"};
    auto header = ImageFile(kExplicitUid, kNative);
    header.Header(tag::kPixelData, "OW", kUndefinedLength);  // 32 bits do not tell 20 GB
    const auto source = std::make_shared<EndlessSource>(
        header.Bytes(), kMany, 200'000,
        [](std::uint64_t i) { return Bytes(8, static_cast<unsigned char>(i)); });
    ExpectCost(
        "native", 2.0, [&] { ExpectFrames(source, 200'000, header.Size()); }, kMostMemory);
}

TEST(FileSource, MayHaveHoles) {
    constexpr ImageFacts kNative = {.rows = 500, .columns = 400, .bits = 8, .frames = "100000"};
    auto header = ImageFile(kExplicitUid, kNative);
    const TemporaryFile file(header.Header(tag::kPixelData, "OW", kUndefinedLength).Bytes());
    std::error_code failure;
    std::filesystem::resize_file(file.Path(), header.Size() + kMany * 200'000, failure);
    if (failure) GTEST_SKIP() << "no file of 20 GB here, not even an empty one";
    Rewrite(file.Path(), header.Size() + 77'777ULL * 200'000);
    ExpectCost(
        "a file with holes", 2.0,
        [&] {
            Parsed parsed;
            ASSERT_EQ(parsed.parser.Initialize(&parsed.app, file.Path(), 0), QVM_SUCCESS);
            EXPECT_EQ(FrameOf(parsed.parser, 77'777).bytes[0], 0x7F);
            EXPECT_EQ(FrameOf(parsed.parser, 99'999), Done(Bytes(200'000)));
        },
        std::size_t{48} << 20);
}

}  // namespace
}  // namespace quorvex
