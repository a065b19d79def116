// The verb `info`: the version, what the library found out about the processor, and the classes of code in force.
#include "Errors.h"
#include "EveryVerb.h"
#include "StandardOutput.h"

// The command is linked against the library's inner archive for this: a host sees only the exported surface.
#include "dft/dispatch/dft_dispatch.h"
#include "processor/KernelMembers.h"
#include "processor/ProcessorCensus.h"
#include "simd/VectorClass.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace cli {
namespace {

using Json = nlohmann::ordered_json;

/// One thing known of library or processor.
struct InfoRow {
    const char* label; ///< in the text
    const char* key;   ///< in the JSON object
    Json value;        ///< null where it is not known; an array holds strings
};

std::string WithoutBlanksAtEnd(std::string_view text) {
    return std::string(text.substr(0, text.find_last_not_of(' ') + 1));
}

Json KnownIf(bool known, const Json& value) {
    return known ? value : Json();
}

Json Flags() {
    const processor::CensusResults& results = processor::MachineResults;
    Json flags = Json::array();
    const auto add = [&](std::uint32_t flag, const char* name) {
        if (flag != 0) {
            flags.push_back(name);
        }
    };
    add(ProcessorHasMMX(), "MMX");
    add(ProcessorHasSSE(), "SSE");
    add(ProcessorHasSSE2(), "SSE2");
    add(results.hasSSE3, "SSE3");
    add(results.hasMonitor, "MONITOR");
    add(results.has3DNow, "3DNow");
    add(results.has3DNowExtensions, "3DNow extensions");
    return flags;
}

std::vector<InfoRow> Rows() {
    const processor::CensusResults& results = processor::MachineResults;
    const std::string name = WithoutBlanksAtEnd(ProcessorName);
    return {
        {"claribox", "version", CLARIBOX_VERSION},
        {"vendor", "vendor", ProcessorVendor},
        {"name", "name", KnownIf(!name.empty(), name)},
        {"family", "family", results.family},
        {"model", "model", results.model},
        {"stepping", "stepping", results.stepping},
        {"clock in MHz", "megahertz", KnownIf(ProcessorMHz != 0, ProcessorMHz)},
        {"flags", "flags", Flags()},
        {"processor packages", "packages", KnownIf(CensusPackages >= 0, CensusPackages)},
        {"cores per package", "cores_per_package", CensusCoresPerPackage},
        {"threads per core", "threads_per_core", CensusThreadsPerCore},
        {"status", "status", processor::HyperThreadingTexts[ProcessorHTStatus]},
        {"kernel class", "kernel_class", ProcessorClassName(ActiveProcessorClass())},
        {"vector class", "vector_class", simd::Name(simd::ActiveVectorClass())},
        {"DFT variant", "dft_variant", dft::dft_tuning().name},
    };
}

std::string TextOf(const Json& value) {
    if (value.is_null()) {
        return "unknown";
    }
    if (!value.is_array()) {
        return value.is_string() ? value.get<std::string>() : value.dump();
    }
    std::string text;
    for (const Json& item : value) {
        text += (text.empty() ? "" : ", ") + item.get<std::string>();
    }
    return text.empty() ? "none" : text;
}

std::string AsText(const std::vector<InfoRow>& rows) {
    std::string text;
    for (const InfoRow& row : rows) {
        std::string label = row.label;
        label.resize(22, ' ');
        text += label + TextOf(row.value) + '\n';
    }
    return text;
}

std::string AsJson(const std::vector<InfoRow>& rows) {
    Json object;
    for (const InfoRow& row : rows) {
        object[row.key] = row.value;
    }
    // Vendor and name are the processor's own bytes, which need not be UTF-8 as JSON has to be.
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

int PrintInfo(const Settings& settings) {
    const std::vector<InfoRow> rows = Rows();
    PrintOut(settings.json ? AsJson(rows) : AsText(rows));
    return kExitDone;
}

} // namespace

Verb InfoVerb() {
    return {"info",
            "print the version and what is known of the processor",
            {{"--json", "", "print a JSON object instead of text", &Settings::json}, Help()},
            PrintInfo};
}

} // namespace cli
