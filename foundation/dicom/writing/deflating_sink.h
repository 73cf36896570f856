/// Deflates what is put, as Deflated Explicit VR Little Endian has it: without any header.
#pragma once

#include "foundation/dicom/writing/byte_sink.h"

#include <memory>
#include <vector>

namespace quorvex::dicom {

class DeflatingSink final : public ByteSink {
public:
    /// Throws std::bad_alloc where there is no memory.
    explicit DeflatingSink(ByteSink& target);
    ~DeflatingSink() override;

    void Put(Bytes bytes) override;
    /// Writes what is left, to an even number of bytes.
    void Finish();

private:
    struct Stream;
    void Run(int flush);

    ByteSink& target_;
    std::unique_ptr<Stream> stream_;
};

}  // namespace quorvex::dicom
