#include "tools/verbs/verb_texts.h"

#include <algorithm>
#include <cassert>

namespace quorvex::tools {
namespace {

constexpr std::array kTexts = {
    VerbText{
        .name = "info",
        .summary = "Shows what DICOM files are and all that they hold",
        .about =
            "Opens with what the object is: its class by name, patient, study, and what is needed "
            "to show it. Then every element follows, or those that --tag names, in sequences too.",
        .formats = "Reads Part 10 files and bare data sets of every encoding, damaged ones as far "
                   "as they go. --json gives one object a line: summary and elements. --dicom-json "
                   "gives the DICOM JSON Model (PS3.18 F), one object a line; values above 1 KiB "
                   "of bytes, and the pixels, stand there as a BulkDataURI into the file.",
        .examples = {Example{"quorvex info image.dcm", "what the file is, and its elements"},
                     Example{"quorvex info study/ --tag PatientID --tag 0018,0050",
                             "two attributes of every file of a folder"}},
    },
    VerbText{
        .name = "frame",
        .summary = "Writes decoded frames as numbers",
        .about = "Stored values after decoding, before any window: one sample in each byte or "
                 "word, rows from the top, colours as red, green, blue. A line on standard error "
                 "tells shape and type of what was written; --describe tells only that.",
        .formats = "By the extension of the output: .npy, an array for NumPy (frames, rows, "
                   "columns, samples; a dimension of one frame or sample is left out); .png, "
                   "unsigned values of up to 16 bits as they are; anything else, the plain bytes, "
                   "least significant first.",
        .examples = {Example{"quorvex frame image.dcm -o image.npy", "the first frame for NumPy"},
                     Example{"quorvex frame endoscopy.dcm --stream -o endoscopy.mp4",
                             "a video as it is stored, for a player"}},
    },
    VerbText{
        .name = "render",
        .summary = "Draws an image as a viewer would",
        .about = "Applies modality and VOI stage, palette, polarity and whatever a presentation "
                 "state asks for, and lays the image into the view. Without options the picture "
                 "has the image's own size and the window of the file. Of a whole-slide picture, "
                 "whose levels may be several files, --region shows a part.",
        .formats =
            "By the extension of the output: .png, or .jpg and .jpeg at quality 90. Standard "
            "output receives PNG. With --all-frames OUT.png stands for OUT-0001.png, "
            "OUT-0002.png and so on.",
        .examples = {Example{"quorvex render ct.dcm -o ct.png --window 40,400",
                             "a slice by a window of centre 40 and width 400"},
                     Example{"quorvex render us.dcm --all-frames -o us.jpg --view 640x480",
                             "a loop as us-0001.jpg, us-0002.jpg, ..."}},
    },
    VerbText{
        .name = "thumbnail",
        .summary = "Makes small pictures of images",
        .about = "The image as a viewer shows it, as large as fits into the size. Several inputs, "
                 "or a folder, need a folder for their outputs, which then have the names of the "
                 "inputs; a line at the end tells how many were made, and why others were not.",
        .formats = "png, jpeg (.jpg, quality 85) or jpeg-lossless (.ljpg, Process 14).",
        .examples = {Example{"quorvex thumbnail image.dcm -o image.png", "one picture, 128x128"},
                     Example{"quorvex thumbnail study/ -o small/ --size 256x256 --format jpeg",
                             "one for each file of a folder"}},
    },
    VerbText{
        .name = "convert",
        .summary = "Brings objects into another transfer syntax",
        .about = "Changes how pixels are stored and nothing else. Each output is decoded again and "
                 "compared with its source, attributes too, before it takes its place. Objects "
                 "without pixels are carried: written in the target's encoding, or copied. A run "
                 "that was stopped goes on where it was with the same command and its manifest.",
        .formats = "Reads every transfer syntax that this build has a decoder for; writes those "
                   "that --to names. Lossy targets take --quality: jpeg 1 to 100; jpeg12 a "
                   "coarseness, 1 is best; j2k the ratio to compress by; jpegls how far a sample "
                   "may be from its source, 1 to 255. Where --to names them, htj2k takes a ratio "
                   "too, and jpegxl tenths of the distance that a person begins to see, 1 to 150.",
        .examples = {Example{"quorvex convert image.dcm -o small.dcm --to j2k-lossless",
                             "one file"},
                     Example{"quorvex convert archive/ -o new/ --to j2k-lossless --jobs 0 "
                             "--manifest new.jsonl",
                             "a tree of files on all cores, to be taken up again at any time"}},
    },
    VerbText{
        .name = "capture",
        .summary = "Puts pictures into a patient's study",
        .about = "Makes one secondary capture object of one or more pictures of one size, each a "
                 "frame, for the patient and study of the source. Grey stays grey, 16 bits stay "
                 "16; pictures with transparency are refused. Several pages in colour have 8 "
                 "bits a sample: no class of images holds more.",
        .formats = "Reads PNG; writes a Part 10 file in the transfer syntax that --to names.",
        .examples = {Example{"quorvex capture ct.dcm screen.png -o screen.dcm", "one picture"},
                     Example{"quorvex capture ct.dcm a.png b.png -o both.dcm --to jpeg-lossless",
                             "two frames, compressed without loss"}},
    },
    VerbText{
        .name = "state",
        .summary = "Makes a presentation state for images of a study",
        .about =
            "How images are to be shown, as an object of its own: window, polarity, turn, "
            "displayed area, shutter, texts and lines. A state has one rescale, one "
            "direction of grey and one shutter: images that differ in these need a state each.",
        .formats = "Reads image objects; writes a Grayscale Softcopy Presentation State.",
        .examples = {Example{"quorvex state ct.dcm -o state.dcm --window 40,400 --label BRAIN",
                             "a window"},
                     Example{"quorvex state ct.dcm -o state.dcm --shutter circle:256,256,200 "
                             "--text 100,120,here",
                             "a shutter and a text"}},
    },
    VerbText{
        .name = "phantom",
        .summary = "Makes sample objects to try things on",
        .about = "A CT slice with a presentation state, a radiograph and an ultrasound loop, of a "
                 "patient that nobody is.",
        .formats = "Writes Part 10 files in Explicit VR Little Endian.",
        .examples = {Example{"quorvex phantom -o samples", "all of them, at full size"},
                     Example{"quorvex phantom -o samples --small", "under 2 MB altogether"}},
    },
};

}  // namespace

std::span<const VerbText> VerbTexts() {
    return kTexts;
}

const VerbText& TextOfVerb(std::string_view name) {
    const auto* found = std::ranges::find(kTexts, name, &VerbText::name);
    assert(found != kTexts.end());
    return *found;
}

}  // namespace quorvex::tools
