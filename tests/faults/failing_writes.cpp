// Loaded ahead of the command's libraries: its n-th write to a file fails, in the way that the
// environment names: "full", "short" or "interrupt" from then on, "kill" once.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int writes = 0;
bool wasInterrupted = false;

bool IsFile(int descriptor) {
    struct stat facts {};
    return descriptor > STDERR_FILENO && fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode);
}

/// How the write in hand goes wrong; empty where it does not.
std::string_view Fault(int descriptor) {
    const char* n = std::getenv("QUORVEX_FAILING_WRITE");
    const char* how = std::getenv("QUORVEX_FAILING_HOW");
    if (n == nullptr || how == nullptr || !IsFile(descriptor)) return {};
    if (++writes < std::atoi(n)) return {};
    if (std::string_view(how) == "kill") raise(SIGKILL);
    return how;
}

template <class Function>
Function Real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

ssize_t write(int descriptor, const void* bytes, std::size_t size) {
    static const auto real = Real<ssize_t (*)(int, const void*, std::size_t)>("write");
    const auto fault = Fault(descriptor);
    if (fault == "full") {
        errno = ENOSPC;
        return -1;
    }
    if (fault == "interrupt" && !wasInterrupted) {
        wasInterrupted = true;
        errno = EINTR;
        return -1;
    }
    wasInterrupted = false;
    return real(descriptor, bytes, fault == "short" && size > 5 ? 5 : size);
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, std::FILE* file) {
    using Fwrite = std::size_t (*)(const void*, std::size_t, std::size_t, std::FILE*);
    static const auto real = Real<Fwrite>("fwrite");
    if (Fault(fileno(file)) != "full") return real(bytes, size, count, file);
    errno = ENOSPC;
    return 0;
}

}  // extern "C"
