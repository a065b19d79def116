// The filter `vaguedenoiser` of the command ffmpeg.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

/// Runs ffmpeg on one luminance plane: soft shrinkage, three levels, one thread. The frames wait raw in a temporary
/// file, which goes with the object. Everything throws `std::runtime_error` where ffmpeg or the file fails.
class VagueDenoiser {
public:
    /// Writes `frames` copies of a plane of `width` * `height` bytes. `threshold` is in grey levels.
    VagueDenoiser(const std::vector<std::uint8_t>& plane, int width, int height, int frames, float threshold);
    ~VagueDenoiser();
    VagueDenoiser(const VagueDenoiser&) = delete;
    VagueDenoiser& operator=(const VagueDenoiser&) = delete;

    /// Whether a command ffmpeg starts at all.
    static bool IsInstalled();

    /// The processor time of the filter alone, of one frame: that of a child with the filter less that of a child which
    /// reads the same frames and drops them unfiltered.
    double SecondsPerFrame() const;

    /// The first frame after the filter.
    std::vector<std::uint8_t> FirstFrame() const;

private:
    double Seconds(const std::string& filter, const std::vector<std::string>& output) const;

    std::filesystem::path m_Directory;
    std::size_t m_FrameBytes;
    int m_Frames;
    std::string m_Size;
    std::string m_Filter;
};

} // namespace bench
