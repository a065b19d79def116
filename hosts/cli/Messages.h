// All lines on standard error, with the progress bar of a batch kept below them.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>

namespace cli {

/// Writes "claribox: SUBJECT: TEXT" lines, whole and printable, from any thread.
class Messages {
public:
    /// Shows a bar over `steps` steps if standard error is a terminal; 0 or 1 steps show none. If `quiet`, only errors
    /// are written.
    explicit Messages(std::size_t steps = 0, bool quiet = false);
    ~Messages();
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    /// `subject`, the file or verb concerned, may be empty.
    void Error(const std::string& subject, const std::string& text);
    void Note(const std::string& subject, const std::string& text);
    void Warning(const std::string& subject, const std::string& text);

    /// Advances the bar by one step.
    void Step();

    /// Removes the bar for good.
    void EndProgress();

private:
    void WriteLine(const std::string& line);
    void Draw();
    void Erase();

    std::mutex m_Mutex;
    std::size_t m_Steps;
    std::size_t m_Done = 0;
    bool m_Quiet;
    bool m_ShowBar;
};

} // namespace cli
