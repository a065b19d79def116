// Errors of libvips as errors of a picture.
#pragma once

#include "Errors.h"
#include "Signals.h"

#include <vips/vips8>

#include <string>

namespace cli {

/// What libvips says went wrong, in one line and in brackets; empty if it says nothing. Clears the message, so that the
/// next error starts afresh.
std::string VipsComplaint();

/// `what` went wrong and how libvips puts it; if it could not start a thread, that instead of `what`.
std::string VipsFault(const std::string& what);

/// Has libvips give up what it computes of `image` once the user asks to stop.
void EndWhenInterrupted(const vips::VImage& image);

/// Takes a step of libvips; where it fails, `PictureError` says `what` went wrong and how libvips puts it, or
/// `Interrupted` that it was asked to stop.
template <typename Step>
auto TryVips(const std::string& what, Step step) {
    vips_error_clear(); // of errors it recovered from
    try {
        return step();
    } catch (const vips::VError&) {
        StopIfInterrupted();
        throw PictureError(VipsFault(what));
    }
}

} // namespace cli
