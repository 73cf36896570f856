// Lossless pictures of up to 8 bits: our engine beside the IJG library built for 8 bits.
#include "bench/lossless_jobs.h"

namespace quorvex::bench {
namespace {

extern "C" {
#include <gdcm-3.0/gdcmjpeg/8/jpeglib.h>
}

#include "bench/ijg_lossless.inc"

}  // namespace
}  // namespace quorvex::bench

int main(int argc, char** argv) {
    using namespace quorvex::bench;
    return Run(argc, argv, kLibrary,
               {Made("rgb8", 1024, 768, 3, 8, 3), Made("flat_rgb8", 1024, 768, 3, 8, 1),
                Made("grey8", 2048, 2048, 1, 8, 4)});
}
