/// What stands behind the handles of the C interface.
#pragma once

#include "quorvex/CXDIPP.h"
#include "quorvex/CxCancelToken.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/quorvex.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace quorvex::c {

/// Of a context, and of all that was made with it.
struct Settings {
    std::atomic<Rules> rules{Rules::kStandard};
    CxCancelToken token;
};

/// Where an image's bytes are, so that a view can open it for itself.
struct Origin {
    std::string path;  ///< empty for a source
    std::shared_ptr<FileSource> source;

    QUORVEX_MESSAGE Open(CxDcmParser& parser, bool isWhole) const;
    QUORVEX_MESSAGE Show(CXDIPP& image, CSize view, int frame) const;
    friend bool operator==(const Origin&, const Origin&) = default;
};

/// What a host has set on a view, to be set again when another frame comes in.
struct Choices {
    struct Window {
        double centre = 0.0;
        double width = 0.0;
        std::optional<VoiFunction> function;
    };
    std::optional<Window> window;
    std::optional<int> voi;
    double zoom = 0.0;  ///< 0 fits
    CPoint pan;
    int degrees = 0;
    bool isFlipped = false;
    bool isInverted = false;
};

}  // namespace quorvex::c

struct quorvex_context {
    std::shared_ptr<quorvex::c::Settings> settings = std::make_shared<quorvex::c::Settings>();
};

struct quorvex_image {
    std::shared_ptr<quorvex::c::Settings> settings;
    quorvex::Rules rules = quorvex::Rules::kStandard;
    quorvex::c::Origin origin;
    quorvex::CxDcmParser parser;
};

struct quorvex_view {
    std::shared_ptr<quorvex::c::Settings> settings;
    quorvex::Rules rules = quorvex::Rules::kStandard;
    quorvex::CSize size;
    quorvex::CXDIPP shown;
    std::optional<quorvex::c::Origin> origin;  ///< of the image on show
    std::unique_ptr<quorvex::CxDcmParser> header;
    int frame = 0;
    std::shared_ptr<quorvex::CxDcmParser> state;
    quorvex::c::Choices choices;
    std::uint32_t layers = 0;
    quorvex::Interpolation interpolation = quorvex::Interpolation::kLinear;
};
