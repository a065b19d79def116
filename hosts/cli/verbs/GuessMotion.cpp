// The verb `guess-motion`: a line for each picture, in their order, on standard output, and on request a plot.
#include "CostPlot.h"
#include "Errors.h"
#include "EveryVerb.h"
#include "Memory.h"
#include "MemoryEstimate.h"
#include "Messages.h"
#include "MotionGuess.h"
#include "OutputFile.h"
#include "Picture.h"
#include "Plan.h"
#include "Printable.h"
#include "Signals.h"
#include "StandardOutput.h"
#include "Threads.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <new>

namespace cli {
namespace {

std::string TextOf(const MotionGuess& guess) {
    char time[64];
    std::snprintf(time, sizeof time, "%.2f ms", guess.milliseconds);
    return "degree " + std::to_string(guess.degree) + ", guessed on " + Describe(guess.region) + " in " + time;
}

std::string JsonOf(const std::string& file, const MotionGuess& guess) {
    const nlohmann::ordered_json object = {{"file", file},
                                           {"degree", guess.degree},
                                           {"region",
                                            {{"left", guess.region.left},
                                             {"top", guess.region.top},
                                             {"right", guess.region.right},
                                             {"bottom", guess.region.bottom}}},
                                           {"milliseconds", guess.milliseconds}};
    // A file name need not be UTF-8 as JSON has to be.
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

MotionGuess GuessAndPlot(const Settings& settings, const Task& task) {
    StopIfInterrupted();
    Picture picture(task.input);
    const PictureShape shape = picture.Shape();
    if (const std::string misfit = GuessMisfit(shape); !misfit.empty()) {
        throw PictureError(misfit);
    }
    MemoryBudget budget(FreeBytes());
    const MemoryEstimate estimate = EstimateMemory(shape, picture.Stored(), GuessWorkingBytes(shape), "pngsave");
    const MemoryBudget::Share share(budget, estimate.Peak());
    picture.Decode();
    if (!picture.Damage().empty()) {
        Messages(0, settings.quiet).Warning(InputName(task.input), picture.Damage());
    }
    StopIfInterrupted();
    MotionGuess guess = {};
    DegreeCosts costs;
    picture.Apply(
        [&](const PackedPixels& pixels) { guess = GuessMotion(pixels, task.output.empty() ? nullptr : &costs); });
    if (!task.output.empty()) {
        OutputFile output(task.output, settings.force);
        TryVips("its plot '" + task.output + "' cannot be written",
                [&] { WriteCostPlot(picture.Image(), guess, costs, output.Descriptor()); });
        StopIfInterrupted();
        output.Commit();
    }
    return guess;
}

/// The line to print; nothing, after an error message, where the picture failed.
std::string ResultLine(const Settings& settings, const Task& task) {
    try {
        if (!task.problem.empty()) {
            throw PictureError(task.problem);
        }
        const MotionGuess guess = GuessAndPlot(settings, task);
        const std::string name = settings.inputs.size() > 1 ? Printable(task.input) + ": " : "";
        return (settings.json ? JsonOf(task.input, guess) : name + TextOf(guess)) + '\n';
    } catch (const std::bad_alloc&) {
        Messages().Error(InputName(task.input), "memory ran out; free some");
    } catch (const std::exception& error) {
        Messages().Error(InputName(task.input), error.what());
    }
    return {};
}

int PrintMotionGuesses(const Settings& settings) {
    if (!settings.output.empty() && settings.inputs.size() > 1) {
        throw UsageError("guess-motion: --plot draws one picture; give one, or leave --plot out");
    }
    const Plan plan = settings.output.empty() ? PlanReading(settings) : PlanOutput(settings, "--plot");
    PicturesAtOnce(1);
    bool all = true;
    try {
        for (const Task& task : plan.tasks) {
            const std::string line = ResultLine(settings, task);
            all = all && !line.empty();
            PrintOut(line);
        }
    } catch (const Interrupted&) {
        return kExitInterrupted;
    }
    return all ? kExitDone : kExitPictureFailed;
}

} // namespace

Verb GuessMotionVerb() {
    return {"guess-motion",
            "guess in which direction pictures are smeared, from their busiest part",
            {Inputs(),
             {"--json", "", "print a JSON object a picture instead of text", &Settings::json},
             {"--plot", "FILE.png",
              "draw how badly each direction predicts the pixels, over the part that was looked at; for one picture",
              FileName{&Settings::output, ".png"}},
             {"--force", "", "replace an existing plot, though never the picture read", &Settings::force},
             Quiet(),
             Help()},
            PrintMotionGuesses};
}

} // namespace cli
