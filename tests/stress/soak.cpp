// Opens, renders, converts and drops objects, and ends with the memory it began with.
// Usage: quorvex_soak OBJECTS FILE|FOLDER...
#include "file_work.h"
#include "tests/support/corpus.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

// After a fifth, every file has been converted into every form, so that every character set, font
// and table that somebody keeps has been met.
constexpr std::size_t kWarmUpShare = 5;
constexpr std::size_t kLines = 10;
// Nothing of the library's may stay: 16 KiB in 16,000 objects is one byte an object. The
// allocator's cache of freed blocks counts as live, so it has to be off
// (GLIBC_TUNABLES=glibc.malloc.tcache_count=0).
constexpr std::size_t kLiveTolerance = 16 * 1024;
// The resident set also has the holes between live blocks, which move about.
constexpr std::size_t kResidentTolerance = 4 * 1024 * 1024;

struct Memory {
    std::size_t live = 0;      ///< bytes handed out by the allocator
    std::size_t resident = 0;  ///< bytes of the process in memory
    std::size_t mappings = 0;  ///< lines of the process's map
    std::size_t files = 0;     ///< open files
};

std::size_t LinesOf(const char* path) {
    std::ifstream file(path);
    return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(file), {}, '\n'));
}

std::size_t ResidentPages() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident;
}

Memory MemoryNow() {
    malloc_trim(0);
    const struct mallinfo2 heap = mallinfo2();
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return {.live = heap.uordblks + heap.hblkhd,
            .resident = ResidentPages() * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)),
            .mappings = LinesOf("/proc/self/maps"),
            .files = static_cast<std::size_t>(std::distance(begin(open), end(open)))};
}

void Show(std::size_t objects, const Memory& memory, double seconds) {
    constexpr double kKiB = 1024.0;
    std::printf(
        "%6zu objects  live %8.1f KiB  resident %8.1f KiB  %zu mappings  %zu files  %.0f s\n",
        objects, static_cast<double>(memory.live) / kKiB,
        static_cast<double>(memory.resident) / kKiB, memory.mappings, memory.files, seconds);
    std::fflush(stdout);
}

bool HasGrown(const Memory& before, const Memory& after) {
    return after.live > before.live + kLiveTolerance ||
           after.resident > before.resident + kResidentTolerance || after.files > before.files;
}

int Soak(std::size_t objects, const std::vector<std::filesystem::path>& files) {
    const auto started = std::chrono::steady_clock::now();
    const std::size_t warm = objects / kWarmUpShare;
    const std::size_t stride = std::max<std::size_t>(objects / kLines, 1);
    Memory before;
    Memory now;
    std::size_t done = 0;
    for (; done < objects; ++done) {
        const auto turn = static_cast<unsigned>(done / files.size() + done);
        WorkOnFile(files[done % files.size()], turn, Amount::kOpenRenderConvert);
        if ((done + 1) % stride != 0) continue;
        now = MemoryNow();
        if (done < warm) before = now;
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started;
        Show(done + 1, now, taken.count());
    }
    if (!HasGrown(before, now)) return 0;
    std::printf("The memory has grown.\n");
    return 1;
}

}  // namespace
}  // namespace quorvex::test

int main(int count, char** texts) {
    using namespace quorvex::test;
    const std::size_t objects = count > 2 ? std::strtoul(texts[1], nullptr, 10) : 0;
    const auto files = FilesIn({texts + std::min(count, 2), texts + count});
    if (objects == 0 || files.empty()) {
        std::fprintf(stderr, "Usage: quorvex_soak OBJECTS FILE|FOLDER...\n");
        return 2;
    }
    return Soak(objects, files);
}
