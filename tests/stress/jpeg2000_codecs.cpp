#include "tests/stress/jpeg2000_codecs.h"

#include "foundation/engines/jpeg2000/decoder/decoder.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <openjpeg.h>
#include <openjph/ojph_arch.h>
#include <openjph/ojph_codestream.h>
#include <openjph/ojph_file.h>
#include <openjph/ojph_mem.h>
#include <openjph/ojph_params.h>

namespace quorvex::test {
namespace {

ojph::point PointOf(Pair pair) {
    return ojph::point(pair.x, pair.y);
}
ojph::size SizeOf(Pair pair) {
    return ojph::size(pair.x, pair.y);
}

void SetSize(ojph::codestream& codestream, const Planes& picture, const HtCoding& coding) {
    ojph::param_siz size = codestream.access_siz();
    const Planes::Plane& first = picture.planes[0];
    const Pair end{coding.origin.x + first.width, coding.origin.y + first.height};
    size.set_image_offset(PointOf(coding.origin));
    size.set_image_extent(PointOf(end));
    size.set_tile_size(SizeOf(coding.tile.x == 0 ? end : coding.tile));
    size.set_tile_offset(PointOf(coding.tileOrigin));
    size.set_num_components(static_cast<ojph::ui32>(picture.planes.size()));
    for (ojph::ui32 i = 0; i < picture.planes.size(); ++i) {
        size.set_component(i, i == 0 ? ojph::point(1, 1) : PointOf(coding.subsampling),
                           static_cast<ojph::ui32>(picture.precision), picture.isSigned);
    }
}

void SetStyle(ojph::codestream& codestream, const HtCoding& coding) {
    ojph::param_cod style = codestream.access_cod();
    style.set_num_decomposition(coding.levels);
    style.set_block_dims(coding.block.x, coding.block.y);
    std::vector<ojph::size> precincts;
    for (const Pair& precinct : coding.precincts) precincts.push_back(SizeOf(precinct));
    if (!precincts.empty()) {
        style.set_precinct_size(static_cast<int>(precincts.size()), precincts.data());
    }
    style.set_progression_order(coding.progression);
    style.set_color_transform(coding.transformsColour);
    style.set_reversible(coding.isReversible);
    if (!coding.isReversible) codestream.access_qcd().set_irrev_quant(coding.step);
}

void GiveLines(ojph::codestream& codestream, const Planes& picture) {
    std::vector<std::uint32_t> next(picture.planes.size());
    std::size_t left = 0;
    for (const auto& plane : picture.planes) left += plane.height;
    ojph::ui32 component = 0;
    ojph::line_buf* line = codestream.exchange(nullptr, component);
    for (; left > 0; --left) {
        const Planes::Plane& plane = picture.planes[component];
        std::copy_n(plane.samples.data() + std::size_t{next[component]++} * plane.width,
                    plane.width, line->i32);
        line = codestream.exchange(line, component);
    }
}

/// What OpenJPEG reads and where it is.
struct Source {
    const Stream* stream;
    std::size_t at = 0;

    static OPJ_SIZE_T Read(void* bytes, OPJ_SIZE_T size, void* self) {
        auto* source = static_cast<Source*>(self);
        size = std::min(size, source->stream->size() - source->at);
        if (size == 0) return static_cast<OPJ_SIZE_T>(-1);
        std::memcpy(bytes, source->stream->data() + source->at, size);
        source->at += size;
        return size;
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T size, void* self) {
        auto* source = static_cast<Source*>(self);
        const auto left = static_cast<OPJ_OFF_T>(source->stream->size() - source->at);
        size = std::min(size, left);
        source->at += static_cast<std::size_t>(size);
        return size;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T place, void* self) {
        static_cast<Source*>(self)->at = static_cast<std::size_t>(place);
        return OPJ_TRUE;
    }
};

/// What OpenJPEG writes.
struct Sink {
    Stream stream;
    std::size_t at = 0;

