#include "tests/engines/jpeg2000/mq_coding.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <openjpeg.h>

namespace quorvex::test {
namespace {

struct Target {
    Stream bytes;
    std::size_t place = 0;

    static OPJ_SIZE_T Write(void* from, OPJ_SIZE_T count, void* user) {
        auto& target = *static_cast<Target*>(user);
        target.bytes.resize(std::max(target.bytes.size(), target.place + count));
        std::memcpy(target.bytes.data() + target.place, from, count);
        target.place += count;
        return count;
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T count, void* user) {
        static_cast<Target*>(user)->place += static_cast<std::size_t>(count);
        return count;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T place, void* user) {
        static_cast<Target*>(user)->place = static_cast<std::size_t>(place);
        return OPJ_TRUE;
    }
};

void SetLayers(opj_cparameters_t& parameters, const MqCoding& coding) {
    parameters.tcp_numlayers = coding.layers;
    parameters.cp_disto_alloc = 1;
    for (int i = 0; i < coding.layers; ++i) {
        const bool isWhole = coding.isReversible && i == coding.layers - 1;
        parameters.tcp_rates[i] = isWhole ? 0 : coding.rate * static_cast<float>(coding.layers - i);
    }
}

void SetProgressionChange(opj_cparameters_t& parameters, const MqCoding& coding, int components) {
    if (coding.changedProgression < 0 || coding.levels == 0) return;
    const std::uint32_t end = coding.levels + 1;
    const std::uint32_t middle = (end + 1) / 2;
    for (int i = 0; i < 2; ++i) {
        opj_poc_t& volume = parameters.POC[i];
        volume.tile = 1;
        volume.resno0 = i == 0 ? 0 : middle;
        volume.resno1 = i == 0 ? middle : end;
        volume.layno1 = static_cast<OPJ_UINT32>(coding.layers);
        volume.compno1 = static_cast<OPJ_UINT32>(components);
        volume.prg1 =
            static_cast<OPJ_PROG_ORDER>(i == 0 ? coding.progression : coding.changedProgression);
    }
    parameters.numpocs = 2;
}

void SetGeometry(opj_cparameters_t& parameters, const MqCoding& coding) {
    const auto number = [](std::uint32_t value) { return static_cast<int>(value); };
    parameters.image_offset_x0 = number(coding.origin.x);
    parameters.image_offset_y0 = number(coding.origin.y);
    parameters.cblockw_init = number(coding.block.x);
    parameters.cblockh_init = number(coding.block.y);
    parameters.numresolution = number(coding.levels + 1);
    if (coding.tile.x > 0) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = number(coding.tile.x);
        parameters.cp_tdy = number(coding.tile.y);
        parameters.cp_tx0 = number(coding.tileOrigin.x);
        parameters.cp_ty0 = number(coding.tileOrigin.y);
    }
    for (const std::uint32_t size : coding.precincts) {
        parameters.csty |= 1;
        parameters.prcw_init[parameters.res_spec] = number(size);
        parameters.prch_init[parameters.res_spec] = number(size);
        ++parameters.res_spec;
    }
}

opj_cparameters_t ParametersOf(const MqCoding& coding, int components) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    SetGeometry(parameters, coding);
    SetLayers(parameters, coding);
    SetProgressionChange(parameters, coding, components);
    parameters.mode = coding.style;
    parameters.prog_order = static_cast<OPJ_PROG_ORDER>(coding.progression);
    parameters.irreversible = coding.isReversible ? 0 : 1;
    parameters.tcp_mct = coding.transformsColour ? 1 : 0;
    parameters.csty |= (coding.hasSop ? 2 : 0) | (coding.hasEph ? 4 : 0);
    parameters.tp_on = coding.hasTileParts ? 1 : 0;
    parameters.tp_flag = 'R';
    if (coding.roiShift > 0) {
        parameters.roi_compno = 0;
        parameters.roi_shift = coding.roiShift;
    }
    return parameters;
}

opj_image_t* ImageOf(const Planes& picture, const MqCoding& coding) {
    std::vector<opj_image_cmptparm_t> components(picture.planes.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        opj_image_cmptparm_t& component = components[i];
        component.dx = i == 0 ? 1 : coding.subsampling.x;
        component.dy = i == 0 ? 1 : coding.subsampling.y;
        component.w = picture.planes[i].width;
        component.h = picture.planes[i].height;
        component.x0 = coding.origin.x;
        component.y0 = coding.origin.y;
        component.prec = static_cast<OPJ_UINT32>(picture.precision);
        component.sgnd = picture.isSigned ? 1 : 0;
    }
    opj_image_t* image = opj_image_create(static_cast<OPJ_UINT32>(components.size()),
                                          components.data(), OPJ_CLRSPC_UNSPECIFIED);
    if (image == nullptr) return nullptr;
    image->x0 = coding.origin.x;
    image->y0 = coding.origin.y;
    image->x1 = coding.origin.x + picture.planes[0].width;
    image->y1 = coding.origin.y + picture.planes[0].height;
    for (std::size_t i = 0; i < components.size(); ++i) {
        std::copy(picture.planes[i].samples.begin(), picture.planes[i].samples.end(),
                  image->comps[i].data);
    }
    return image;
}

}  // namespace

Stream EncodeMq(const Planes& picture, const MqCoding& coding) {
    opj_cparameters_t parameters = ParametersOf(coding, static_cast<int>(picture.planes.size()));
    const std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)> image(ImageOf(picture, coding),
                                                                           opj_image_destroy);
    const std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)> codec(
        opj_create_compress(OPJ_CODEC_J2K), opj_destroy_codec);
    const std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)> output(
        opj_stream_default_create(OPJ_FALSE), opj_stream_destroy);
    Target target;
    opj_stream_set_write_function(output.get(), Target::Write);
    opj_stream_set_skip_function(output.get(), Target::Skip);
    opj_stream_set_seek_function(output.get(), Target::Seek);
    opj_stream_set_user_data(output.get(), &target, nullptr);
    const bool isReady = image && opj_setup_encoder(codec.get(), &parameters, image.get());
    const char* extra[3] = {};
    int count = 0;
    if (coding.hasPlt) extra[count++] = "PLT=YES";
    if (coding.hasTlm) extra[count++] = "TLM=YES";
    if (isReady && count > 0) opj_encoder_set_extra_options(codec.get(), extra);
    const bool isDone = isReady && opj_start_compress(codec.get(), image.get(), output.get()) &&
                        opj_encode(codec.get(), output.get()) &&
                        opj_end_compress(codec.get(), output.get());
    return isDone ? target.bytes : Stream();
}

}  // namespace quorvex::test
