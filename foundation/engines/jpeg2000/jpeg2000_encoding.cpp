#include "foundation/engines/jpeg2000/encoding_samples.h"
#include "foundation/engines/jpeg2000/high_throughput_encoding.h"
#include "foundation/engines/jpeg2000/jpeg2000_coders.h"
#include "foundation/engines/jpeg2000/jpeg2000_stream.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorvex {
namespace {

constexpr int kMostBits = 16;
// What the coder may pass its target by.
constexpr std::size_t kOvershoot = 16;
// Coded noise is a little longer than its samples; headers come on top.
constexpr std::size_t kSlack = std::size_t{1} << 20;

std::size_t FrameBytes(const PegasusParameters& p) noexcept {
    return CheckedProduct(p.columns, p.rows, p.samples, p.bytesPerSample).value_or(0);
}

OpjImage MakeImage(const PegasusParameters& p) noexcept {
    std::array<opj_image_cmptparm_t, 3> components{};
    for (auto& component : components) {
        component.dx = 1;
        component.dy = 1;
        component.w = static_cast<OPJ_UINT32>(p.columns);
        component.h = static_cast<OPJ_UINT32>(p.rows);
        component.prec = static_cast<OPJ_UINT32>(p.bitDepth);
        component.sgnd = p.isSigned ? 1 : 0;
    }
    const auto space = p.samples == 3 ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY;
    OpjImage image(opj_image_create(static_cast<OPJ_UINT32>(p.samples), components.data(), space));
    if (!image) {  // its components are too large for the memory that there is
        RefuseBy(Limit::kMemory);
        return nullptr;
    }
    image->x1 = static_cast<OPJ_UINT32>(p.columns);
    image->y1 = static_cast<OPJ_UINT32>(p.rows);
    return image;
}

bool FillImage(opj_image_t& image, const PegasusParameters& p) noexcept {
    const auto pixels = static_cast<std::size_t>(p.columns) * static_cast<std::size_t>(p.rows);
    const unsigned char* place = p.input.data();
    bool fits = true;
    for (int c = 0; c < p.samples; ++c, place += p.bytesPerSample)
        fits = ReadComponent({image.comps[c].data, pixels}, place, p) && fits;
    return fits;
}

float Rate(const PegasusParameters& p) noexcept {
    if (p.isLossless || p.targetBytes == 0) return 0;
    const std::size_t wanted =
        p.targetBytes > 2 * kOvershoot ? p.targetBytes - kOvershoot : p.targetBytes;
    const double bits = static_cast<double>(p.columns) * p.rows * p.samples * p.bitDepth;
    // 1 or less would mean no limit at all to the coder.
    return static_cast<float>(std::max(bits / 8 / static_cast<double>(wanted), 1.0));
}

opj_cparameters_t Settings(const PegasusParameters& p) noexcept {
    opj_cparameters_t settings{};
    opj_set_default_encoder_parameters(&settings);
    settings.tcp_numlayers = 1;
    settings.cp_disto_alloc = 1;
    settings.irreversible = p.isLossless ? 0 : 1;
    settings.tcp_rates[0] = Rate(p);
    settings.tcp_mct = p.samples == 3 && p.hasColourTransform ? 1 : 0;
    settings.numresolution = UsefulLevels(p) + 1;
    return settings;
}

bool Encode(opj_image_t& image, const PegasusParameters& p, OpjTarget& target) noexcept {
    const OpjStream stream = OpenForWriting(target);
    const OpjCodec codec = MakeOpjEncoder();
    opj_cparameters_t settings = Settings(p);
    return stream && codec && opj_setup_encoder(codec.get(), &settings, &image) &&
           opj_start_compress(codec.get(), &image, stream.get()) &&
           opj_encode(codec.get(), stream.get()) && opj_end_compress(codec.get(), stream.get());
}

}  // namespace

bool CanEncodeJpeg2000(const PegasusParameters& p) noexcept {
    const std::size_t bytes = p.columns > 0 && p.rows > 0 ? FrameBytes(p) : 0;
    return bytes > 0 && p.input.size() >= bytes && (p.samples == 1 || p.samples == 3) &&
           (p.bytesPerSample == 1 || p.bytesPerSample == 2) && p.bitDepth >= 1 &&
           p.bitDepth <= std::min(kMostBits, 8 * p.bytesPerSample) &&
           (!p.isHighThroughput || HasHighThroughputCoder());
}

bool EncodeJpeg2000(PegasusParameters& parameters) {
    if (parameters.isHighThroughput) return EncodeHighThroughput(parameters);
    const OpjImage image = MakeImage(parameters);
    if (!image || !FillImage(*image, parameters)) return false;
    parameters.coded.clear();
    OpjTarget target{.bytes = parameters.coded, .limit = 2 * FrameBytes(parameters) + kSlack};
    if (Encode(*image, parameters, target) && !parameters.coded.empty()) return true;
    parameters.coded.clear();
    return false;
}

}  // namespace quorvex
