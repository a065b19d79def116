// Comments of JPEG files, which libvips 8.14 neither reads nor writes.
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace cli {

/// The comments that stand before the pixels of a JPEG file.
std::vector<std::string> JpegComments(std::istream& jpeg);

/// Puts `comments`, of up to 65533 bytes each, into a JPEG file that libvips wrote.
void InsertJpegComments(std::string& jpeg, const std::vector<std::string>& comments);

} // namespace cli
