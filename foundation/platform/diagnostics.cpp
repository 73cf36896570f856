#include "foundation/platform/diagnostics.h"

#include "foundation/types/answer.h"
#include "foundation/types/utf.h"
#include "quorvex/Types.h"

#include <mutex>
#include <string>
#include <syslog.h>

namespace quorvex {
namespace {

struct Sink {
    DebugSink call = nullptr;
    void* user = nullptr;
};

std::mutex sinkLock;
Sink currentSink;

Sink CurrentSink() {
    const std::lock_guard hold(sinkLock);
    return currentSink;
}

}  // namespace

void SetDebugOutput(DebugSink sink, void* user) noexcept {
    const std::lock_guard hold(sinkLock);
    currentSink = {sink, user};
}

void WriteDebugLine(std::string_view line) noexcept {
    (void)Contain(false, [&] {
        // Lines may name files, and names may be any bytes.
        const std::string text = Utf8FromUtf16(Utf16FromUtf8(line));
        const Sink sink = CurrentSink();
        if (sink.call != nullptr) {
            sink.call(text.c_str(), sink.user);
        } else {
            syslog(LOG_DEBUG | LOG_USER, "%s", text.c_str());
        }
        return true;
    });
}

}  // namespace quorvex
