// IPTC records (IIM 4.2), which every format packs in its own way; libvips passes the packed bytes on as they are.
#pragma once

#include <string>

namespace cli {

/// The records alone, of a field as libvips read it from TIFF, or from JPEG, where they are one of the resources that
/// Photoshop writes; empty where there are none.
std::string IptcRecords(const std::string& field);

/// The field that libvips makes JPEG of.
std::string IptcForJpeg(const std::string& records);

/// The field that libvips makes TIFF of.
std::string IptcForTiff(const std::string& records);

} // namespace cli
