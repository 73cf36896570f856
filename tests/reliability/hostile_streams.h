/// Coded streams of a few bytes that ask for much.
#pragma once

#include "tests/support/dicom_builder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::test {

struct EmptyScans {
    int scans = 1;
    unsigned side = 64;
    unsigned precision = 8;
    bool isArithmetic = false;
};

/// A progressive JPEG picture whose scans go over all of its blocks and have nothing in them.
inline std::vector<unsigned char> JpegOfEmptyScans(const EmptyScans& claim) {
    DicomBuilder stream(true, true);
    stream.Number(0xFFD8, 2);
    stream.Number(0xFFDB, 2).Number(67, 2).Number(0, 1).Raw(std::string(64, '\1'));
    stream.Number(claim.isArithmetic ? 0xFFCA : 0xFFC2, 2).Number(11, 2);
    stream.Number(claim.precision, 1).Number(claim.side, 2).Number(claim.side, 2);
    stream.Number(0x01011100, 4);
    for (const unsigned table : {0x00U, 0x10U}) {  // one code of one bit: nothing follows
        if (claim.isArithmetic) continue;
        stream.Number(0xFFC4, 2).Number(20, 2).Number(table, 1).Number(1, 1);
        stream.Raw(std::string(15, '\0')).Number(table == 0 ? 0 : 0xE0, 1);
    }
    for (int scan = 0; scan < claim.scans; ++scan) {
        stream.Number(0xFFDA, 2).Number(8, 2).Number(0x010100, 3);
        stream.Number(scan == 0 ? 0x000000 : 0x010100, 3).Number(0, 1);
    }
    return stream.Raw(std::string(40'000, '\0')).Bytes();
}

}  // namespace quorvex::test
