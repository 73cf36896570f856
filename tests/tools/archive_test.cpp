// Many files into another transfer syntax: folders, lists, shards, manifests, kills and full disks.
#include "tests/tools/run_command.h"
#include "tests/tools/small_image.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>

namespace quorvex::test {
namespace {

namespace fs = std::filesystem;

Arguments LinesOf(const std::string& path) {
    std::istringstream text(ReadAll(path));
    Arguments lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

// A folder of `count` small images, no two alike, some of them in a folder below.
std::string MakeArchive(const ScratchFolder& scratch, int count) {
    for (int i = 0; i < count; ++i) {
        const auto name = (i % 3 == 0 ? "archive/below/" : "archive/") + std::to_string(i) + ".dcm";
        scratch.Write(name, SmallImage(SmallFacts(16, 12), {static_cast<unsigned>(i) % 4096, 7}));
    }
    return scratch.Path("archive");
}

TEST(ConvertCommand, WorksThroughFoldersAndSkipsWhatIsNoDicom) {
    const ScratchFolder folder;
    const auto archive = MakeArchive(folder, 7);
    folder.Write("archive/readme.txt", std::string(999, 'w'));
    const auto output = archive + "/out";  // inside its own input
    for (int run = 0; run < 2; ++run)
        EXPECT_TRUE(
            Has(OutputOf({"convert", archive, "-o", output, "--to", "j2k-lossless", "--jobs", "3"}),
                "7 converted, 1 not DICOM;"));
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
    std::size_t count = 0;
    std::set<std::string> all;
    for (int shard = 1; shard <= 3; ++shard) {
        const auto number = std::to_string(shard);
        const auto output = folder.Path("out" + number);
        OutputOf({"convert", "--from", path, "-0", "--shard", number + "/3", "-o", output, "--to",
                  "explicit"});
        const auto names = FilesBelow(output);
        EXPECT_LT(names.size(), 24U) << "a name's shard depends on its folder, so none is sure";
        count += names.size();
        all.insert(names.begin(), names.end());
    }
    EXPECT_EQ(count, 24U);
    EXPECT_EQ(all.size(), 24U);
    for (const auto& name : all) EXPECT_TRUE(fs::exists('/' + name)) << name;
}

TEST(ConvertCommand, ManifestRemembersWhatIsDone) {
    const ScratchFolder folder;
    const auto archive = MakeArchive(folder, 4);
    folder.Write("archive/bad.dcm", ReadAll(kSlice).substr(0, 250'000));
    const auto manifest = folder.Path("manifest.jsonl");
    const auto output = folder.Path("out");
    const auto expect = [&](int status, const char* target, const char* counts) {
        const auto result = ExpectStatus(
            status, {"convert", archive, "-o", output, "--to", target, "--manifest", manifest});
        EXPECT_TRUE(Has(result.output, counts)) << result.output;
    };
    expect(1, "explicit", "4 converted, 1 bad");
    EXPECT_EQ(LinesOf(manifest).size(), 5U);
    expect(1, "explicit", "0 converted, 4 done before, 1 bad");

    folder.Write("archive/bad.dcm", ReadAll(kSlice));             // mended
    fs::remove(output + "/1.dcm");                                // lost
    fs::resize_file(output + "/2.dcm", 100);                      // damaged
    std::ofstream(manifest, std::ios::app) << R"({"input":"to)";  // torn by a kill
    expect(0, "explicit", "3 converted, 2 done before");
    for (const auto& line : LinesOf(manifest))
        EXPECT_TRUE(line.starts_with('{') && line.ends_with('}')) << line;
    expect(0, "implicit", "5 converted;");
    folder.Write("archive/2.dcm", ReadAll(archive + "/1.dcm"));  // another one of that size
    folder.Write("archive/1.dcm", ReadAll(archive + "/1.dcm"));  // the same one, at a new time
    expect(0, "implicit", "1 converted, 4 done before");
}

TEST(ConvertCommand, ManifestTakesLinesOfEarlierReleasesAndNoOtherFile) {
    const ScratchFolder folder;
    const auto manifest = folder.Path("manifest.jsonl");
    const auto output = folder.Path("out.dcm");
    const Arguments convert = {"convert", kSlice, "-o", output, "--to", "rle", "--manifest"};
    OutputOf(convert + Arguments{manifest});
    auto line = ReadAll(manifest);
    for (const auto* name : {"\"sourceModified\"", "\"compared\"", "\"changed\""}) {
        const auto begin = line.find(name);
        const auto end = line.find(name[1] == 's' ? "," : "],", begin);
        line.erase(begin, end - begin + (name[1] == 's' ? 1 : 2));
    }
    EXPECT_FALSE(Has(line, "compared") || Has(line, "changed") || Has(line, "sourceModified"));
    folder.Write("manifest.jsonl", line);
    EXPECT_TRUE(Has(OutputOf(convert + Arguments{manifest}), "1 done before"));

    const auto mistaken = folder.Write("slice.dcm", ReadAll(kSlice));
    ExpectStatus(2, convert + Arguments{mistaken}, "no file to keep a manifest in");
    EXPECT_TRUE(ReadAll(mistaken) == ReadAll(kSlice));
}

TEST(ConvertCommand, OptionsDecideWhatCountsAsDone) {
    const ScratchFolder folder;
    const auto image = folder.Write("a.dcm", SmallImage(SmallFacts(16, 12), {1, 2}));
    const Arguments convert = {"convert", image,  "-o",         folder.Path("out.dcm"),
                               "--to",    "jpeg", "--manifest", folder.Path("manifest")};
    const Arguments keep = {"--keep-unsupported"};
    ExpectStatus(1, convert, "cannot hold");
    EXPECT_TRUE(Has(OutputOf(convert + keep), "1 kept"));
    EXPECT_TRUE(Has(OutputOf(convert + keep), "1 done before"));
    ExpectStatus(1, convert, "cannot hold");
    EXPECT_TRUE(Has(OutputOf(convert + keep + Arguments{"--leave-lossy"}), "1 kept"));
}

TEST(ConvertCommand, ManifestLinesAreJsonWhateverTheNames) {
    const ScratchFolder folder;
    const auto odd = folder.Write("\xFFodd\x1B\"\\\n.dcm", ReadAll(kSlice));
    const auto list = folder.Write("list", odd + '\0');
    const auto manifest = folder.Path("manifest.jsonl");
    const Arguments command = {"convert",          "--from", list,  "-0",         "-o",
                               folder.Path("out"), "--to",   "j2k", "--manifest", manifest};
    OutputOf(command);
    EXPECT_TRUE(Has(OutputOf(command), "1 done before"));
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

// Images of several kinds, reports, lossy ones, some that no target holds, and what is no DICOM.
std::string MakeMixedArchive(const ScratchFolder& scratch, int count) {
    const auto archive = MakeArchive(scratch, count);
    const auto report = [](std::string_view syntax) {
        auto builder = DicomBuilder::Part10(syntax);
        return builder.Padded(tag::kSOPClassUID, "UI", "1.2.840.10008.5.1.4.1.1.88.11").Bytes();
    };
    for (int i = 0; i < count; i += 5) {
        const auto name = "archive/other/" + std::to_string(i);
        scratch.Write(name + "r.dcm", report(i % 2 == 0 ? kImplicitUid : kExplicitUid));
        scratch.Write(name + "b.dcm", NativeFile(kExplicitUid, SmallFacts(1, 1), Bytes(32, 5)));
        scratch.Write(name + "c.dcm", NativeFile(kExplicitUid,
                                                 {.rows = 64,
                                                  .columns = 64,
                                                  .bits = 8,
                                                  .photometric = "RGB ",
                                                  .samples = 3,
                                                  .frames = "5 "},
                                                 Bytes(std::size_t{64} * 64 * 3 * 5, 9)));
        scratch.Write(name + "l.dcm", EncapsulatedFile(kVideoUid, SmallFacts(8, 8), {{{1, 2}}}));
        scratch.Write(name + ".txt", std::string(200, 't'));
    }
    return archive;
}

TEST(ConvertCommand, GoesOnToTheSameResultAfterTwentyKills) {
    const ScratchFolder folder;
    const auto archive = MakeMixedArchive(folder, 150);
    const auto whole = folder.Path("whole");
    EXPECT_TRUE(Has(
        OutputOf({"convert", archive, "-o", whole, "--to", "j2k-lossless", "--keep-unsupported"}),
        "180 converted, 30 carried, 60 kept, 30 not DICOM;"));
    const auto output = folder.Path("out");
    const auto manifest = folder.Path("manifest.jsonl");
    const std::string command = kCommand + " convert " + archive + " -o " + output +
                                " --to j2k-lossless --keep-unsupported --jobs 2 --manifest " +
                                manifest + " >/dev/null 2>&1";
    std::minstd_rand random(7);
    for (int i = 0; i < 20; ++i) {
        const auto seconds = std::to_string(0.02 + static_cast<double>(random() % 60) / 1000);
        static_cast<void>(std::system(("timeout -s KILL " + seconds + ' ' + command).c_str()));
    }
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(FilesBelow(output), FilesBelow(whole));
    for (const auto& name : FilesBelow(whole))
        EXPECT_TRUE(ReadAll(output + '/' + name) == ReadAll(whole + '/' + name)) << name;
    std::set<std::string> done;
    for (const auto& line : LinesOf(manifest)) done.insert(line.substr(0, line.find("\",")));
    EXPECT_EQ(done.size(), 300U);
}

TEST(ConvertCommand, SaysWhenTheDiskRefuses) {
    const ScratchFolder folder;
    ExpectStatus(3, {"convert", kSlice, "-o", "/proc/none/a.dcm", "--to", "explicit"});
    // A limit on file sizes refuses the large output and lets the small one through.
    const auto byte = folder.Write("byte.dcm", SmallImage(SmallFacts(8, 8), {1, 2}));
    const auto limited = "trap '' XFSZ; ulimit -f 64; " + kCommand + " convert " + kSlice + ' ' +
                         byte + " -o " + folder.Path("out") + " --to explicit > /dev/null 2>" +
                         folder.Path("complaints");
    const int status = std::system(("bash -c \"" + limited + '"').c_str());
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(FilesBelow(folder.Path("out")), std::set<std::string>{"byte.dcm"});
    EXPECT_EQ(LinesOf(folder.Path("complaints")).size(), 1U);
}

}  // namespace
}  // namespace quorvex::test
