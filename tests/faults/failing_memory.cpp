#include "tests/faults/failing_memory.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <link.h>
#include <new>
#include <sys/mman.h>
#include <unwind.h>
#include <utility>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUORVEX_OWN_MALLOC 0
#else
#define QUORVEX_OWN_MALLOC 1
#endif

namespace quorvex::test {
namespace {

struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

constexpr std::array kFrailLibraries = {"libopenjp2",  "libopenjph", "libcairo",     "libpixman",
                                        "libfreetype", "libjxl",     "libbrotlienc", "libbrotlidec",
                                        "libhwy",      "liblcms2"};
using Ranges = std::array<Range, kFrailLibraries.size()>;
/// Where texts and containers take memory for their users.
constexpr const char* kLanguageLibrary = "libstdc++";
constinit Range languageRange;

bool IsIn(const Range& range, std::uintptr_t place) noexcept {
    return place >= range.begin && place < range.end;
}

void NoteCode(const dl_phdr_info& library, const char* name, Range& range) noexcept {
    if (std::strstr(library.dlpi_name, name) == nullptr) return;
    for (int i = 0; i < library.dlpi_phnum; ++i) {
        const auto& part = library.dlpi_phdr[i];
        if (part.p_type != PT_LOAD || (part.p_flags & PF_X) == 0) continue;
        const std::uintptr_t begin = library.dlpi_addr + part.p_vaddr;
        range = {begin, begin + part.p_memsz};
    }
}

int NoteRange(dl_phdr_info* library, std::size_t, void* user) {
    for (std::size_t frail = 0; frail < kFrailLibraries.size(); ++frail)
        NoteCode(*library, kFrailLibraries[frail], (*static_cast<Ranges*>(user))[frail]);
    NoteCode(*library, kLanguageLibrary, languageRange);
    return 0;
}

/// Where the code of those libraries lies.
Ranges FrailRanges() noexcept {
    Ranges ranges;
    dl_iterate_phdr(NoteRange, &ranges);
    return ranges;
}

struct Watch {
    long failAt = 0;  // 0: nothing fails
    bool failsOn = false;
    long asked = 0;
    long refused = 0;
    long live = 0;
    long taken = 0;
    Ranges spared = {};
};
constinit thread_local Watch watch;

struct Walk {
    bool isInLanguage = false;
    std::uintptr_t user = 0;
};

_Unwind_Reason_Code LookAtFrame(_Unwind_Context* frame, void* walk) {
    auto& seen = *static_cast<Walk*>(walk);
    const std::uintptr_t place = _Unwind_GetIP(frame);
    const bool isInLanguage = IsIn(languageRange, place);
    if (seen.isInLanguage && !isInLanguage) {
        seen.user = place;
        return _URC_END_OF_STACK;
    }
    seen.isInLanguage = isInLanguage;
    return _URC_NO_REASON;
}

/// For whom the language's library takes memory.
std::uintptr_t UserOfLanguage() noexcept {
    const long failAt = std::exchange(watch.failAt, 0);
    Walk walk;
    _Unwind_Backtrace(LookAtFrame, &walk);
    watch.failAt = failAt;
    return walk.user;
}

bool MustFail(const void* caller) noexcept {
    if (watch.failAt == 0) return false;
    auto place = reinterpret_cast<std::uintptr_t>(caller);
    if (IsIn(languageRange, place)) place = UserOfLanguage();
    const auto isHere = [place](const Range& range) { return IsIn(range, place); };
    if (std::ranges::any_of(watch.spared, isHere)) return false;
    const long now = ++watch.asked;
    if (now != watch.failAt && !(watch.failsOn && now > watch.failAt)) return false;
    ++watch.refused;
    return true;
}

void* Counted(void* block) noexcept {
    if (block == nullptr) return block;
    ++watch.live;
    ++watch.taken;
    return block;
}

}  // namespace

FailingMemory::FailingMemory(long n, Failing how, Spares spares) noexcept {
    static const Ranges frail = FrailRanges();
    const long live = watch.live;
    const long taken = watch.taken;
    watch = {.failAt = n,
             .failsOn = how == Failing::kFromThenOn,
             .live = live,
             .taken = taken,
             .spared = spares == Spares::kFrailLibraries ? frail : Ranges{}};
}

long FailingMemory::Stop() noexcept {
    watch.failAt = 0;
    return watch.refused;
}

long TakenBlocks() noexcept {
    return watch.taken;
}

long LiveBlocks() noexcept {
    return watch.live;
}

}  // namespace quorvex::test

