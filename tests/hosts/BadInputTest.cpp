// Whatever is wrong is told in one line that names it, and leaves every file as it was.
#include "CommandRun.h"
#include "TestPictures.h"

#include <claribox/ChFunctions.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace fs = std::filesystem;

namespace {

struct BadInput {
    std::string line;
    int status; ///< 1: this picture failed; 2: the command line is wrong
    std::vector<std::string> fragments;
    RunOptions options = {};
};

/// A picture of 31x23, and beside it much that is none.
void Furnish(const TemporaryFolder& folder) {
    const vips::VImage picture = RandomPicture(31, 23, 3, 1);
    for (const char* name : {"in.png", "in.jpg", "in.tif", "in.webp", "in.gif"}) {
        Save(picture, folder / name);
        const std::string whole = ReadFile(folder / name);
        WriteFile(folder / ("cut_" + std::string(name)), whole.substr(0, whole.size() * 6 / 10));
    }
    Save(RandomPicture(101, 67, 3, 4), folder / "larger.png");
    WriteFile(folder / "damaged.jpg", Damaged(ReadFile(folder / "in.jpg")));
    Save(RandomPicture(1, 1, 3, 2), folder / "pixel.png");
    Save(RandomPicture(1, 40, 1, 3), folder / "line.png");
    Save(picture.bandjoin(picture), folder / "six.tif");
    WriteFile(folder / "huge.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 50000 +X 50000\n");
    WriteFile(folder / "large.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 10000 +X 10000\n");
    WriteFile(folder / "text.jpg", "no picture");
    WriteFile(folder / "empty.png", "");
    WriteFile(folder / "numbers.png", "2 2\n1 2\n3 4\n"); // a matrix, for libvips
    WriteFile(folder / "head.tif", "II*" + std::string(100, '\0'));
    fs::create_directory(folder / "folder");
    WriteFile(folder / "folder" / "in.png", ReadFile(folder / "in.png"));
    fs::create_directory(folder / "closed");
    fs::permissions(folder / "closed", fs::perms::owner_read | fs::perms::owner_exec);
    WriteFile(folder / "secret.png", ReadFile(folder / "in.png"));
    fs::permissions(folder / "secret.png", fs::perms::owner_read);
    chmod((folder / "secret.png").c_str(), 0);
    fs::create_symlink("in.png", folder / "link.png");
    fs::create_hard_link(folder / "in.png", folder / "hard.png");
    fs::create_symlink("loop.png", folder / "loop.png");
    fs::create_directory(folder / "links");
    fs::create_symlink("in.jpg", folder / "links" / "in.png"); // which is not there
    WriteFile(folder / "locked.png", "kept");
    fs::permissions(folder / "locked.png", fs::perms::owner_read);
}

const std::string kLongName = std::string(300, 'n') + ".png";

void ExpectRefusals(const std::vector<BadInput>& rows) {
    const TemporaryFolder folder;
    Furnish(folder);
    const auto before = folder.Snapshot();
    for (const BadInput& row : rows) {
        SCOPED_TRACE(row.line);
        const RunResult result = RunCommand(folder, row.line, row.options);
        EXPECT_EQ(result.status, row.status) << result.err;
        EXPECT_EQ(result.ErrorLines(), 1u) << result.err;
        EXPECT_EQ(result.out, "");
        for (const std::string& fragment : row.fragments) {
            EXPECT_NE(result.err.find(fragment), std::string::npos) << "no '" << fragment << "' in: " << result.err;
        }
        EXPECT_EQ(folder.Snapshot(), before);
    }
}

TEST(BadInput, CommandLine) {
    std::vector<BadInput> rows = {
        {"", 2, {"no verb given", "deblur, demotion-blur, guess-motion, denoise, band, spectrum, info"}},
        {"sharpen in.png", 2, {"unknown verb 'sharpen'", "deblur"}},
        {"help sharpen", 2, {"unknown verb 'sharpen'"}},
        {"--completion tcsh", 2, {"--completion takes bash, zsh or fish", "'tcsh'"}},
        {"--radius 3", 2, {"no verb given before '--radius'"}},
        {"blur in.png -o out.png --radios 3", 2, {"unknown option", "'--radios'", "blur --help"}},
        {"info in.png", 2, {"'in.png'"}},
        {"info -- in.png", 2, {"'in.png'"}},
        {"blur -q5 in.png -o out.png", 2, {"unknown option", "'-5'"}},
        {"blur in.png -o out.png -q --verbose", 2, {"--quiet and --verbose contradict"}},
        {"blur -o out.png", 2, {"IN is required", "usage: claribox blur IN... -o OUT"}},
        {"blur in.png", 2, {"--output is required"}},
        {"blur -v", 2, {"unknown option", "'-v'"}},
        {"blur in.png -o", 2, {"--output takes a value: OUT"}},
        {"--completion", 2, {"--completion takes a value: bash|zsh|fish"}},
        {"deblur in.png -o out.png --length 3", 2, {"'--length'"}},
        {"blur in.png -o out.png --radius 2 --radius 3", 2, {"--radius is given more than once"}},
        {"denoise in.png -o out.png --threshold -1", 2, {"--threshold takes auto or a number", "'-1'"}},
        {"denoise in.png -o out.png --threshold nan", 2, {"from 0 to 2040", "'nan'"}},
        {"denoise in.png -o out.png --rule Soft", 2, {"--rule takes soft, hard or garrote", "'Soft'"}},
        {"band in.png -o out.png", 2, {"--band is required"}},
        {"demotion-blur in.png -o out.png --degree 361", 2, {"auto or a whole number from -360 to 360", "'361'"}},
        {"demotion-blur in.png -o out.png --degree Auto", 2, {"--degree takes auto", "'Auto'"}},
        {"guess-motion --json", 2, {"IN is required", "usage: claribox guess-motion IN... [OPTIONS]"}},
        {"guess-motion in.png -o out.png", 2, {"'-o'"}},
        {"guess-motion in.png --plot out.jpg", 2, {"--plot takes", "ending in .png", "'out.jpg'"}},
        {"guess-motion in.png in.jpg --plot out.png", 2, {"--plot draws one picture"}},
    };
    struct Range {
        const char *verb, *option;
        std::vector<const char*> wrong;
        const char* right;
    };
    const Range ranges[] = {
        {"blur", "--radius", {"0", "51", "-3", "2.5", "3px", "", " 3", "99999999999"}, "from 1 to 50"},
        {"deblur", "--radius", {"0", "11"}, "from 1 to 10"},
        {"motion-blur", "--length", {"0", "1e2", "23170"}, "from 1 to 23169"},
        {"demotion-blur", "--length", {"0", "23170"}, "from 1 to 23169"},
        {"motion-blur", "--degree", {"361", "-540", "auto"}, "from -360 to 360"},
        {"band", "--band", {"-1", "3"}, "from 0 to 2"},
        {"blur", "--quality", {"0", "101"}, "from 1 to 100"},
        {"blur", "--jobs", {"-1", "many"}, "from 0 to 256"},
    };
    for (const Range& range : ranges) {
        for (const char* value : range.wrong) {
            const std::string quoted = " \"" + std::string(value) + '"';
            rows.push_back({range.verb + (" in.png -o out.png " + std::string(range.option)) + quoted,
                            2,
                            {range.verb, range.option + (" takes a whole number " + std::string(range.right)),
                             "'" + std::string(value) + "'"}});
        }
    }
    ExpectRefusals(rows);
}

TEST(BadInput, Pictures) {
    std::vector<BadInput> rows = {
        {"blur none.png -o out.png", 1, {"none.png: no such file"}},
        {"blur \"\" -o out.png", 1, {"'': no such file"}},
        {"blur -o out.png -- -d.png", 1, {"-d.png: no such file"}},
        {"blur -o out.png [a,b]", 1, {"[a,b]: no such file"}},
        {"blur \"b\na\x1b[m\xff\xc2\x85 \u00e9.png\" -o out.png",
         1,
         {"b\\na\\x1b[m\\xff\\xc2\\x85 \u00e9.png: no such"}},
        {"blur folder -o out.png", 1, {"folder: is a folder"}},
        {"blur loop.png -o out.png", 1, {"loop.png: is a link that leads round in a circle"}},
        {"blur " + kLongName + " -o out.png", 1, {"has a longer name than files can have"}},
        {"blur /dev/null -o out.png", 1, {"/dev/null: is no regular file"}},
        {"blur secret.png -o out.png", 1, {"secret.png: no permission"}, {.asNobody = true}},
        {"blur text.jpg -o out.png", 1, {"text.jpg: is no picture", "take JPEG, PNG, TIFF"}},
        {"blur numbers.png -o out.png", 1, {"numbers.png: is no picture"}},
        {"blur head.tif -o out.png", 1, {"head.tif: cannot be opened"}},
        {"blur - -o out.png", 1, {"standard input: is empty"}},
        {"blur - -o out.png", 1, {"standard input: is no picture"}, {.input = "/dev/zero"}},
        {"blur - -o out.png", 1, {"standard input: cannot be read: Is a directory"}, {.input = "."}},
        {"blur - -o link.png --force", 2, {"-o: the output 'link.png' is the input"}, {.input = "in.png"}},
        {"guess-motion - -", 2, {"standard input can be read but once"}},
        {"blur damaged.jpg -o out.png --strict", 1, {"damaged.jpg: may be damaged", "which --strict refuses"}},
        {"blur empty.png -o out.png", 1, {"empty.png: is empty"}},
        {"blur six.tif -o out.png", 1, {"six.tif: has 6 channels"}},
        {"blur pixel.png -o out.png --radius 1", 1, {"pixel.png: a picture of one pixel"}},
        {"blur line.png -o out.png --radius 2", 1, {"line.png: --radius 2", "at most 1"}},
        {"motion-blur line.png -o out.png --length 1", 1, {"line.png: --length 1", "no value fits"}},
        {"motion-blur in.png -o out.png --length 23", 1, {"in.png: --length 23", "at most 22"}},
        {"denoise in.png -o out.png", 1, {"in.png: is smaller than the 96 by 96", "give --threshold"}},
        {"denoise line.png -o out.png --threshold 3", 1, {"line.png: has a side of 1 pixels", "9 or more"}},
        {"band line.png -o out.png --band 1", 1, {"line.png: has a side of 1 pixels", "9 or more"}},
        {"demotion-blur in.png -o out.png --length 62", 1, {"in.png: --length 62", "at most 61"}},
        {"demotion-blur line.png -o out.png --degree auto", 1, {"side of 1 pixels", "from 4 on", "give --degree"}},
        {"guess-motion line.png", 1, {"line.png: has a side of 1 pixels", "from 4 on"}},
        {"guess-motion text.jpg --json", 1, {"text.jpg: is no picture"}},
        {"blur huge.hdr -o out.png", 1, {"huge.hdr: too large at 50000x50000", "715827797 pixels"}},
    };
    for (const std::string name : {"cut_in.png", "cut_in.jpg", "cut_in.tif", "cut_in.webp", "cut_in.gif"}) {
        rows.push_back({"blur " + name + " -o out.png", 1, {name + ": "}});
    }
    ExpectRefusals(rows);
}

TEST(BadInput, Outputs) {
    const RunOptions nobody = {.asNobody = true};
    ExpectRefusals({
        {"blur in.png -o folder", 2, {"-o: the output 'folder/in.png' exists", "--force"}},
        {"blur in.png -o \"\"", 2, {"-o takes the name of a file or folder"}},
        {"blur in.png -o none/out.png", 2, {"no folder 'none'"}},
        {"blur in.png in.jpg -o in.tif", 2, {"-o: 'in.tif' is a file"}},
        {"blur in.png in.jpg -o none/none", 2, {"cannot create folder 'none/none'"}},
        {"blur in.png -o closed/out.png", 2, {"no permission", "'closed'"}, nobody},
        {"blur in.png in.jpg -o closed", 2, {"no permission", "'closed'"}, nobody},
        {"blur in.png -o out.xyz", 2, {"-o: no picture format", "'out.xyz'", "use jpg, png, tif, webp"}},
        {"blur in.png -o out.dz", 2, {"no picture format", "'out.dz'"}},
        {"blur in.png -o out.v", 2, {"no picture format", "'out.v'"}},
        {"blur in.png -o in.jpg", 2, {"'in.jpg' exists", "--force"}},
        {"blur in.png in.jpg in.gif -o folder --format png", 2, {"'in.png' and 'in.jpg' would both become"}},
        {"blur text.jpg -o new/", 1, {"text.jpg: is no picture"}}, // and no new folder
        {"blur in.png in.jpg -o out.jpg", 2, {"no new folder is called 'out.jpg'", "'{name}-new.{ext}'"}},
        {"blur in.png in.jpg -o new%d", 2, {"no new folder is called 'new%d'", "'{name}-sharp.{ext}'"}},
        {"blur in.png -o {nam}.png", 2, {"'{nam}.png' is a template", "{name} and {ext}"}},
        {"blur in.png -o {name}/out.png", 2, {"not of its folder"}},
        {"blur in.png in.jpg -o new/{name}.png", 2, {"'in.png' and 'in.jpg' would both become 'new/in.png'"}},
        {"blur in.png -o out.png --format jpg", 2, {"'out.png' does not end like the --format jpg"}},
        {"blur in.png -o new/ --format v", 2, {"--format takes jpg, png", "not 'v'"}},
        {"blur in.png in.jpg -o -", 2, {"standard output takes one picture"}},
        {"blur in.png -o locked.png --force", 2, {"'locked.png' is write-protected"}},
        {"blur in.png -o loop.png --force", 2, {"'loop.png' is a link that leads round in a circle"}},
        {"blur in.png -o " + kLongName, 2, {"has a longer name than files can have"}},
        {"blur in.png in.jpg -o links --force", 2, {"would both become 'links/in.jpg', which is also 'links/in.png'"}},
        {"guess-motion in.png --plot none/out.png", 2, {"--plot: there is no folder 'none'"}},
        {"guess-motion in.png --plot cut_in.png", 2, {"'cut_in.png' exists", "--force"}},
        {"guess-motion in.png --plot hard.png --force", 2, {"--plot: ", "'hard.png' is the input"}},
        {"blur in.png -o /dev/full", 1, {"'/dev/full' cannot be written", "No space left on device"}},
        // No input is ever replaced, whatever name it goes by.
        {"blur in.png -o in.png --force", 2, {"'in.png' is the input"}},
        {"blur in.png -o folder/../in.png --force", 2, {"is the input 'in.png'"}},
        {"blur in.png -o link.png --force", 2, {"'link.png' is the input 'in.png'"}},
        {"blur link.png -o in.png --force", 2, {"'in.png' is the input 'link.png'"}},
        {"blur in.png -o hard.png --force", 2, {"'hard.png' is the input 'in.png'"}},
        {"blur in.png in.jpg -o . --force", 2, {"is the input 'in.png'"}},
        {"blur in.jpg folder/in.png in.webp -o folder --force", 2, {"input 'folder/in.png'"}},
        {"blur in.png folder/in.png -o new", 2, {"'in.png' and 'folder/in.png' would both become"}},
        {"blur in.png in.png -o new", 2, {"'in.png' is given twice"}},
    });
}

/// Memory and threads that do not suffice, and a disk that fills up behind the first bytes.
TEST(BadInput, ScarceResources) {
    const RunOptions memory = {.addressSpace = std::size_t{1000} << 20};
    const RunOptions threads = {.asNobody = true, .processes = 1};
    const RunOptions disk = {.fileSize = 1024}; // clang's OpenMP library shares as much memory with itself
    std::vector<BadInput> rows = {
        {"blur large.hdr -o out.png", 1, {"large.hdr: needs about 1", " MiB of memory, but ", " MiB are free"}, memory},
        {"demotion-blur large.hdr -o out.png", 1, {"large.hdr: needs about 5"}, memory},
        {"blur larger.png -o out.png", 1, {"no thread can be started beyond 0, where 3 are needed"}, threads},
        {"guess-motion larger.png --plot out.png", 1, {"'out.png' cannot be written"}, disk},
    };
    for (const char* ending : {"png", "jpg", "tif", "webp", "gif", "heic", "avif", "jxl", "ppm"}) {
        const std::string out = "out." + std::string(ending);
        rows.push_back({"blur -q larger.png -o " + out, 1, {"'" + out + "' cannot be written"}, disk});
    }
    std::erase_if(rows, [](const BadInput& row) { return row.options.fileSize == 0 && IsTooTight(row.options); });
    ExpectRefusals(rows);
}

/// The sum of the library's 16.16 weights in a blur of this radius, times samples taken in turns.
std::int64_t BlurWeights(int radius, const std::vector<double>& samples) {
    const int side = 2 * radius + 1;
    ChMatrix<float> kernel;
    ChMakeGaussianPSF(kernel, side, side, 2.0 * radius);
    std::int64_t sum = 0;
    for (std::size_t k = 0; k < kernel.Count(); ++k) {
        sum += static_cast<std::int64_t>(kernel.m_Data[k] * 65536.0f) *
               static_cast<std::int64_t>(samples[k % samples.size()]);
    }
    return sum;
}

// A picture of the kernel's size whose largest sum, the middle's, is as near to 2^31 as one sample can bring it: one
// level less in one place keeps it below.
TEST(BadInput, BlurRefusesExactlyTheRadiusAtWhichSumsWrap) {
    const TemporaryFolder folder;
    for (const auto& [radius, mean] : {std::pair{6, "221.1"}, {10, "84.1"}, {50, "3.6"}}) {
        const int side = 2 * radius + 1;
        const auto pixels = static_cast<std::size_t>(side * side);
        constexpr std::int64_t limit = (std::int64_t{1} << 31) - 1;
        std::vector<double> samples(pixels, std::floor(double(limit) / double(BlurWeights(radius, {1.0}))));
        std::size_t next = 0;
        std::vector<double> below = samples;
        for (; BlurWeights(radius, samples) <= limit; ++next) {
            below = samples;
            samples[next] += 1.0;
        }
        for (const bool wraps : {false, true}) {
            std::vector<unsigned char> rgba(4 * pixels, 255); // dark but for one colour
            for (std::size_t k = 0; k < pixels; ++k) {
                rgba[4 * k] = rgba[4 * k + 1] = 0;
                rgba[4 * k + 2] = static_cast<unsigned char>((wraps ? samples : below)[k]);
            }
            Save(FromSamples(rgba, side, side, 4), folder / "in.png");
            const std::string line = "blur in.png -o out.png --force --radius " + std::to_string(radius);
            const RunResult result = RunCommand(folder, line);
            EXPECT_EQ(result.status, wraps ? 1 : 0) << radius << result.err;
            EXPECT_EQ(result.ErrorLines(), wraps ? 1u : 0u);
            const std::string least = "give at most " + std::to_string(radius - 1) + ", or --exact";
            EXPECT_EQ(result.err.find(least) != std::string::npos, wraps) << result.err;
            const RunResult exact = RunCommand(folder, line + " --exact");
            EXPECT_EQ(exact.status, 0);
            EXPECT_NE(exact.err.find(std::string("passes ") + mean), std::string::npos) << exact.err;
        }
    }
}

} // namespace
