// Files into another transfer syntax: what comes out, what is refused, what happens to many.
#include "run_command.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sys/wait.h>

namespace quorvex::test {
namespace {

namespace fs = std::filesystem;

const std::string kSamples = QUORVEX_SOURCE_DIR "/samples/";
const std::string kSlice = kSamples + "ct.dcm";
const std::string kRadiograph = kSamples + "radiograph.dcm";
const std::string kLoop = kSamples + "ultrasound_loop.dcm";
const std::string kState = kSamples + "ct_state.dcm";
const std::string kExplicit = "1.2.840.10008.1.2.1";
const std::string kCommand = QUORVEX_BINARY_DIR "/bin/quorvex";

std::string Frames(const std::string& path) {
    const auto result = RunCommand({"frame", path, "--all", "-o", "-"});
    EXPECT_EQ(result.status, 0) << path << ' ' << result.complaints;
    return result.output;
}

struct Grey {
    unsigned allocated = 16;
    unsigned stored = 12;
    unsigned isSigned = 0;
};

// Sixteen by sixteen pixels of one byte pattern.
std::string GreyImage(const Grey& grey, const std::string& pixels) {
    return Part10(
        kExplicit,
        Element(0x00280002, "US", Number16(1)) + Element(0x00280004, "CS", "MONOCHROME2 ") +
            Element(0x00280010, "US", Number16(16)) + Element(0x00280011, "US", Number16(16)) +
            Element(0x00280100, "US", Number16(grey.allocated)) +
            Element(0x00280101, "US", Number16(grey.stored)) +
            Element(0x00280102, "US", Number16(grey.stored - 1)) +
            Element(0x00280103, "US", Number16(grey.isSigned)) + Element(0x7FE00010, "OW", pixels));
}

std::string Repeated(const std::string& pattern, std::size_t bytes) {
    std::string pixels;
    while (pixels.size() < bytes) pixels += pattern;
    return pixels.substr(0, bytes);
}

std::set<std::string> FilesBelow(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) names.insert(entry.path().lexically_relative(folder).string());
    return names;
}

std::vector<std::string> LinesOf(const std::string& path) {
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

// A folder of `count` small images, no two alike, some of them in a folder below.
std::string MakeArchive(const ScratchFolder& scratch, int count) {
    const auto folder = scratch.Path("archive");
    fs::create_directories(folder + "/below");
    for (int i = 0; i < count; ++i) {
        const std::string name = (i % 3 == 0 ? "below/" : "") + std::to_string(i) + ".dcm";
        const auto pixels = Repeated(Number16(static_cast<unsigned>(i) % 4096) + Number16(7), 512);
        scratch.Write("archive/" + name, GreyImage({}, pixels));
    }
    return folder;
}

TEST(ConvertCommand, LosslessTargetsKeepEveryFrame) {
    const ScratchFolder folder;
    const auto first = folder.Path("first.dcm");
    const auto second = folder.Path("second.dcm");
    for (const auto& source : {kSlice, kRadiograph, kLoop}) {
        const auto frames = Frames(source);
        for (const auto* target : {"implicit", "explicit", "jpeg-lossless", "j2k-lossless"}) {
            ASSERT_EQ(RunCommand({"convert", source, "-o", first, "--to", target}).status, 0);
            EXPECT_TRUE(Frames(first) == frames) << source << ' ' << target;
            ASSERT_EQ(RunCommand({"convert", first, "-o", second, "--to", "explicit"}).status, 0);
            EXPECT_TRUE(Frames(second) == frames) << source << ' ' << target << " and back";
        }
    }
}

TEST(ConvertCommand, WritesTheSyntaxThatWasAskedFor) {
    struct Case {
        std::string source;
        const char* target;
        const char* syntax;
    };
    const Case cases[] = {{kSlice, "implicit", "1.2.840.10008.1.2]"},
                          {kSlice, "explicit", "1.2.840.10008.1.2.1]"},
                          {kLoop, "jpeg", "1.2.840.10008.1.2.4.50]"},
                          {kSlice, "jpeg12", "1.2.840.10008.1.2.4.51]"},
                          {kSlice, "jpeg-lossless", "1.2.840.10008.1.2.4.70]"},
                          {kSlice, "j2k", "1.2.840.10008.1.2.4.91]"},
                          {kSlice, "j2k-lossless", "1.2.840.10008.1.2.4.90]"}};
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    for (const auto& c : cases) {
        const auto result = RunCommand({"convert", c.source, "-o", output, "--to", c.target});
        EXPECT_EQ(result.status, 0) << c.target << result.complaints;
        EXPECT_NE(result.output.find("1 converted"), std::string::npos);
        const auto info = RunCommand({"info", output}).output;
        EXPECT_NE(info.find(std::string("TransferSyntaxUID                    [") + c.syntax),
                  std::string::npos)
            << c.target;
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"out.dcm"});
    }
    const auto piped = RunCommand({"convert", kSlice, "-o", "-", "--to", "j2k-lossless"});
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.output, ReadAll(output));
}

