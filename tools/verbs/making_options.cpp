// The options of the verbs that make objects.
#include "tools/arguments.h"
#include "tools/capture/capture.h"
#include "tools/convert/convert.h"
#include "tools/convert_target.h"
#include "tools/phantom/phantom.h"
#include "tools/state/state.h"
#include "tools/state/state_arguments.h"
#include "tools/verbs/adding_options.h"
#include "tools/verbs/verb_options.h"

#include <algorithm>

namespace quorvex::tools {
namespace {

// "implicit|explicit|...": what can be converted to.
std::string Joined(const std::vector<std::string>& names) {
    std::string joined;
    for (const auto& name : names) joined += (joined.empty() ? "" : "|") + name;
    return joined;
}

// Of the lossy targets that this build has.
std::string QualityHelp() {
    const auto targets = NamesOfCodingTargets();
    const auto has = [&](const char* name) { return std::ranges::count(targets, name) != 0; };
    std::string help = "jpeg: 1 to 100; jpeg12: coarseness, 1 is best; j2k";
    if (has("htj2k")) help += ", htj2k";
    help += ": ratio to compress by; jpegls: greatest error of a sample";
    if (has("jpegxl")) help += "; jpegxl: tenths of a visible distance";
    return help;
}

}  // namespace

void AddOptions(CLI::App& verb, ConvertArguments& arguments) {
    constexpr unsigned kMostJobs = 1024;
    verb.add_option("FILE", arguments.files, "DICOM files and folders of them");
    AddOutput(verb, arguments.output, kOutputsHelp);
    verb.add_option("--to", arguments.target, "Transfer syntax of the outputs")
        ->required()
        ->type_name(Joined(NamesOfTargets()));
    verb.add_option("--quality", arguments.quality, QualityHelp())->type_name("Q");
    verb.add_option("--jobs", arguments.jobs,
                    "Threads for files, and frames of one; 0 for one a core")
        ->check(CLI::Range(0U, kMostJobs).description(""))
        ->type_name("N")
        ->capture_default_str();
    verb.add_option("--from", arguments.list, "File of paths, one a line, - for standard input")
        ->type_name("FILE");
    verb.add_flag("-0", arguments.isNulSeparated, "Paths of --from end in NUL, not in line feed");
    AddParsed(verb, "--shard", "I/N", "Takes one of N equal parts of the inputs", arguments.shard,
              ParseShard);
    verb.add_option("--manifest", arguments.manifest,
                    "Adds a JSON line for each file, and passes over files that have one")
        ->type_name("FILE");
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
    verb.add_option("SOURCE", arguments.source, "DICOM file of that patient and study")->required();
    verb.add_option("PICTURE", arguments.pictures, "PNG files of one size, a frame each")
        ->required();
    AddOutput(verb, arguments.output, kOutputHelp);
    verb.add_option("--to", arguments.target, "Transfer syntax of the output")
        ->type_name(Joined(NamesOfCodingTargets()))
        ->capture_default_str();
}

void AddOptions(CLI::App& verb, StateArguments& arguments) {
    verb.add_option("IMAGE", arguments.images, "DICOM files of one study")->required();
    AddOutput(verb, arguments.output, kOutputHelp);
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
    verb.add_option("-o,--output", arguments.folder, "Folder to put them into")
        ->required()
        ->type_name("DIR");
    verb.add_flag("--small", arguments.small, "Small ones, under 2 MB altogether");
}

}  // namespace quorvex::tools
