#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

#include "foundation/engines/jpeg2000/jpeg2000_coders.h"
#include "foundation/types/answer.h"

#include <atomic>

namespace quorvex {

/// Where an image stands in the order of its requests.
class PegasusWork {
public:
    int lastRequest = 0;
};

void EndPegasusWork::operator()(PegasusWork* work) const noexcept {
    delete work;
}

namespace {

std::atomic<int> users{0};

bool IsDecoding(const PegasusParameters& parameters) noexcept {
    return parameters.operation == kPegasusDecode;
}

int Begin(PegasusParameters& parameters) {
    parameters.work.reset();
    const bool isPossible =
        IsDecoding(parameters) ? CanDecodeJpeg2000(parameters) : CanEncodeJpeg2000(parameters);
    if (!isPossible) return kPegasusFailed;
    parameters.work.reset(new PegasusWork{.lastRequest = kPegasusBegin});
    return kPegasusDone;
}

int Work(PegasusParameters& parameters) {
    if (!parameters.work || parameters.work->lastRequest != kPegasusBegin) return kPegasusFailed;
    const bool isDone =
        IsDecoding(parameters) ? DecodeJpeg2000(parameters) : EncodeJpeg2000(parameters);
    if (!isDone) return kPegasusFailed;
    parameters.work->lastRequest = kPegasusWork;
    return kPegasusDone;
}

int End(PegasusParameters& parameters) noexcept {
    const bool wasDone = parameters.work && parameters.work->lastRequest == kPegasusWork;
    parameters.work.reset();
    return wasDone ? kPegasusDone : kPegasusFailed;
}

}  // namespace

void PegasusLibInit(int) noexcept {
    users.fetch_add(1, std::memory_order_relaxed);
}
void PegasusLibTerm() noexcept {
    users.fetch_sub(1, std::memory_order_relaxed);
}

int PegasusLoadFromRes(std::uint32_t operation, int, int, int) noexcept {
    return operation == kPegasusDecode || operation == kPegasusEncode ? 0 : 1;
}

int PegasusQuery(PegasusParameters& parameters) noexcept {
    return IsDecoding(parameters) && QueryJpeg2000(parameters) ? 1 : 0;
}

int Pegasus(PegasusParameters& parameters, int request) noexcept {
    return Contain(kPegasusFailed, [&] {
        switch (request) {
            case kPegasusBegin:
                return Begin(parameters);
            case kPegasusWork:
                return Work(parameters);
            case kPegasusEnd:
                return End(parameters);
            default:
                return kPegasusFailed;
        }
    });
}

}  // namespace quorvex
