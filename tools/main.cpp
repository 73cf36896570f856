// The quorvex command: its verbs and their options.
#include "tools/arguments.h"
#include "tools/capture/capture.h"
#include "tools/convert/convert.h"
#include "tools/frame/frame.h"
#include "tools/info/info.h"
#include "tools/phantom/phantom.h"
#include "tools/render/render.h"
#include "tools/state/state.h"
#include "tools/state/state_arguments.h"
#include "tools/thumbnail/thumbnail.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <new>

namespace quorvex::tools {
namespace {

constexpr const char* kOutputHelp = "Output, - for standard output";

// Adds an option whose text `parse` turns into the value of `field`.
template <class Field, class Parse>
void AddParsed(CLI::App& verb, const char* name, const char* metavar, const char* help,
               Field& field, Parse parse) {
    verb.add_option_function<std::string>(
            name, [&field, parse](const std::string& text) { field = parse(text); }, help)
        ->type_name(metavar);
}

// Adds an option whose text is one of some words, each for a value of `field`.
template <class Field, class Value>
void AddWords(CLI::App& verb, const char* name, const char* help, Field& field,
              const std::map<std::string, Value>& words) {
    verb.add_option(name, field, help)->transform(CLI::CheckedTransformer(words));
}

// Adds an option that may stand several times, each time one more element of `list`.
template <class Element, class Parse>
void AddRepeated(CLI::App& verb, const char* name, const char* metavar, const char* help,
                 std::vector<Element>& list, Parse parse) {
    verb.add_option_function<std::vector<std::string>>(
            name,
            [&list, parse](const std::vector<std::string>& texts) {
                for (const auto& text : texts) list.push_back(parse(text));
            },
            help)
        ->type_name(metavar)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddOptions(CLI::App& verb, InfoArguments& arguments) {
    verb.add_option("files", arguments.files, "DICOM files")->required();
    verb.add_flag("--json", arguments.asJson, "One JSON object a file, one a line");
}

void AddOptions(CLI::App& verb, FrameArguments& arguments) {
    verb.add_option("file", arguments.file, "DICOM file")->required();
    auto* frame = verb.add_option("--frame", arguments.frame, "Which frame, 0 for the first");
    verb.add_flag("--all", arguments.all, "Every frame, one behind the other")->excludes(frame);
    verb.add_option("-o,--output", arguments.output, kOutputHelp)->required();
}

void AddOptions(CLI::App& verb, RenderArguments& arguments) {
    verb.add_option("file", arguments.file, "DICOM file")->required();
    verb.add_option("-o,--output", arguments.output, kOutputHelp)->required();
    verb.add_option("--frame", arguments.frame, "Which frame, 0 for the first");
    AddParsed(verb, "--view", "WxH", "Size of the view; by default the image's own", arguments.view,
              ParseSize);
    verb.add_option("--voi", arguments.voi,
                    "Which of the file's look-up tables and windows to show by, from 1")
        ->check(CLI::PositiveNumber);
    AddWords(verb, "--function", "What the window's function is", arguments.function,
             std::map<std::string, VoiFunction>{{"linear", VoiFunction::kLinear},
                                                {"exact", VoiFunction::kLinearExact},
                                                {"sigmoid", VoiFunction::kSigmoid}});
    AddWords(verb, "--interpolation", "How the image is enlarged", arguments.interpolation,
             std::map<std::string, Interpolation>{{"linear", Interpolation::kLinear},
                                                  {"nearest", Interpolation::kNearest},
                                                  {"cubic", Interpolation::kCubic}});
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
    verb.add_option("--state", arguments.state, "Presentation state to apply");
    verb.add_flag("--shutter", arguments.shutter, "Hides what the shutter hides");
    auto* annotations = verb.add_flag("--annotations", arguments.annotations,
                                      "Draws text and graphics over the view");
    verb.add_flag("--result", arguments.result, "Writes the rendered result itself, not the view")
        ->excludes(annotations);
}

void AddOptions(CLI::App& verb, ThumbnailArguments& arguments) {
    verb.add_option("files", arguments.files, "DICOM files and folders of them")->required();
    verb.add_option("-o,--output", arguments.output,
                    "Output, - for standard output; a folder for several")
        ->required();
    AddParsed(verb, "--size", "WxH", "Pixels to fit the picture into; 128x128 by default",
              arguments.size, ParseSize);
    verb.add_option("--format", arguments.format, "png (default), jpeg or jpeg-lossless");
    verb.add_option("--frame", arguments.frame, "Which frame, 0 for the first");
    verb.add_flag("--data-range", arguments.dataRange,
                  "Spreads grey over the values that are there, not over the header's window");
}

void AddOptions(CLI::App& verb, ConvertArguments& arguments) {
    constexpr unsigned kMostJobs = 1024;
    verb.add_option("files", arguments.files, "DICOM files and folders of them");
    verb.add_option("-o,--output", arguments.output,
                    "Output, - for standard output; a folder for several")
        ->required();
    verb.add_option("--to", arguments.target,
                    "implicit, explicit, deflated, rle, jpeg, jpeg12, jpeg-lossless, j2k or "
                    "j2k-lossless")
        ->required();
    verb.add_option("--quality", arguments.quality,
                    "jpeg: 1 to 100; jpeg12: coarseness, 1 is best; j2k: ratio to compress by");
    verb.add_option("--jobs", arguments.jobs, "Files at a time; 0 for one on each core")
        ->check(CLI::Range(0U, kMostJobs));
    verb.add_option("--from", arguments.list, "File of paths, one a line, - for standard input");
    verb.add_flag("-0", arguments.isNulSeparated, "Paths of --from end in NUL, not in line feed");
    AddParsed(verb, "--shard", "I/N", "Takes one of N equal parts of the inputs", arguments.shard,
              ParseShard);
    verb.add_option("--manifest", arguments.manifest,
                    "Adds a JSON line for each file, and passes over files that have one");
    verb.add_flag("--no-verify", arguments.isUnverified,
                  "Does not read outputs again to compare them");
    verb.add_flag("--keep-unsupported", arguments.keepsUnsupported,
                  "Copies files as they are that the target cannot hold or that have no decoder");
    verb.add_flag("--leave-lossy", arguments.leavesLossy,
                  "Copies files as they are that were coded with losses before");
    verb.add_flag(
        "--dry-run", arguments.isDryRun,
        "Tells what would become of each file, and how large it would be; writes nothing");
}

void AddOptions(CLI::App& verb, CaptureArguments& arguments) {
    verb.add_option("source", arguments.source, "DICOM file of that patient and study")->required();
    verb.add_option("pictures", arguments.pictures, "PNG files of one size, a frame each")
        ->required();
    verb.add_option("-o,--output", arguments.output, kOutputHelp)->required();
    verb.add_option("--to", arguments.target,
                    "explicit (default), implicit, jpeg, jpeg-lossless, j2k or j2k-lossless");
}

void AddOptions(CLI::App& verb, StateArguments& arguments) {
    verb.add_option("images", arguments.images, "DICOM files of one series")->required();
    verb.add_option("-o,--output", arguments.output, kOutputHelp)->required();
    AddParsed(verb, "--label", "L", "Up to 16 capital letters, digits, spaces and underscores",
              arguments.label, ParseLabel);
    AddParsed(verb, "--window", "CENTER,WIDTH", "Grey values to show; by default the images' own",
              arguments.window, ParseWindow);
    verb.add_flag("--invert", arguments.invert, "Swaps black and white");
    AddParsed(verb, "--rotate", "DEG", "Turns clockwise by a multiple of 90 degrees",
              arguments.rotation, ParseRotation);
    verb.add_flag("--flip", arguments.flip, "Mirrors left and right what was turned");
    AddParsed(verb, "--area", "L,T,R,B", "Columns and rows to show, counted from 1", arguments.area,
              ParseArea);
    AddParsed(verb, "--shutter", "SHAPE:...",
              "rect:L,U,R,B, circle:ROW,COL,RADIUS or polygon:R,C;R,C;...", arguments.shutter,
              ParseShutter);
    AddRepeated(verb, "--text", "X,Y,TEXT", "A text at a place of the image; any number of them",
                arguments.texts, ParseText);
    AddRepeated(verb, "--polyline", "X,Y;X,Y;...", "A line through places; any number of them",
                arguments.polylines, ParsePolyline);
}

void AddOptions(CLI::App& verb, PhantomArguments& arguments) {
    verb.add_option("-o,--output", arguments.folder, "Folder to put them into")->required();
    verb.add_flag("--small", arguments.small, "Small ones, under 2 MB altogether");
}

// What the chosen verb is to do once the whole line has been read.
using Work = std::function<ExitStatus()>;

template <class Arguments>
void AddVerb(CLI::App& app, Work& work, const char* name, const char* help,
             ExitStatus (*run)(const Arguments&)) {
    auto* verb = app.add_subcommand(name, help);
    auto arguments = std::make_shared<Arguments>();
    AddOptions(*verb, *arguments);
    verb->callback(
        [arguments, run, &work] { work = [arguments, run] { return run(*arguments); }; });
}

ExitStatus RunCommand(int count, char** texts) {
    CLI::App app("Reads, decodes and renders medical images");
    app.name("quorvex");
    app.require_subcommand(1);
    Work work;
    AddVerb(app, work, "info", "Shows every element of DICOM files, and a summary", Info);
    AddVerb(app, work, "frame", "Writes decoded frames as raw pixels", Frame);
    AddVerb(app, work, "render", "Draws an image as a viewer would, into a PNG file", Render);
    AddVerb(app, work, "thumbnail", "Makes small pictures of images", Thumbnail);
    AddVerb(app, work, "convert", "Brings images into another transfer syntax", Convert);
    AddVerb(app, work, "capture", "Puts pictures into a patient's study", Capture);
    AddVerb(app, work, "state", "Makes a presentation state for images of a series", State);
    AddVerb(app, work, "phantom", "Makes sample objects", Phantom);
    try {
        app.parse(count, texts);
    } catch (const CLI::ParseError& stop) {
        if (stop.get_exit_code() == 0) return static_cast<ExitStatus>(app.exit(stop));
        throw WrongUsage(stop.what());
    }
    return work();
}

}  // namespace
}  // namespace quorvex::tools

int main(int count, char** texts) {
    using namespace quorvex::tools;
    try {
        return RunCommand(count, texts);
    } catch (const WrongUsage& failure) {
        Complain("wrong usage", failure.what());
        return kWrongUsage;
    } catch (const EnvironmentFailure& failure) {
        Complain("failed", failure.what());
    } catch (const std::bad_alloc&) {
        Complain("failed", "not enough memory");
    } catch (const std::exception& failure) {
        Complain("failed", failure.what());
    }
    return kEnvironment;
}
