// The margin that planes get before they are transformed.
#pragma once

namespace kernels {

/// Stores a row of width + 2 * pad samples: `width` samples, 1 or more, between copies of the first and of the last.
void ExtendRow(const unsigned char* from, int width, unsigned char* to, int pad);

} // namespace kernels
