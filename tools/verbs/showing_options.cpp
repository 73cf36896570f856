// The options of the verbs that show what files hold.
#include "tools/frame/frame.h"
#include "tools/info/info.h"
#include "tools/render/render.h"
#include "tools/thumbnail/thumbnail.h"
#include "tools/verbs/adding_options.h"
#include "tools/verbs/verb_options.h"

namespace quorvex::tools {
namespace {

constexpr int kMostChoices = 1'000'000;

CLI::Option* AddFrame(CLI::App& verb, int& frame) {
    return verb.add_option("--frame", frame, "Which frame, 0 for the first")
        ->type_name("N")
        ->default_str("0");
}

}  // namespace

void AddOptions(CLI::App& verb, InfoArguments& arguments) {
    verb.add_option("FILE", arguments.files,
                    "DICOM files and folders of them, - for standard input")
        ->required();
    AddRepeated(verb, "--tag", "TAG",
                "Shows this element only, at any depth: a keyword (PatientName) or a number "
                "(0010,0010); any number of them",
                arguments.tags, ParseTag);
    auto* json = verb.add_flag("--json", arguments.asJson, "One JSON object a file, one a line");
    verb.add_flag("--dicom-json", arguments.asDicomJson,
                  "The same in the standard's own form, the DICOM JSON Model")
        ->excludes(json);
}

void AddOptions(CLI::App& verb, FrameArguments& arguments) {
    verb.add_option("FILE", arguments.file, "DICOM file")->required();
    auto* frame = AddFrame(verb, arguments.frame);
    auto* all = verb.add_flag("--all", arguments.all,
                              "Every frame, one behind the other; pictures are numbered")
                    ->excludes(frame);
    auto* output = AddOutput(verb, arguments.output, kOutputHelp)->required(false);
    auto* describe = verb.add_flag("--describe", arguments.describe,
                                   "Tells shape and type only, and writes nothing")
                         ->excludes(output);
    verb.add_flag("--stream", arguments.isStream,
                  "The coded frames as they are stored, a video for example, and not decoded")
        ->excludes(frame)
        ->excludes(all)
        ->excludes(describe);
}

void AddRegion(CLI::App& verb, RenderArguments& arguments) {
    auto* region = AddParsed(verb, "--region", "X,Y,W,H",
                             "A part of a whole-slide picture, in pixels of its level",
                             arguments.region, ParseRegion);
    region->excludes("--frame")->excludes("--all-frames");
    const auto add = [&](const char* name, int& number, const char* help) {
        verb.add_option(name, number, help)
            ->check(CLI::Range(0, kMostChoices).description(""))
            ->type_name("N")
            ->needs(region);
    };
    add("--level", arguments.level, "Which level of the picture, from 0 for the largest");
    add("--optical-path", arguments.opticalPath, "Which optical path, from 0");
    add("--focal-plane", arguments.focalPlane, "Which focal plane, from 0 for the lowest");
}

void AddOptions(CLI::App& verb, RenderArguments& arguments) {
    verb.add_option("FILE", arguments.files, "DICOM file; with --region all levels of a picture")
        ->required();
    AddOutput(verb, arguments.output, kOutputHelp);
    auto* frame = AddFrame(verb, arguments.frame);
    verb.add_flag("--all-frames", arguments.allFrames,
                  "Every frame, each in a file with its number, from 1")
        ->excludes(frame);
    AddParsed(verb, "--view", "WxH", "Size of the view; by default the image's own", arguments.view,
              ParseSize);
    verb.add_option("--voi", arguments.voi,
                    "Which of the file's look-up tables and windows to show by, from 1")
        ->check(CLI::Range(1, kMostChoices).description(""))
        ->type_name("N");
    AddWords(verb, "--function", "What the window's function is", arguments.function,
             std::map<std::string, VoiFunction>{{"linear", VoiFunction::kLinear},
                                                {"exact", VoiFunction::kLinearExact},
                                                {"sigmoid", VoiFunction::kSigmoid}});
    AddWords(verb, "--interpolation", "How the image is enlarged", arguments.interpolation,
             std::map<std::string, Interpolation>{{"linear", Interpolation::kLinear},
                                                  {"nearest", Interpolation::kNearest},
                                                  {"cubic", Interpolation::kCubic}})
        ->default_str("linear");
    AddParsed(verb, "--window", "CENTER,WIDTH", "Grey values to show", arguments.window,
              ParseWindow);
    AddParsed(verb, "--zoom", "Z", "View pixels for one image pixel; by default the view is filled",
              arguments.zoom, ParseZoom);
    AddParsed(verb, "--pan", "X,Y", "Moves the image by view pixels", arguments.pan, ParsePoint);
    AddParsed(verb, "--rotate", "DEG", "Turns clockwise by a multiple of 90 degrees",
              arguments.rotation, ParseRotation);
    verb.add_flag("--flip", arguments.flip, "Mirrors left and right");
    verb.add_flag("--invert", arguments.invert, "Swaps black and white");
    verb.add_flag("--overlays", arguments.overlays, "Burns in the overlay planes of the file");
    verb.add_option("--state", arguments.state, "Presentation state to apply")->type_name("FILE");
    verb.add_flag("--shutter", arguments.shutter, "Hides what the shutter hides");
    AddRegion(verb, arguments);
    auto* annotations = verb.add_flag("--annotations", arguments.annotations,
                                      "Draws text and graphics over the view");
    verb.add_flag("--result", arguments.result, "Writes the rendered result itself, not the view")
        ->excludes(annotations);
}

void AddOptions(CLI::App& verb, ThumbnailArguments& arguments) {
    verb.add_option("FILE", arguments.files, "DICOM files and folders of them")->required();
    AddOutput(verb, arguments.output, kOutputsHelp);
    AddParsed(verb, "--size", "WxH", "Pixels to fit the picture into", arguments.size, ParseSize)
        ->default_str("128x128");
    verb.add_option("--format", arguments.format,
                    "What the pictures are; by default what the output's name says, else png")
        ->type_name("png|jpeg|jpeg-lossless");
    AddFrame(verb, arguments.frame);
    verb.add_flag("--data-range", arguments.dataRange,
                  "Spreads grey over the values that are there, not over the header's window");
}

}  // namespace quorvex::tools
