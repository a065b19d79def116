// The verbs that guess a direction of motion: what they tell and draw, and that `demotion-blur` follows the guess.
#include "CommandRun.h"
#include "TestPictures.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <sstream>

namespace {

using nlohmann::json;

/// The library's own guess, degree and region of the full picture.
json LibraryGuess(const vips::VImage& picture, bool reversed) {
    const int width = picture.width();
    const int height = picture.height();
    vips::VImage colours = picture.bands() < 3 ? picture.extract_band(0) : picture;
    if (picture.bands() < 3) {
        colours = colours.bandjoin(colours).bandjoin(colours);
    }
    const vips::VImage order[] = {colours[reversed ? 2 : 0], colours[1], colours[reversed ? 0 : 2]};
    std::vector<unsigned char> pixels = Samples(order[0].bandjoin(order[1]).bandjoin(order[2]));
    CImageFocus focus;
    focus.SetSize(width, height);
    const int degree = focus.GuessMotionDegree(pixels.data(), FoPixelFmt_BGR24, 3 * width);
    int edges[4];
    focus.GetEstRect(edges[0], edges[1], edges[2], edges[3]);
    const int scale = width * height >= 1700000 ? 2 : 1;
    return {{"degree", degree},
            {"region",
             {{"left", scale * edges[0]},
              {"top", scale * edges[1]},
              {"right", std::min(scale * edges[2], width)},
              {"bottom", std::min(scale * edges[3], height)}}}};
}

std::string AsText(const json& guess) {
    const json& region = guess["region"];
    std::ostringstream text;
    text << "degree " << guess["degree"] << ", guessed on columns " << region["left"] << " to "
         << region["right"].get<int>() - 1 << " and rows " << region["top"] << " to "
         << region["bottom"].get<int>() - 1;
    return text.str();
}

/// Random stripes: red ones lie, weaker blue ones stand, so that the direction hangs on which colour is which.
vips::VImage Stripes(int width, int height) {
    const vips::VImage noise = RandomPicture(width, height, 1, 29);
    const vips::VImage lying = noise.extract_area(0, 0, 1, height).zoom(width, 1);
    const vips::VImage standing = noise.extract_area(0, 0, width, 1).zoom(1, height);
    return lying.bandjoin(vips::VImage::black(width, height))
        .bandjoin(standing)
        .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// At 1700000 pixels and above the library looks at half the size; at exactly that number it also tells the region so.
TEST(GuessMotion, TellsDegreeRegionAndTimeOfEachPicture) {
    const struct {
        int width, height, bands;
        int left, top; ///< of a busy patch of 301x203, the rest is black
    } rows[] = {{301, 203, 1, 0, 0},        {301, 203, 2, 0, 0},       {301, 203, 3, 0, 0},
                {301, 203, 4, 0, 0},        {900, 700, 3, 590, 480},   {1250, 1359, 3, 940, 1100},
                {1250, 1360, 3, 940, 1100}, {1251, 1360, 3, 940, 1100}};
    const TemporaryFolder folder;
    std::string names;
    std::vector<json> expected;
    for (const auto& row : rows) {
        vips::VImage patch = row.bands < 3 ? RandomPicture(301, 203, 1, 29) : Stripes(301, 203);
        if (row.bands % 2 == 0) {
            patch = patch.bandjoin(255.0);
        }
        const vips::VImage picture = patch.embed(row.left, row.top, row.width, row.height);
        const std::string name = std::to_string(expected.size()) + ".tif";
        names += " " + name;
        Save(picture, folder / name);
        expected.push_back(LibraryGuess(picture, true));
        if (row.bands >= 3) { // or else the order of the colours could not be told by the guess
            EXPECT_NE(expected.back()["degree"], LibraryGuess(picture, false)["degree"]);
        }
    }
    const RunResult plain = RunCommand(folder, "guess-motion" + names + " none.tif");
    const RunResult parsed = RunCommand(folder, "guess-motion --json" + names);
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(plain.err, "claribox: none.tif: no such file; name an existing picture\n");
    EXPECT_EQ(parsed.status, 0) << parsed.err;
    std::istringstream plainLines(plain.out);
    std::istringstream parsedLines(parsed.out);
    for (std::size_t k = 0; k < expected.size(); ++k) {
        SCOPED_TRACE(testing::Message() << rows[k].width << "x" << rows[k].height << ", bands " << rows[k].bands);
        const std::string name = std::to_string(k) + ".tif";
        std::string line;
        ASSERT_TRUE(std::getline(plainLines, line));
        EXPECT_TRUE(line.starts_with(name + ": " + AsText(expected[k]) + " in ")) << line;
        ASSERT_TRUE(std::getline(parsedLines, line));
        json object = json::parse(line);
        EXPECT_EQ(object["file"], name);
        EXPECT_GT(object["milliseconds"].get<double>(), 0.0);
        object.erase("file");
        object.erase("milliseconds");
        EXPECT_EQ(object, expected[k]);
    }
    EXPECT_EQ(plainLines.peek(), EOF);
    EXPECT_EQ(parsedLines.peek(), EOF);
}

TEST(DeMotionBlur, FollowsTheGuessAndTellsIt) {
    for (const int bands : {1, 4}) {
        const TemporaryFolder folder;
        const vips::VImage picture = RandomPicture(60, 50, bands, 30);
        const json guess = LibraryGuess(picture, true);
        Save(picture, folder / "in.png");
        const RunResult result = RunCommand(folder, "demotion-blur in.png -o out.png --length 4 --degree auto --exact");
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "claribox: in.png: " + AsText(guess) + "\n");
        EXPECT_EQ(Samples(Load(folder / "out.png")), Samples(Expected(picture, [&](CImageFocus& focus, auto... rest) {
                      focus.SetMotionLength(4);
                      focus.SetMotionDegree(guess["degree"]);
                      focus.DeMotionBlur(rest...);
                  })));
    }
}

// The noise term of the library's filter takes a part of the mean too, 100 becomes 94; the command gives it back.
TEST(DeMotionBlur, FlatPicturesStayAsTheyAreAtEveryLevel) {
    for (const char* const options : {"--length 1 --degree 0", "--length 15", "--length 49 --degree 137"}) {
        const TemporaryFolder folder;
        std::map<std::string, std::vector<unsigned char>> pictures;
        std::string names;
        for (int level = 0; level < 256; level += options[9] == '1' ? 1 : 15) {
            std::vector<double> colour = {double(level), 255.0 - level, 100.0, 9.0};
            colour.resize(static_cast<std::size_t>(level % 4 + 1));
            const auto space = colour.size() < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
            const vips::VImage picture = PlainPicture(colour, VIPS_FORMAT_UCHAR, space);
            const std::string name = std::to_string(level) + ".png";
            Save(picture, folder / name);
            pictures[name] = Samples(picture);
            names += " " + name;
        }
        const RunResult result = RunCommand(folder, "demotion-blur" + names + " -o out " + options);
        ASSERT_EQ(result.status, 0) << result.err;
        for (const auto& [name, samples] : pictures) {
            ASSERT_EQ(Samples(Load(folder / ("out/" + name))), samples) << name << " " << options;
        }
    }
}

// Columns of 0 and 255 by turns: to the right of a pixel all is wrong, above it all is right but for a slope that stops
// short. The curve then lies on the outer circle at 0 to 44 degrees, and the guess is 45.
TEST(GuessMotion, PlotShowsCostsAndGuessByDegree) {
    const TemporaryFolder folder;
    const vips::VImage odd = vips::VImage::xyz(64, 48)[0] & 1;
    Save((odd * 255)
             .cast(VIPS_FORMAT_UCHAR)
             .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W)),
         folder / "in.png");
    WriteFile(folder / "plot.png", "old");
    const RunResult result = RunCommand(folder, "guess-motion in.png --plot plot.png --force");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.out.starts_with("degree 45, guessed on columns 0 to 62 and rows 0 to 46 in ")) << result.out;
    const vips::VImage plot = Load(folder / "plot.png");
    ASSERT_EQ(plot.bands(), 3);
    ASSERT_EQ(plot.width(), 720);
    ASSERT_EQ(plot.height(), 720);
    const struct {
        double degree, radius;
        std::vector<double> colour;
        bool expected;
    } rows[] = {{45, 30, {64, 224, 255}, true},   {225, 30, {64, 224, 255}, false}, {20, 290, {255, 176, 0}, true},
                {200, 290, {255, 176, 0}, true},  {46, 290, {255, 176, 0}, false},  {110, 290, {255, 176, 0}, false},
                {120, 245, {255, 176, 0}, false}, {315, 20, {64, 224, 255}, false}};
    for (const auto& row : rows) {
        const double angle = row.degree * std::numbers::pi / 180.0;
        const std::vector<double> pixel = plot.getpoint(static_cast<int>(360.0 + row.radius * std::cos(angle)),
                                                        static_cast<int>(360.0 - row.radius * std::sin(angle)));
        double distance = 0.0;
        for (std::size_t k = 0; k < 3; ++k) {
            distance = std::max(distance, std::abs(pixel[k] - row.colour[k]));
        }
        EXPECT_EQ(distance < 40.0, row.expected) << row.degree << " " << row.radius << testing::PrintToString(pixel);
    }
}

} // namespace