// Seen by the shared libraries too, which is the point.
#pragma GCC visibility push(default)

using quorvex::test::Counted;
using quorvex::test::MustFail;
using quorvex::test::watch;

extern "C" {

#if QUORVEX_OWN_MALLOC

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

namespace {
void* Refused() noexcept {
    errno = ENOMEM;
    return nullptr;
}
void* Aligned(std::size_t alignment, std::size_t size, const void* caller) noexcept {
    return MustFail(caller) ? Refused() : Counted(__libc_memalign(alignment, size));
}
}  // namespace

void* malloc(std::size_t size) noexcept {
    return MustFail(__builtin_return_address(0)) ? Refused() : Counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    return MustFail(__builtin_return_address(0)) ? Refused() : Counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) noexcept {
    if (block != nullptr && size == 0) {
        free(block);
        return nullptr;
    }
    // Not by way of malloc(): it would take this place for the caller and spare no library.
    if (MustFail(__builtin_return_address(0))) return Refused();
    return block == nullptr ? Counted(__libc_malloc(size)) : __libc_realloc(block, size);
}
void free(void* block) noexcept {
    if (block != nullptr) --watch.live;
    __libc_free(block);
}
void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return Aligned(alignment, size, __builtin_return_address(0));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return Aligned(alignment, size, __builtin_return_address(0));
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    void* taken = Aligned(alignment, size, __builtin_return_address(0));
    if (taken == nullptr) return ENOMEM;
    *block = taken;
    return 0;
}

#endif

// The linker sends the library's calls here.
void* __real_mmap(void*, std::size_t, int, int, int, off_t);
int __real_munmap(void*, std::size_t);
void* __wrap_mmap(void* place, std::size_t size, int protection, int flags, int file, off_t at) {
    if (MustFail(__builtin_return_address(0))) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return Counted(__real_mmap(place, size, protection, flags, file, at));
}
int __wrap_munmap(void* block, std::size_t size) {
    --watch.live;
    return __real_munmap(block, size);
}

}  // extern "C"

namespace {

#if QUORVEX_OWN_MALLOC
void* Take(std::size_t size, std::size_t alignment, const void* caller) noexcept {
    if (MustFail(caller)) return Refused();
    return Counted(alignment == 0 ? __libc_malloc(size) : __libc_memalign(alignment, size));
}
void Give(void* block) noexcept {
    free(block);
}
#else
void* Take(std::size_t size, std::size_t alignment, const void* caller) noexcept {
    if (MustFail(caller)) return nullptr;
    const std::size_t whole =
        alignment == 0 ? size : (size + alignment - 1) / alignment * alignment;
    return Counted(alignment == 0 ? std::malloc(size) : std::aligned_alloc(alignment, whole));
}
void Give(void* block) noexcept {
    if (block != nullptr) --watch.live;
    std::free(block);
}
#endif

void* TakeOrThrow(const void* caller, std::size_t size, std::align_val_t alignment = {}) {
    void* block = Take(size == 0 ? 1 : size, static_cast<std::size_t>(alignment), caller);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

// The C++ library's own forms call one another; a sanitizer's do not, so all are replaced.
#define QUORVEX_NEW(Form)                                                   \
    void* operator Form(std::size_t size) {                                 \
        return TakeOrThrow(__builtin_return_address(0), size);              \
    }                                                                       \
    void* operator Form(std::size_t size, std::align_val_t alignment) {     \
        return TakeOrThrow(__builtin_return_address(0), size, alignment);   \
    }                                                                       \
    void* operator Form(std::size_t size, const std::nothrow_t&) noexcept { \
        return Take(size == 0 ? 1 : size, 0, __builtin_return_address(0));  \
    }
#define QUORVEX_DELETE(...)                        \
    void operator delete(__VA_ARGS__) noexcept {   \
        Give(block);                               \
    }                                              \
    void operator delete[](__VA_ARGS__) noexcept { \
        Give(block);                               \
    }

QUORVEX_NEW(new)
QUORVEX_NEW(new[])
QUORVEX_DELETE(void* block)
QUORVEX_DELETE(void* block, std::size_t)
QUORVEX_DELETE(void* block, std::align_val_t)
QUORVEX_DELETE(void* block, std::size_t, std::align_val_t)

#pragma GCC visibility pop
