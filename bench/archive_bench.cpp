// Opening the slices of an archive for their headers, beside reading the files and nothing else.
#include "quorvex/CxDcmParser.h"

#include <array>
#include <benchmark/benchmark.h>
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

BENCHMARK(OpenSlices)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadSlices)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvex::bench
