// The command's way from the bytes of a file to pixels: it ends with a whole picture, or with one line.
#include "fuzz/Input.h"

#include "Memory.h"
#include "Picture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace {

/// As the command starts it.
bool PrepareVips() {
    const auto ignore = [](const char*, GLogLevelFlags, const char*, void*) {};
    g_log_set_default_handler(ignore, nullptr);
    const bool isReady = vips_init("fuzz") == 0;
    vips_cache_set_max(0);
    vips_concurrency_set(1);
    cli::AllowReadersOfPicturesOnly();
    g_log_set_handler(
        "VIPS", G_LOG_LEVEL_MASK, [](const char*, GLogLevelFlags, const char*, void*) {}, nullptr);
    return isReady;
}

void Load(const std::string& path) {
    cli::MemoryBudget budget(std::int64_t{64} << 20);
    cli::Picture picture(path);
    const cli::PictureShape shape = picture.Shape();
    const cli::MemoryBudget::Share share(budget, cli::EstimateMemory(shape, picture.Stored(), 0, "pngsave").Peak());
    picture.Decode();
    int calls = 0;
    picture.Apply([&](const cli::PackedPixels& pixels) {
        cli::ForEachPixel(pixels, [](unsigned char& blue, unsigned char& green, unsigned char& red, std::size_t) {
            blue = green = red = static_cast<unsigned char>(blue ^ green ^ red);
        });
        EXPECT_EQ(static_cast<std::int64_t>(CountOf(pixels)), shape.Pixels());
        ++calls;
    });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(picture.Image().format(), VIPS_FORMAT_UCHAR);
    EXPECT_EQ(picture.Image().bands(), shape.bands);
    EXPECT_TRUE(shape.bands >= 1 && shape.bands <= 4) << shape.bands;
    EXPECT_EQ(picture.Damage().find('\n'), std::string::npos) << picture.Damage();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isReady = PrepareVips();
    const Input failingOnExpectations(data, 0);
    EXPECT_TRUE(isReady);
    const int file = memfd_create("picture", MFD_CLOEXEC);
    EXPECT_EQ(write(file, data, size), static_cast<ssize_t>(size));
    try {
        Load("/proc/self/fd/" + std::to_string(file));
    } catch (const cli::PictureError& error) {
        const std::string text = error.what();
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
    close(file);
    return 0;
}
