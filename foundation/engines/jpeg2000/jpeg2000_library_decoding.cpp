// Streams with the multi-component transforms of ISO/IEC 15444-2, which the library alone has.
#include "foundation/engines/jpeg2000/jpeg2000_coders.h"
#include "foundation/engines/jpeg2000/jpeg2000_header.h"
#include "foundation/engines/jpeg2000/jpeg2000_stream.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

namespace quorvex {
namespace {

using Bytes = std::span<const unsigned char>;

constexpr unsigned char kEndOfCodestream[] = {0xFF, 0xD9};
constexpr int kMostBits = 16;

/// The library goes on with an image that it had no memory to describe, and would fall over it.
bool IsDescribed(const OpjImage& image) noexcept {
    return image && image->comps != nullptr && image->numcomps > 0;
}

/// Throws std::bad_alloc where the library had no memory: what it has then is no broken stream, and
/// a more lenient try would pass for one.
OpjImage Decode(Bytes codestream, Bytes tail, bool isStrict) {
    OpjSource source{.parts = {codestream, tail}};
    bool ranOut = false;
    const OpjStream stream = OpenForReading(source);
    const OpjCodec codec = MakeOpjDecoder(ranOut);
    opj_dparameters_t settings{};
    opj_set_default_decoder_parameters(&settings);
    if (!stream || !codec || !opj_setup_decoder(codec.get(), &settings)) throw std::bad_alloc();
    if (!opj_decoder_set_strict_mode(codec.get(), isStrict ? OPJ_TRUE : OPJ_FALSE)) return nullptr;
    opj_image_t* read = nullptr;
    const bool hasHeader = opj_read_header(stream.get(), codec.get(), &read) != 0;
    OpjImage image(read);
    if (hasHeader && !IsDescribed(image)) throw std::bad_alloc();
    const bool isDecoded = hasHeader && opj_decode(codec.get(), stream.get(), image.get()) != 0;
    if (ranOut) throw std::bad_alloc();
    return isDecoded ? std::move(image) : nullptr;
}

// Strictly first. Then without what follows the last whole tile-part, since some writers leave junk
// there. Then as far as a stream that breaks off goes.
OpjImage DecodeAsFarAsPossible(Bytes codestream, bool& isIncomplete) {
    if (OpjImage image = Decode(codestream, {}, true)) return image;
    const auto whole = WholeTileParts(codestream);
    if (whole) {
        if (OpjImage image = Decode(*whole, kEndOfCodestream, true)) return image;
    }
    isIncomplete = true;
    if (OpjImage image = Decode(codestream, {}, false)) return image;
    return whole ? Decode(*whole, kEndOfCodestream, false) : nullptr;
}

// Components as the header announced them, each as large as its own sampling says.
bool IsAsAnnounced(const opj_image_t& image, const PegasusParameters& parameters) noexcept {
    if (static_cast<int>(image.numcomps) != parameters.samples) return false;
    const auto fits = [&](const opj_image_comp_t& component) {
        const std::uint32_t dx = std::max(component.dx, 1U);
        const std::uint32_t dy = std::max(component.dy, 1U);
        return component.data != nullptr && component.w > 0 && component.h > 0 &&
               static_cast<int>(component.prec) <= kMostBits &&
               std::uint64_t{component.w} * dx >= static_cast<std::uint64_t>(parameters.columns) &&
               std::uint64_t{component.h} * dy >= static_cast<std::uint64_t>(parameters.rows);
    };
    return std::all_of(image.comps, image.comps + image.numcomps, fits);
}

// How a component's values become samples.
struct SampleForm {
    std::int32_t least = 0;
    std::int32_t greatest = 0;
    std::uint32_t mask = 0;
};

SampleForm FormOf(const opj_image_comp_t& component, bool keepsSign) noexcept {
    const auto full = static_cast<std::int32_t>((std::uint32_t{1} << component.prec) - 1);
    const std::int32_t half = component.sgnd != 0 ? (full + 1) / 2 : 0;
    return {.least = -half,
            .greatest = full - half,
            .mask = keepsSign ? 0xFFFF : static_cast<std::uint32_t>(full)};
}

template <class Sample>
Sample Stored(std::int32_t value, const SampleForm& form, bool isBigEndian) noexcept {
    const std::int32_t clamped = std::clamp(value, form.least, form.greatest);
    const auto word = static_cast<std::uint32_t>(clamped) & form.mask;
    if (sizeof(Sample) == 2 && isBigEndian) {
        return static_cast<Sample>(((word & 0xFF) << 8) | ((word >> 8) & 0xFF));
    }
    return static_cast<Sample>(word);
}

static_assert(std::endian::native == std::endian::little, "rows hold the lower byte first");

template <class Sample>
void StoreComponent(const opj_image_comp_t& component, int index,
                    const PegasusParameters& parameters) noexcept {
    const auto samples = static_cast<std::size_t>(parameters.samples);
    const auto columns = static_cast<std::size_t>(parameters.columns);
    const SampleForm form = FormOf(component, parameters.isSigned);
    unsigned char* out =
        parameters.output.data() + static_cast<std::size_t>(index) * sizeof(Sample);
    for (std::size_t y = 0; y < static_cast<std::size_t>(parameters.rows); ++y) {
        const OPJ_INT32* row = component.data + (y / component.dy) * component.w;
        for (std::size_t x = 0; x < columns; ++x, out += samples * sizeof(Sample)) {
            const std::int32_t value = row[component.dx == 1 ? x : x / component.dx];
            const auto sample = Stored<Sample>(value, form, parameters.isBigEndian);
            std::memcpy(out, &sample, sizeof(Sample));
        }
    }
}

void StoreImage(const opj_image_t& image, const PegasusParameters& parameters) noexcept {
    for (int i = 0; i < parameters.samples; ++i) {
        if (parameters.bytesPerSample == 2) {
            StoreComponent<std::uint16_t>(image.comps[i], i, parameters);
        } else {
            StoreComponent<std::uint8_t>(image.comps[i], i, parameters);
        }
    }
}

}  // namespace

bool DecodeJpeg2000ByLibrary(std::span<const unsigned char> codestream,
                             PegasusParameters& parameters) {
    const OpjImage image = DecodeAsFarAsPossible(codestream, parameters.isIncomplete);
    if (!image || !IsAsAnnounced(*image, parameters)) return false;
    StoreImage(*image, parameters);
    return true;
}

}  // namespace quorvex
