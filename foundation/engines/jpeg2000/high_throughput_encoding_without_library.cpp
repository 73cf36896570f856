#include "foundation/engines/jpeg2000/high_throughput_encoding.h"

namespace quorvex {

bool HasHighThroughputCoder() noexcept {
    return false;
}

bool EncodeHighThroughput(PegasusParameters&) {
    return false;
}

}  // namespace quorvex