TEST(ConvertCommand, SaysHowColourIsCoded) {
    const char* const kinds[][2] = {{"jpeg", "[RGB]"},
                                    {"jpeg-lossless", "[RGB]"},
                                    {"j2k", "[YBR_ICT]"},
                                    {"j2k-lossless", "[YBR_RCT]"}};
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    for (const auto& [target, photometric] : kinds) {
        EXPECT_EQ(RunCommand({"convert", kLoop, "-o", output, "--to", target}).status, 0);
        EXPECT_NE(RunCommand({"info", output}).output.find(photometric), std::string::npos)
            << target;
        EXPECT_EQ(RunCommand({"convert", output, "-o", folder.Path("back.dcm"), "--to", "explicit"})
                      .status,
                  0);
        EXPECT_NE(RunCommand({"info", folder.Path("back.dcm")}).output.find("[RGB]"),
                  std::string::npos)
            << target;
    }
}

TEST(ConvertCommand, QualityTradesSizeForError) {
    const ScratchFolder folder;
    const auto fine = folder.Path("fine.dcm");
    const auto coarse = folder.Path("coarse.dcm");
    const char* const qualities[][3] = {
        {"jpeg", "98", "30"}, {"jpeg12", "1", "9"}, {"j2k", "3", "30"}};
    for (const auto& [target, good, bad] : qualities) {
        const auto& source = std::string(target) == "jpeg" ? kLoop : kSlice;
        for (const auto& [output, quality] : {std::pair(fine, good), std::pair(coarse, bad)}) {
            const auto result =
                RunCommand({"convert", source, "-o", output, "--to", target, "--quality", quality});
            EXPECT_EQ(result.status, 0) << target << result.complaints;
            EXPECT_NE(result.output.find("lowest PSNR"), std::string::npos);
        }
        EXPECT_LT(fs::file_size(coarse), fs::file_size(fine)) << target;
    }
}

