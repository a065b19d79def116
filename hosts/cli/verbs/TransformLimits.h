// What the verbs that go through the frequency domain can take, and what it costs.
#pragma once

#include "PictureShape.h"

#include <cstdint>
#include <string>

namespace cli {

/// Why a plane of these sizes cannot be transformed; empty if it can.
std::string TransformMisfit(std::int64_t width, std::int64_t height);

/// An upper estimate of the bytes that the transform of one plane, extended or not, takes beside its spectrum: tables
/// for both sides and a batch of lines, which lengths with large prime factors pad to as much as four times the length.
std::int64_t TransformLineBytes(const PictureShape& shape);

} // namespace cli
