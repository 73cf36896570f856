#include "foundation/platform/diagnostics.h"

#include "foundation/types/answer.h"
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
        const std::string text(line);
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
