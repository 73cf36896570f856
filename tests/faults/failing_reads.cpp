#include "tests/faults/failing_reads.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace quorvex::test {
namespace {

struct Plan {
    std::string path;
    long n = 0;
    ReadFault fault = ReadFault::kError;
    long reads = 0;
    bool wasInterrupted = false;
};
std::optional<Plan> plan;

/// The fault that the read in hand meets.
std::optional<ReadFault> Due() {
    if (!plan) return std::nullopt;
    const bool goesOn = plan->fault == ReadFault::kShort || plan->fault == ReadFault::kInterrupt;
    const long now = ++plan->reads;
    if (now != plan->n && !(goesOn && now > plan->n)) return std::nullopt;
    std::error_code failure;
    if (plan->fault == ReadFault::kTruncate)
        std::filesystem::resize_file(plan->path, std::filesystem::file_size(plan->path) / 2,
                                     failure);
    if (plan->fault == ReadFault::kVanish) {
        std::filesystem::resize_file(plan->path, 0, failure);
        std::filesystem::remove(plan->path, failure);
    }
    return plan->fault;
}

}  // namespace

FailingReads::FailingReads(std::string path, long n, ReadFault fault) {
    plan = Plan{std::move(path), n, fault};
}

FailingReads::~FailingReads() {
    plan.reset();
}

bool FailingReads::HasStruck() const noexcept {
    return plan && plan->reads >= plan->n;
}

MC_STATUS PieceGiver::Give(int* length, void** data, int first, int* last) {
    if (first != 0) at = 0;
    const std::size_t count = std::min(pieceBytes, bytes.size() - at);
    *length = static_cast<int>(count);
    *data = const_cast<unsigned char*>(bytes.data()) + at;
    at += count;
    *last = at == bytes.size() ? 1 : 0;
    if (++calls != failAt) return kMcContinue;
    if (wrong == kRefuses) return kMcRefuse;
    if (wrong == kNoData) *data = nullptr;
    if (wrong == kNegative) *length = -5;
    if (wrong == kNothingMore) {
        *length = 0;
        *last = 1;
    }
    return kMcContinue;
}

}  // namespace quorvex::test

using quorvex::test::plan;
using quorvex::test::ReadFault;

// The linker sends the library's calls here.
extern "C" {

ssize_t __real_pread(int, void*, std::size_t, off_t);
std::size_t __real_fread(void*, std::size_t, std::size_t, FILE*);

ssize_t __wrap_pread(int file, void* room, std::size_t size, off_t at) {
    constexpr std::size_t kFewBytes = 7;
    const auto fault = quorvex::test::Due();
    if (fault == ReadFault::kError) {
        errno = EIO;
        return -1;
    }
    if (fault == ReadFault::kInterrupt && !std::exchange(plan->wasInterrupted, true)) {
        errno = EINTR;
        return -1;
    }
    if (fault == ReadFault::kInterrupt) plan->wasInterrupted = false;
    if (fault == ReadFault::kShort) size = std::min(size, kFewBytes);
    return __real_pread(file, room, size, at);
}

std::size_t __wrap_fread(void* room, std::size_t size, std::size_t count, FILE* file) {
    // The real one meets its error: its file is closed under it.
    if (quorvex::test::Due() == ReadFault::kError) close(fileno(file));
    return __real_fread(room, size, count, file);
}

}  // extern "C"
