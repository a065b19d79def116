#include "Messages.h"

#include "Descriptors.h"
#include "Printable.h"

#include <unistd.h>

#include <cstdio>

namespace cli {

Messages::Messages(std::size_t steps, bool quiet)
    : m_Steps(steps), m_Quiet(quiet), m_ShowBar(!quiet && steps > 1 && isatty(MessageDescriptor())) {
    Draw();
}

Messages::~Messages() {
    EndProgress();
}

void Messages::Error(const std::string& subject, const std::string& text) {
    WriteLine("claribox: " + (subject.empty() ? "" : subject + ": ") + text);
}

void Messages::Note(const std::string& subject, const std::string& text) {
    if (!m_Quiet) {
        Error(subject, text);
    }
}

void Messages::Warning(const std::string& subject, const std::string& text) {
    Note(subject, "warning: " + text);
}

void Messages::Step() {
    const std::lock_guard lock(m_Mutex);
    ++m_Done;
    Draw();
}

void Messages::EndProgress() {
    const std::lock_guard lock(m_Mutex);
    Erase();
    m_ShowBar = false;
}

void Messages::WriteLine(const std::string& line) {
    const std::lock_guard lock(m_Mutex);
    Erase();
    dprintf(MessageDescriptor(), "%s\n", Printable(line).c_str());
    Draw();
}

void Messages::Draw() {
    if (m_ShowBar) {
        constexpr std::size_t width = 40;
        const std::size_t filled = width * m_Done / m_Steps;
        const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
        dprintf(MessageDescriptor(), "\r[%s] %zu of %zu", bar.c_str(), m_Done, m_Steps);
    }
}

void Messages::Erase() {
    if (m_ShowBar) {
        dprintf(MessageDescriptor(), "\r\033[K");
    }
}

} // namespace cli
