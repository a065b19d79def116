#include "VagueDenoiser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>

namespace bench {
namespace {

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// Processor time of the command in seconds, nothing where it cannot start or ends with an error. Its output is dropped.
std::optional<double> RunCommand(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str())); // posix_spawn leaves them alone
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments.front(), &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    int status = 0;
    rusage usage = {};
    if (error != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        return std::nullopt;
    }
    return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

std::filesystem::path MakeDirectory() {
    std::string name = std::filesystem::temp_directory_path() / "claribox_bench_XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error(name + ": cannot be made");
    }
    return name;
}

} // namespace

VagueDenoiser::VagueDenoiser(const std::vector<std::uint8_t>& plane, int width, int height, int frames, float threshold)
    : m_Directory(MakeDirectory()), m_FrameBytes(plane.size()), m_Frames(frames),
      m_Size(std::to_string(width) + "x" + std::to_string(height)),
      m_Filter("vaguedenoiser=method=soft:nsteps=3:percent=100:threshold=" + std::to_string(threshold)) {
    std::ofstream file(m_Directory / "input", std::ios::binary);
    for (int frame = 0; frame < frames; ++frame) {
        file.write(reinterpret_cast<const char*>(plane.data()), static_cast<std::streamsize>(plane.size()));
    }
    if (!file.flush()) {
        std::filesystem::remove_all(m_Directory);
        throw std::runtime_error((m_Directory / "input").string() + ": cannot be written");
    }
}

VagueDenoiser::~VagueDenoiser() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Directory, ignored);
}

bool VagueDenoiser::IsInstalled() {
    return RunCommand({"ffmpeg", "-version"}).has_value();
}

double VagueDenoiser::SecondsPerFrame() const {
    const std::vector<std::string> drop = {"null", "-"};
    return (Seconds(m_Filter, drop) - Seconds("null", drop)) / m_Frames;
}

std::vector<std::uint8_t> VagueDenoiser::FirstFrame() const {
    const std::string path = m_Directory / "output";
    Seconds(m_Filter, {"rawvideo", path});
    std::vector<std::uint8_t> frame(m_FrameBytes);
    std::ifstream file(path, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(frame.data()), static_cast<std::streamsize>(frame.size()))) {
        throw std::runtime_error("ffmpeg: its output is too short");
    }
    return frame;
}

double VagueDenoiser::Seconds(const std::string& filter, const std::vector<std::string>& output) const {
    std::vector<std::string> command = {
        "ffmpeg", "-hide_banner", "-nostdin", "-loglevel", "error", "-threads", "1", "-filter_threads", "1",
        // what comes in
        "-f", "rawvideo", "-pixel_format", "gray", "-video_size", m_Size, "-i", m_Directory / "input",
        // what goes out
        "-vf", filter, "-f"};
    command.insert(command.end(), output.begin(), output.end());
    const std::optional<double> seconds = RunCommand(command);
    if (!seconds) {
        throw std::runtime_error("ffmpeg fails with the filter " + filter);
    }
    return *seconds;
}

} // namespace bench
