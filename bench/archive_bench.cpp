// Opening the slices of an archive for their headers, beside reading the files and nothing else;
// and for the attributes that put them in order, beside dcmdata.
#include <dcmtk/config/osconfig.h>
// dcmdata wants its own configuration first.
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"

#include <array>
#include <benchmark/benchmark.h>
#include <dcmtk/dcmdata/dctk.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quorvex::bench {
namespace {

constexpr int kSlices = 1000;

/// A folder of copies of the CT sample, gone with the program.
struct Archive {
    std::filesystem::path folder;

    Archive() {
        std::string name = std::filesystem::temp_directory_path() / "quorvex_archive_XXXXXX";
        folder = mkdtemp(name.data());
        for (int i = 0; i < kSlices; ++i) {
            std::filesystem::copy(QUORVEX_SOURCE_DIR "/samples/ct.dcm", Slice(i));
        }
    }
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;
    ~Archive() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    [[nodiscard]] std::string Slice(int index) const {
        return folder / (std::to_string(index) + ".dcm");
    }
};

const Archive& Slices() {
    static const Archive archive;
    return archive;
}

void OpenSlices(benchmark::State& state) {
    const Archive& archive = Slices();
    CDcmApp app;
    for (auto _ : state) {
        std::vector<CxDcmParser> parsers(kSlices);
        for (int i = 0; i < kSlices; ++i) {
            const CString path(archive.Slice(i));
            const auto opened = parsers[static_cast<std::size_t>(i)].Initialize(&app, path, 0);
            if (opened != QVM_SUCCESS) state.SkipWithError("not opened");
        }
    }
}

/// Into a block that each file gets for itself, and all of them kept, as ours keep theirs.
void ReadSlices(benchmark::State& state) {
    const Archive& archive = Slices();
    for (auto _ : state) {
        std::vector<std::unique_ptr<unsigned char[]>> blocks(kSlices);
        for (int i = 0; i < kSlices; ++i) {
            const int file = open(archive.Slice(i).c_str(), O_RDONLY | O_CLOEXEC);
            struct stat facts {};
            fstat(file, &facts);
            const auto size = static_cast<std::size_t>(facts.st_size);
            auto& block = blocks[static_cast<std::size_t>(i)];
            block = std::make_unique_for_overwrite<unsigned char[]>(size);
            if (read(file, block.get(), size) != facts.st_size) state.SkipWithError("not read");
            close(file);
        }
    }
}

/// As many names as a large study has slices, all of one file.
const std::vector<std::string>& Study() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> links;
        for (int i = 0; i < 10'000; ++i) {
            links.push_back(Slices().folder / ("link" + std::to_string(i)));
            std::filesystem::create_hard_link(Slices().Slice(0), links.back());
        }
        return links;
    }();
    return names;
}

constexpr std::array kSortedBy = {tag::kSeriesInstanceUID, tag::kSOPInstanceUID,
                                  tag::kInstanceNumber, tag::kImagePositionPatient,
                                  tag::kImageOrientationPatient};

/// One slice a turn: what a viewer reads of each to put a study in order.
void SortOurs(benchmark::State& state) {
    const auto& study = Study();
    CDcmApp app;
    std::size_t next = 0;
    for (auto _ : state) {
        CxDcmParser parser;
        const CString path(study[next++ % study.size()]);
        if (parser.Initialize(&app, path, 0) != QVM_SUCCESS) state.SkipWithError("not opened");
        for (const std::uint32_t tag : kSortedBy) {
            CString value;
            if (parser.GetHeader()->GetValue(tag, value) != kDcmSuccess)
                state.SkipWithError("not there");
            benchmark::DoNotOptimize(value);
        }
    }
}

void SortDcmdata(benchmark::State& state) {
    const auto& study = Study();
    std::size_t next = 0;
    for (auto _ : state) {
        DcmFileFormat file;
        const std::string& path = study[next++ % study.size()];
        const auto read = file.loadFileUntilTag(path.c_str(), EXS_Unknown, EGL_noChange,
                                                DCM_MaxReadLength, ERM_autoDetect, DCM_PixelData);
        if (read.bad()) state.SkipWithError("not opened");
        for (const std::uint32_t tag : kSortedBy) {
            OFString value;
            const DcmTagKey key(static_cast<Uint16>(tag >> 16U), static_cast<Uint16>(tag));
            if (file.getDataset()->findAndGetOFStringArray(key, value).bad())
                state.SkipWithError("not there");
            benchmark::DoNotOptimize(value);
        }
    }
}
BENCHMARK(SortOurs)->Unit(benchmark::kMicrosecond);
BENCHMARK(SortDcmdata)->Unit(benchmark::kMicrosecond);
BENCHMARK(OpenSlices)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadSlices)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvex::bench
