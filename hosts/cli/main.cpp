// The command `claribox`: restoration of pictures by file name.
#include "Batch.h"
#include "CommandLine.h"
#include "Errors.h"
#include "Messages.h"
#include "PictureReader.h"
#include "Signals.h"

#include <vips/vips8>

#include <exception>

namespace {

void Ignore(const char*, GLogLevelFlags, const char*, void*) {}

/// libvips' cache of operations would keep the pixels of pictures already written, and its warnings would come between
/// our lines.
void PrepareVips(const char* program) {
    if (vips_init(program) != 0) {
        throw std::runtime_error("libvips cannot be started");
    }
    vips_cache_set_max(0);
    cli::AllowReadersOfPicturesOnly();
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO),
                      Ignore, nullptr);
}

} // namespace

int main(int argc, char** argv) {
    try {
        const auto request = cli::ParseCommandLine(argc, argv);
        if (!request) {
            return cli::ExitDone;
        }
        if (!request->settings.inputs.empty()) {
            cli::InstallSignalHandlers();
            PrepareVips(argv[0]);
        }
        if (const auto* print = std::get_if<int (*)(const cli::Settings&)>(&request->verb->action)) {
            return (*print)(request->settings);
        }
        return cli::RunBatch(*request->verb, std::get<cli::PixelOperation>(request->verb->action), request->settings);
    } catch (const cli::UsageError& error) {
        cli::Messages().Error("", error.what());
        return cli::ExitUsage;
    } catch (const std::exception& error) {
        cli::Messages().Error("", error.what());
        return cli::ExitPictureFailed;
    }
}