    static OPJ_SIZE_T Write(void* bytes, OPJ_SIZE_T size, void* self) {
        auto* sink = static_cast<Sink*>(self);
        sink->stream.resize(std::max(sink->stream.size(), sink->at + size));
        std::memcpy(sink->stream.data() + sink->at, bytes, size);
        sink->at += size;
        return size;
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T size, void* self) {
        static_cast<Sink*>(self)->at += static_cast<std::size_t>(size);
        return size;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T place, void* self) {
        static_cast<Sink*>(self)->at = static_cast<std::size_t>(place);
        return OPJ_TRUE;
    }
};

// OpenJPEG's handles are all of one type.
struct DeleteCodec {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct DeleteStream {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct DeleteImage {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};

Planes PlanesOf(const opj_image_t& image) {
    Planes picture;
    for (OPJ_UINT32 i = 0; i < image.numcomps; ++i) {
        const opj_image_comp_t& component = image.comps[i];
        picture.precision = static_cast<int>(component.prec);
        picture.isSigned = component.sgnd != 0;
        const std::size_t count = std::size_t{component.w} * component.h;
        picture.planes.push_back(
            {component.w, component.h, {component.data, component.data + count}});
    }
    return picture;
}

std::unique_ptr<opj_image_t, DeleteImage> ImageOf(const Planes& picture) {
    std::vector<opj_image_cmptparm_t> components;
    for (const Planes::Plane& plane : picture.planes) {
        opj_image_cmptparm_t component{};
        component.dx = component.dy = 1;
        component.w = plane.width;
        component.h = plane.height;
        component.prec = static_cast<OPJ_UINT32>(picture.precision);
        component.sgnd = picture.isSigned ? 1 : 0;
        components.push_back(component);
    }
    std::unique_ptr<opj_image_t, DeleteImage> image(
        opj_image_create(static_cast<OPJ_UINT32>(components.size()), components.data(),
                         components.size() == 3 ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY));
    image->x1 = picture.planes[0].width;
    image->y1 = picture.planes[0].height;
    for (std::size_t i = 0; i < components.size(); ++i) {
        std::ranges::copy(picture.planes[i].samples, image->comps[i].data);
    }
    return image;
}

}  // namespace

Stream EncodeJ2k(const Planes& picture, bool isReversible, bool transformsColour) {
    const auto image = ImageOf(picture);
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_rates[0] = isReversible ? 0.0F : 8.0F;
    parameters.irreversible = isReversible ? 0 : 1;
    parameters.tcp_mct = transformsColour ? 1 : 0;
    Sink sink;
    const std::unique_ptr<opj_stream_t, DeleteStream> output(opj_stream_default_create(OPJ_FALSE));
    opj_stream_set_write_function(output.get(), Sink::Write);
    opj_stream_set_skip_function(output.get(), Sink::Skip);
    opj_stream_set_seek_function(output.get(), Sink::Seek);
    opj_stream_set_user_data(output.get(), &sink, nullptr);
    const std::unique_ptr<opj_codec_t, DeleteCodec> codec(opj_create_compress(OPJ_CODEC_J2K));
    const bool isDone = opj_setup_encoder(codec.get(), &parameters, image.get()) == OPJ_TRUE &&
                        opj_start_compress(codec.get(), image.get(), output.get()) == OPJ_TRUE &&
                        opj_encode(codec.get(), output.get()) == OPJ_TRUE &&
                        opj_end_compress(codec.get(), output.get()) == OPJ_TRUE;
    return isDone ? sink.stream : Stream();
}

Stream EncodeHt(const Planes& picture, const HtCoding& coding) try {
    ojph::codestream codestream;
    SetSize(codestream, picture, coding);
    SetStyle(codestream, coding);
    codestream.set_planar(!coding.transformsColour);
    ojph::mem_outfile file;
    file.open();
    codestream.write_headers(&file);
    GiveLines(codestream, picture);
    codestream.flush();
    Stream stream(file.get_data(), file.get_data() + file.tell());
    codestream.close();
    return stream;
} catch (const std::exception&) {
    return {};
}

Planes DecodeByOpenJph(const Stream& stream, std::uint32_t discardedLevels) try {
    ojph::mem_infile file;
    file.open(stream.data(), stream.size());
    ojph::codestream codestream;
    codestream.read_headers(&file);
    codestream.restrict_input_resolution(discardedLevels, discardedLevels);
    codestream.create();
    ojph::param_siz size = codestream.access_siz();
    Planes picture{.planes = std::vector<Planes::Plane>(size.get_num_components()),
                   .precision = static_cast<int>(size.get_bit_depth(0)),
                   .isSigned = size.is_signed(0)};
    const std::int32_t half = 1 << (picture.precision - 1);
    const std::int32_t least = picture.isSigned ? -half : 0;
    std::size_t left = 0;
    for (ojph::ui32 i = 0; i < picture.planes.size(); ++i) {
        picture.planes[i].width = size.get_recon_width(i);
        picture.planes[i].height = size.get_recon_height(i);
        left += picture.planes[i].height;
    }
    for (; left > 0; --left) {
        ojph::ui32 component = 0;
        const ojph::line_buf* line = codestream.pull(component);
        Planes::Plane& plane = picture.planes[component];
        for (std::uint32_t x = 0; x < plane.width; ++x) {
            plane.samples.push_back(std::clamp(line->i32[x], least, least + 2 * half - 1));
        }
    }
    codestream.close();
    return picture;
} catch (const std::exception&) {
    return {};
}

Planes DecodeByOpenJpeg(const Stream& stream, std::uint32_t discardedLevels) {
    Source source{&stream};
    const std::unique_ptr<opj_stream_t, DeleteStream> input(opj_stream_default_create(OPJ_TRUE));
    opj_stream_set_read_function(input.get(), Source::Read);
    opj_stream_set_skip_function(input.get(), Source::Skip);
    opj_stream_set_seek_function(input.get(), Source::Seek);
    opj_stream_set_user_data(input.get(), &source, nullptr);
    opj_stream_set_user_data_length(input.get(), stream.size());
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    parameters.cp_reduce = discardedLevels;
    const std::unique_ptr<opj_codec_t, DeleteCodec> codec(opj_create_decompress(OPJ_CODEC_J2K));
    opj_image_t* header = nullptr;
    bool isDone = opj_setup_decoder(codec.get(), &parameters) == OPJ_TRUE &&
                  opj_read_header(input.get(), codec.get(), &header) == OPJ_TRUE;
    const std::unique_ptr<opj_image_t, DeleteImage> image(header);
    isDone = isDone && opj_decode(codec.get(), input.get(), image.get()) == OPJ_TRUE;
    return isDone ? PlanesOf(*image) : Planes();
}

Planes DecodeByOurs(const Stream& stream, std::uint32_t discardedLevels) {
    j2k::Decoder decoder;
    if (decoder.Open(stream) != j2k::Outcome::kDone) return {};
    const j2k::Wanted wanted{.discardedLevels = discardedLevels, .region = {}, .executor = {}};
    Planes picture;
    std::vector<j2k::OutputPlane> outputs;
    const auto& components = decoder.Size().components;
    picture.planes.resize(components.size());
    for (unsigned i = 0; i < components.size(); ++i) {
        const j2k::Rect area = decoder.Area(i, wanted);
        Planes::Plane& plane = picture.planes[i];
        plane = {area.Width(), area.Height(), {}};
        plane.samples.resize(std::size_t{plane.width} * plane.height);
        picture.precision = static_cast<int>(components[i].precision);
        picture.isSigned = components[i].isSigned;
        outputs.push_back({.data = reinterpret_cast<unsigned char*>(plane.samples.data()),
                           .rowStride = static_cast<std::ptrdiff_t>(plane.width * sizeof(int)),
                           .sampleStride = sizeof(int),
                           .bytesPerSample = sizeof(int),
                           .keepsSign = true,
                           .width = plane.width,
                           .height = plane.height});
    }
    return decoder.Decode(wanted, outputs) == j2k::Outcome::kDone ? picture : Planes();
}

}  // namespace quorvex::test
