#include "tools/convert/stop_signals.h"

#include <csignal>
#include <initializer_list>

namespace quorvex::tools {
namespace {

volatile sig_atomic_t signalCount = 0;

void Count(int number) {
    signalCount = signalCount + 1;
    if (signalCount > 1) signal(number, SIG_DFL);
}

}  // namespace

void CountStopSignals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (signal(number, Count) == SIG_IGN) signal(number, SIG_IGN);
}

int StopSignals() noexcept {
    return signalCount;
}

}  // namespace quorvex::tools