TEST(ConvertCommand, RefusesWhatCannotBeAndLeavesEverythingAsItWas) {
    const ScratchFolder folder;
    const auto white = Repeated(Number16(4095) + Number16(4095) + Number16(0), 512);
    const auto overflowing = folder.Write("white.dcm", GreyImage({}, white));
    const auto negative =
        folder.Write("signed.dcm", GreyImage({16, 16, 1}, Repeated(Number16(0xFF00), 512)));
    const auto wide =
        folder.Write("wide.dcm", GreyImage({16, 16, 0}, Repeated(Number16(60000), 512)));
    const auto byte = folder.Write("byte.dcm", GreyImage({8, 8, 0}, Repeated("\1\2", 256)));
    const auto cut = folder.Write("cut.dcm", ReadAll(kSlice).substr(0, 900));
    const auto halved = folder.Write("half.dcm", ReadAll(kSlice).substr(0, 250'000));
    const auto shorter = folder.Write("short.dcm", GreyImage({}, Repeated("\1\2", 500)));
    const auto text = folder.Write("text.dcm", Repeated("no DICOM. ", 500));
    struct Case {
        std::string input;
        std::vector<std::string> wish;
        const char* reason;
    };
    const Case cases[] = {
        {kState, {"--to", "explicit"}, "no usable pixel data"},
        {kSlice, {"--to", "jpeg"}, "holds 8 bits"},
        {byte, {"--to", "jpeg12"}, "more than 8 bits"},
        {negative, {"--to", "jpeg12"}, "signed"},
        {wide, {"--to", "jpeg12"}, "above 4095"},
        {overflowing, {"--to", "j2k", "--quality", "4"}, "bits stored"},
        {cut, {"--to", "j2k-lossless"}, "QVM_ERROR_"},
        {halved, {"--to", "explicit"}, "ends before its data"},
        {shorter, {"--to", "j2k-lossless"}, "fewer pixels"},
        {text, {"--to", "explicit"}, "QVM_ERROR_FAILED_TO_PARSE_DICOM"},
        {folder.Path("none.dcm"), {"--to", "explicit"}, "QVM_ERROR_FAILED_TO_READ_FILE"},
    };
    const auto names = folder.Names().size();
    const auto output = folder.Write("present.dcm", "what was there");
    for (const auto& c : cases) {
        std::vector<std::string> arguments{"convert", c.input, "-o", output};
        arguments.insert(arguments.end(), c.wish.begin(), c.wish.end());
        const auto before = ReadAll(c.input);
        const auto result = RunCommand(arguments);
        EXPECT_EQ(result.status, 1) << c.input;
        EXPECT_NE(result.complaints.find(c.reason), std::string::npos) << result.complaints;
        EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1);
        EXPECT_EQ(ReadAll(c.input), before);
        EXPECT_EQ(ReadAll(output), "what was there");
        EXPECT_EQ(folder.Names().size(), names + 1) << c.input;
    }
}

TEST(ConvertCommand, NeverReplacesAnInput) {
    const ScratchFolder folder;
    const auto slice = folder.Write("a.dcm", ReadAll(kSlice));
    fs::create_directories(folder.Path("out"));
    const auto other = folder.Write("out/a.dcm", ReadAll(kRadiograph));
    EXPECT_EQ(RunCommand({"convert", slice, "-o", slice, "--to", "implicit"}).status, 1);
    const auto both =
        RunCommand({"convert", slice, other, "-o", folder.Path("out"), "--to", "implicit"});
    EXPECT_EQ(both.status, 1);
    EXPECT_EQ(std::ranges::count(both.complaints, '\n'), 2) << both.complaints;
    EXPECT_EQ(
        RunCommand({"convert", folder.Path("out"), "-o", folder.Path("out"), "--to", "implicit"})
            .status,
        2);
    EXPECT_EQ(ReadAll(slice), ReadAll(kSlice));
    EXPECT_EQ(ReadAll(other), ReadAll(kRadiograph));
}

TEST(ConvertCommand, WorksThroughFoldersAndPassesOverWhatIsNoDicom) {
    const ScratchFolder folder;
    const auto archive = MakeArchive(folder, 7);
    folder.Write("archive/readme.txt", Repeated("words ", 999));
    const auto output = archive + "/out";  // inside its own input
    for (int run = 0; run < 2; ++run) {
        const auto result =
            RunCommand({"convert", archive, "-o", output, "--to", "j2k-lossless", "--jobs", "3"});
        EXPECT_EQ(result.status, 0) << result.complaints;
        EXPECT_NE(result.output.find("7 converted, 1 not DICOM;"), std::string::npos)
            << result.output;
    }
    EXPECT_EQ(FilesBelow(output),
              (std::set<std::string>{"1.dcm", "2.dcm", "4.dcm", "5.dcm", "below/0.dcm",
                                     "below/3.dcm", "below/6.dcm"}));
}

TEST(ConvertCommand, ShardsShareAListWithoutOverlap) {
    const ScratchFolder folder;
    const auto archive = MakeArchive(folder, 24);
    std::string list;
    for (const auto& name : FilesBelow(archive)) list += archive + '/' + name + '\0';
    const auto path = folder.Write("list", list);
    std::size_t all = 0;
    for (int shard = 1; shard <= 3; ++shard) {
        const auto output = folder.Path("out") + std::to_string(shard);
        const auto result =
            RunCommand({"convert", "--from", path, "-0", "--shard", std::to_string(shard) + "/3",
                        "-o", output, "--to", "explicit"});
        EXPECT_EQ(result.status, 0) << result.complaints;
        const auto names = FilesBelow(output);
        EXPECT_GT(names.size(), 2U);
        all += names.size();
        for (const auto& name : names) EXPECT_TRUE(fs::exists('/' + name)) << name;
        fs::copy(output, folder.Path("all"),
                 fs::copy_options::recursive | fs::copy_options::skip_existing);
    }
    EXPECT_EQ(all, 24U);
    EXPECT_EQ(FilesBelow(folder.Path("all")).size(), 24U);
}

TEST(ConvertCommand, ManifestRemembersWhatIsDone) {
    const ScratchFolder folder;
    const auto archive = MakeArchive(folder, 4);
    const auto bad = folder.Write("archive/bad.dcm", ReadAll(kState));
    const auto manifest = folder.Path("manifest.jsonl");
    const auto output = folder.Path("out");
    const auto run = [&](const std::string& target) {
        return RunCommand(
            {"convert", archive, "-o", output, "--to", target, "--manifest", manifest});
    };
    EXPECT_EQ(run("explicit").status, 1);
    EXPECT_EQ(LinesOf(manifest).size(), 5U);
    EXPECT_NE(run("explicit").output.find("0 converted, 4 done before, 1 bad"), std::string::npos);

    folder.Write("archive/bad.dcm", ReadAll(kSlice));             // mended
    fs::remove(output + "/1.dcm");                                // lost
    fs::resize_file(output + "/2.dcm", 100);                      // damaged
    std::ofstream(manifest, std::ios::app) << R"({"input":"to)";  // torn by a kill
    const auto again = run("explicit");
    EXPECT_EQ(again.status, 0);
    EXPECT_NE(again.output.find("3 converted, 2 done before"), std::string::npos) << again.output;
    for (const auto& line : LinesOf(manifest))
        EXPECT_TRUE(line.starts_with('{') && line.ends_with('}')) << line;
    EXPECT_NE(run("implicit").output.find("5 converted;"), std::string::npos);
}

