#include "Services/ProjectJson.h"
#include "Services/ProjectStore.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>

namespace {

using namespace mossbit;

void require(bool condition, std::string_view what) {
    if (condition)
        return;
    std::cerr << "Not so: " << what << std::endl;
    std::abort();
}

void requireLimits(const Project& project) {
    require(std::clamp(project.tempo, lowestTempo, highestTempo) == project.tempo,
            "the tempo is within limits");
    require(std::count(allBarCounts.begin(), allBarCounts.end(), project.bars) == 1,
            "the bar count is one of the known");
    require(project.channels.size() == allChannelKinds.size(), "there are four channels");
    for (std::size_t i = 0; i < project.channels.size(); ++i) {
        const Channel& channel = project.channels[i];
        require(channel.kind == allChannelKinds[i], "the channels are in their order");
        require(channel.volume >= 0 && channel.volume <= highestVolume,
                "the volume is within limits");
    }
    Project clamped = project;
    clamped.clampNotes();
    require(clamped == project, "the notes are inside");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Project project;
    try {
        project = decodeProject({reinterpret_cast<const char*>(data), size});
    } catch (const DecodingError& error) {
        require(error.what()[0] != '\0', "a refusal has a description");
        return 0;
    }
    requireLimits(project);
    const std::string written = ProjectStore::encode(project);
    require(decodeProject(written) == project, "a written project reads back equal");
    return 0;
}
