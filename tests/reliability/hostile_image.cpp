#include "tests/reliability/hostile_image.h"

#include "quorvex/TransferSyntaxes.h"

#include <cstdlib>
#include <cstring>
#include <zlib.h>

namespace quorvex::test {
namespace {

constexpr std::size_t kPixelBytes = 64;

std::size_t WidthOf(const std::string& vr) {
    if (vr == "US" || vr == "SS") return 2;
    if (vr == "UL" || vr == "SL" || vr == "AT") return 4;
    return vr == "FD" || vr == "UV" ? 8 : 0;
}

/// A value in a representation: text for what holds text, otherwise a number of its width.
std::string ValueIn(const std::string& vr, const std::string& number) {
    const std::size_t width = WidthOf(vr);
    if (width == 0) return number + std::string(number.size() % 2, ' ');
    const double real = std::strtod(number.c_str(), nullptr);
    const auto whole = static_cast<std::uint64_t>(std::strtoll(number.c_str(), nullptr, 10));
    std::string value(8, '\0');
    std::memcpy(value.data(), vr == "FD" ? static_cast<const void*>(&real) : &whole, 8);
    return value.substr(0, width);
}

/// RLE: one segment that begins behind the header, and no byte of it.
std::string FrameIn(std::string_view syntax) {
    if (syntax != kRleUid) return std::string(kPixelBytes, 'x');
    std::string frame(kPixelBytes, '\0');
    frame[0] = 1;
    frame[4] = kPixelBytes;
    return frame;
}

}  // namespace

std::string ImageClaim::Text() const {
    return std::string(rows) + " x " + columns + " x " + samples + " x " + bits + " bits, " +
           frames + " frames, " + vr;
}

DicomBuilder HostileImage(const ImageClaim& claim, std::string_view syntax, int fragments) {
    auto file = DicomBuilder::Part10(syntax.empty() ? kExplicitUid : syntax);
    const auto word = [&](std::uint32_t tag, const char* number) {
        file.Us(tag, static_cast<std::uint16_t>(std::strtol(number, nullptr, 10)));
    };
    const auto side = [&](std::uint32_t tag, const char* number) {
        file.Add(tag, claim.vr, ValueIn(claim.vr, number));
    };
    const bool isColour = std::string_view(claim.samples) == "3";
    file.Add(tag::kSOPInstanceUID, "UI", "1.2.3.4 ");
    word(tag::kSamplesPerPixel, claim.samples);
    file.Padded(tag::kPhotometricInterpretation, "CS", isColour ? "RGB" : "MONOCHROME2");
    file.Padded(tag::kNumberOfFrames, "IS", claim.frames);
    const bool isWord = std::string_view(claim.vr) == "US";
    isWord ? word(tag::kRows, claim.rows) : side(tag::kRows, claim.rows);
    isWord ? word(tag::kColumns, claim.columns) : side(tag::kColumns, claim.columns);
    word(tag::kBitsAllocated, claim.bits);
    word(tag::kBitsStored, claim.bits);
    word(tag::kHighBit, std::to_string(std::atoi(claim.bits) - 1).c_str());
    word(tag::kPixelRepresentation, "0");
    if (syntax.empty()) return file;
    const std::string frame = FrameIn(syntax);
    const TransferSyntax* row = TransferSyntaxOfUid(syntax);
    if (!row->isEncapsulated) return std::move(file.Add(tag::kPixelData, "OW", frame));
    const Bytes fragment(frame.begin(), frame.end());
    return std::move(
        file.Fragments(std::vector<Bytes>(static_cast<std::size_t>(fragments), fragment)));
}

std::vector<unsigned char> DeflatedZeros(std::size_t count) {
    auto file = DicomBuilder::Part10(kDeflatedUid);
    DicomBuilder dataSet;
    dataSet.Add(tag::kSOPInstanceUID, "UI", "1.2.3.4 ").Header(0x00091001, "OB", 0xFFFFFFF0);
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    std::vector<unsigned char> input = dataSet.Bytes();
    std::vector<unsigned char> output(std::size_t{1} << 16);
    for (std::size_t done = 0; done < count; done += input.size()) {
        stream.next_in = input.data();
        stream.avail_in = static_cast<uInt>(input.size());
        const bool isLast = done + input.size() >= count;
        do {
            stream.next_out = output.data();
            stream.avail_out = static_cast<uInt>(output.size());
            deflate(&stream, isLast ? Z_FINISH : Z_NO_FLUSH);
            file.Raw(
                {reinterpret_cast<const char*>(output.data()), output.size() - stream.avail_out});
        } while (stream.avail_out == 0);
        input.assign(std::size_t{1} << 20, 0);
    }
    deflateEnd(&stream);
    return file.Bytes();
}

}  // namespace quorvex::test