TEST(ConvertCommand, ManifestLinesAreJsonWhateverTheNames) {
    const ScratchFolder folder;
    const auto odd = folder.Write("\xFFodd\x1B\"\\\n.dcm", ReadAll(kSlice));
    const auto list = folder.Write("list", odd + '\0');
    const auto manifest = folder.Path("manifest.jsonl");
    const std::vector<std::string> command{
        "convert",          "--from", list,  "-0",         "-o",
        folder.Path("out"), "--to",   "j2k", "--manifest", manifest};
    EXPECT_EQ(RunCommand(command).status, 0);
    EXPECT_NE(RunCommand(command).output.find("1 done before"), std::string::npos);
    const auto check =
        "python3 -c 'import hashlib, json, sys\n"
        "line, = [json.loads(l) for l in open(sys.argv[1], encoding=\"utf-8\")]\n"
        "name = bytes.fromhex(line[\"inputBytes\"])\n"
        "assert hashlib.sha256(open(name, \"rb\").read()).hexdigest() == line[\"sourceSha256\"]\n"
        "assert line[\"verify\"] == \"lossy\" and line[\"psnr\"] > 40\n"
        "assert line[\"syntaxOut\"] == \"1.2.840.10008.1.2.4.91\"' " +
        manifest;
    EXPECT_EQ(std::system(check.c_str()), 0);
}

