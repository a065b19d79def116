// The command `claribox`: restoration of pictures by file name.
#include "Batch.h"
#include "CommandLine.h"
#include "Descriptors.h"
#include "Errors.h"
#include "Memory.h"
#include "Messages.h"
#include "PictureReader.h"
#include "Signals.h"
#include "TryVips.h"

#include <vips/vips8>

#include <exception>

namespace {

GLogWriterOutput Ignore(GLogLevelFlags, const GLogField*, gsize, gpointer) {
    return G_LOG_WRITER_HANDLED;
}

/// Switches off libvips' cache of operations, which would keep the pixels of pictures already written, and its
/// warnings, the first of which come while it starts and would mix with our lines.
void PrepareVips(const char* program) {
    g_log_set_writer_func(Ignore, nullptr, nullptr);
    g_log_set_default_handler([](const char*, GLogLevelFlags, const char*, void*) {}, nullptr);
    if (vips_init(program) != 0) {
        throw std::runtime_error("libvips cannot be started" + cli::VipsComplaint());
    }
    vips_cache_set_max(0);
    cli::SpareAddressSpace();
    cli::AllowReadersOfPicturesOnly();
}

} // namespace

int main(int argc, char** argv) {
    cli::OpenMissingDescriptors();
    try {
        const auto request = cli::ParseCommandLine(argc, argv);
        if (!request) {
            return cli::kExitDone;
        }
        if (!request->settings.inputs.empty()) {
            cli::SilenceLibraries();
            cli::InstallSignalHandlers();
            PrepareVips(argv[0]);
        }
        if (const auto* print = std::get_if<int (*)(const cli::Settings&)>(&request->verb->action)) {
            return (*print)(request->settings);
        }
        return cli::RunBatch(*request->verb, std::get<cli::PixelOperation>(request->verb->action), request->settings);
    } catch (const cli::UsageError& error) {
        cli::Messages().Error("", error.what());
        return cli::kExitUsage;
    } catch (const std::exception& error) {
        cli::Messages().Error("", error.what());
        return cli::kExitPictureFailed;
    }
}
