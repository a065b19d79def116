#include "Batch.h"

#include "Errors.h"
#include "Memory.h"
#include "MemoryEstimate.h"
#include "Messages.h"
#include "OutputFile.h"
#include "OutputNames.h"
#include "Picture.h"
#include "PictureWriter.h"
#include "Plan.h"
#include "Signals.h"
#include "Threads.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace cli {
namespace {

class Batch {
public:
    Batch(const PixelOperation& operation, const Settings& settings, std::vector<Task> tasks)
        : m_Operation(operation), m_Settings(settings), m_Tasks(std::move(tasks)),
          m_Messages(m_Tasks.size(), settings.quiet), m_Budget(FreeBytes()) {}

    int Run();

private:
    void WorkOnThreads();
    void Work();
    void Do(const Task& task);
    void Refuse(const Task& task, const std::string& why);
    void Tell(const Task& task, const std::vector<std::string>& losses);
    PictureWriter WriterFor(const Task& task, const vips::VImage& image) const;
    void Process(const Task& task);
    int Summarise();

    const PixelOperation& m_Operation;
    const Settings& m_Settings;
    const std::vector<Task> m_Tasks;
    Messages m_Messages;
    MemoryBudget m_Budget;
    std::atomic<std::size_t> m_Next = 0;
    std::atomic<std::size_t> m_Written = 0;
    std::atomic<std::size_t> m_Failed = 0;
};

int Batch::Run() {
    for (const Task& task : m_Tasks) {
        if (!task.problem.empty()) {
            Refuse(task, task.problem);
        }
    }
    try {
        WorkOnThreads();
    } catch (const std::runtime_error& error) {
        m_Failed += m_Tasks.size() - m_Failed;
        m_Messages.Error("", error.what());
    }
    return Summarise();
}

void Batch::WorkOnThreads() {
    const int processors = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    const int wanted = m_Settings.jobs == 0 ? processors : m_Settings.jobs;
    const int jobs = PicturesAtOnce(std::min(wanted, static_cast<int>(m_Tasks.size())));
    std::vector<std::jthread> threads;
    try {
        for (int k = 1; k < jobs; ++k) {
            threads.emplace_back([this] { Work(); });
        }
    } catch (const std::system_error&) {
        // Another process has taken the thread meanwhile: those already started do all the work.
    }
    Work();
}

void Batch::Work() {
    for (std::size_t k = m_Next++; k < m_Tasks.size() && !InterruptRequested(); k = m_Next++) {
        if (m_Tasks[k].problem.empty()) {
            Do(m_Tasks[k]);
        }
    }
}

void Batch::Do(const Task& task) {
    try {
        Process(task);
        ++m_Written;
        m_Messages.Step();
    } catch (const Interrupted&) {
        // counted neither as written nor as failed
    } catch (const std::bad_alloc&) {
        Refuse(task,
               m_Tasks.size() > 1 ? "memory ran out; free some or take fewer --jobs" : "memory ran out; free some");
    } catch (const std::exception& error) {
        Refuse(task, error.what());
    }
}

void Batch::Refuse(const Task& task, const std::string& why) {
    ++m_Failed;
    m_Messages.Error(InputName(task.input), why);
    m_Messages.Step();
}

void Batch::Tell(const Task& task, const std::vector<std::string>& losses) {
    if (losses.empty()) {
        return;
    }
    std::string text;
    for (const std::string& loss : losses) {
        text += (text.empty() ? "" : ", ") + loss;
    }
    if (m_Settings.strict) {
        throw PictureError(text + ", which --strict refuses");
    }
    m_Messages.Warning(InputName(task.input), text);
}

/// The name of a device says nothing about the format.
PictureWriter Batch::WriterFor(const Task& task, const vips::VImage& image) const {
    if (!m_Settings.format.empty()) {
        return PictureWriter(m_Settings.format);
    }
    const bool hasName = !IsStandardOutput(task.output) && !IsDevice(task.output);
    return hasName ? PictureWriter(task.output) : PictureWriter(image);
}

void Batch::Process(const Task& task) {
    StopIfInterrupted();
    Picture picture(task.input);
    if (m_Operation.luminanceAlone) {
        picture.ReduceToLuminance();
    }
    const PictureShape shape = picture.Shape();
    if (const std::string misfit = m_Operation.misfit(m_Settings, shape); !misfit.empty()) {
        throw PictureError(misfit);
    }
    const PictureWriter writer = WriterFor(task, picture.Image());
    const MemoryEstimate estimate =
        EstimateMemory(shape, picture.Stored(), m_Operation.workingBytes(m_Settings, shape), writer.Name());
    const MemoryBudget::Share share(m_Budget, estimate.Peak());
    std::vector<std::string> losses = picture.Losses();
    std::ranges::move(writer.Losses(picture.Image()), std::back_inserter(losses));
    Tell(task, losses);
    StopIfInterrupted();
    picture.Decode();
    if (!picture.Damage().empty()) {
        Tell(task, {picture.Damage()});
    }
    StopIfInterrupted();
    Report report;
    picture.Apply([&](const PackedPixels& pixels) { report = m_Operation.apply(m_Settings, pixels); });
    RequireAllPlanes();
    if ((m_Settings.verbose || report.unasked) && !report.text.empty()) {
        m_Messages.Note(InputName(task.input), report.text);
    }
    StopIfInterrupted();
    OutputFile output(task.output, m_Settings.force);
    TryVips("its output " + OutputName(task.output) + " cannot be written",
            [&] { writer.Write(picture.Image(), output.Descriptor(), m_Settings.quality); });
    StopIfInterrupted();
    output.Commit();
}

int Batch::Summarise() {
    m_Messages.EndProgress();
    const std::size_t left = m_Tasks.size() - m_Written - m_Failed;
    if (m_Tasks.size() > 1 || left > 0) {
        const auto count = [](std::size_t number) { return std::to_string(number); };
        m_Messages.Note("", std::string(left > 0 ? "interrupted: " : "") + count(m_Written) + " of " +
                                count(m_Tasks.size()) + " pictures written, " + count(m_Failed) + " failed" +
                                (left > 0 ? ", " + count(left) + " not done" : ""));
    }
    if (left > 0) {
        return kExitInterrupted;
    }
    return m_Failed > 0 ? kExitPictureFailed : kExitDone;
}

} // namespace

int RunBatch(const Verb& verb, const PixelOperation& operation, const Settings& settings) {
    Plan plan = PlanOutputs(settings);
    if (const std::string caution = operation.caution ? operation.caution(settings) : ""; !caution.empty()) {
        Messages(0, settings.quiet).Warning(verb.name, caution);
    }
    const int status = Batch(operation, settings, std::move(plan.tasks)).Run();
    if (!plan.newFolder.empty()) {
        rmdir(plan.newFolder.c_str()); // fails, as it should, if there is a picture in it
    }
    return status;
}

} // namespace cli