TEST(ConvertCommand, GoesOnToTheSameResultAfterAKill) {
    const ScratchFolder folder;
    const auto archive = MakeArchive(folder, 120);
    const auto whole = folder.Path("whole");
    ASSERT_EQ(RunCommand({"convert", archive, "-o", whole, "--to", "j2k-lossless"}).status, 0);
    const auto output = folder.Path("out");
    const auto manifest = folder.Path("manifest.jsonl");
    const std::string arguments = " convert " + archive + " -o " + output +
                                  " --to j2k-lossless --jobs 2 --manifest " + manifest;
    for (const auto* seconds : {"0.03", "0.06", "0.1"})
        static_cast<void>(std::system(("timeout -s KILL " + std::string(seconds) + ' ' + kCommand +
                                       arguments + " >/dev/null 2>&1")
                                          .c_str()));
    EXPECT_EQ(std::system((kCommand + arguments + " >/dev/null").c_str()), 0);
    EXPECT_EQ(FilesBelow(output), FilesBelow(whole));
    for (const auto& name : FilesBelow(whole))
        EXPECT_TRUE(ReadAll(output + '/' + name) == ReadAll(whole + '/' + name)) << name;
    std::set<std::string> done;
    for (const auto& line : LinesOf(manifest)) done.insert(line.substr(0, line.find("\",")));
    EXPECT_EQ(done.size(), 120U);
}

TEST(ConvertCommand, SaysWhenTheDiskRefuses) {
    const ScratchFolder folder;
    EXPECT_EQ(RunCommand({"convert", kSlice, "-o", "/dev/full", "--to", "explicit"}).status, 3);
    EXPECT_EQ(RunCommand({"convert", kSlice, "-o", "/proc/none/a.dcm", "--to", "explicit"}).status,
              3);
    // A limit on file sizes refuses the large output and lets the small one through.
    const auto byte = folder.Write("byte.dcm", GreyImage({8, 8, 0}, Repeated("\1\2", 256)));
    const auto limited = "trap '' XFSZ; ulimit -f 64; " + kCommand + " convert " + kSlice + ' ' +
                         byte + " -o " + folder.Path("out") + " --to explicit > /dev/null 2>" +
                         folder.Path("complaints");
    const int status = std::system(("bash -c \"" + limited + '"').c_str());
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(FilesBelow(folder.Path("out")), std::set<std::string>{"byte.dcm"});
    EXPECT_EQ(LinesOf(folder.Path("complaints")).size(), 1U);
}

TEST(ConvertCommand, WrongArgumentsAnswerTwo) {
    const ScratchFolder folder;
    const auto output = folder.Path("out");
    const std::vector<std::vector<std::string>> wrong = {
        {kSlice, "-o", output},
        {"-o", output, "--to", "explicit"},
        {kSlice, "-o", output, "--to", "rle"},
        {kSlice, "-o", output, "--to", "explicit", "--quality", "3"},
        {kLoop, "-o", output, "--to", "jpeg", "--quality", "101"},
        {kSlice, "-o", output, "--to", "explicit", "--shard", "0/4"},
        {kSlice, "-o", output, "--to", "explicit", "--shard", "5/4"},
        {kSlice, "-o", output, "--to", "explicit", "--shard", "1"},
        {kSlice, "-o", output, "--to", "explicit", "--jobs", "-1"},
        {kSlice, kLoop, "-o", "-", "--to", "explicit"},
        {kSlice, "-o", output, "--to", "explicit", "--manifest", "/dev/null"},
    };
    for (auto arguments : wrong) {
        arguments.insert(arguments.begin(), "convert");
        const auto result = RunCommand(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(std::ranges::count(result.complaints, '\n'), 1) << result.complaints;
        EXPECT_TRUE(folder.Names().empty());
    }
}

}  // namespace
}  // namespace quorvex::test
