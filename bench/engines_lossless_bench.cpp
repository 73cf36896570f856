// Lossless pictures of 9 to 16 bits: our engine beside the IJG library built for 16 bits.
#include "bench/lossless_jobs.h"

namespace quorvex::bench {
namespace {

extern "C" {
#include <gdcm-3.0/gdcmjpeg/16/jpeglib.h>
}

#include "bench/ijg_lossless.inc"

}  // namespace
}  // namespace quorvex::bench

int main(int argc, char** argv) {
    using namespace quorvex::bench;
    return Run(argc, argv, kLibrary,
               {Made("grey12", 3000, 3000, 1, 12, 4), Made("grey16", 3000, 3000, 1, 16, 4),
                Made("noisy16", 1024, 1024, 1, 16, 11), Made("rgb16", 1024, 768, 3, 16, 4),
                FromSample("ct.dcm", 512, 512, 16), FromSample("radiograph.dcm", 480, 586, 12)});
}
