#include "Services/ProjectJson.h"
#include "Services/ProjectStore.h"

#undef NDEBUG
#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>

using namespace mossbit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Project project;
    try {
        project = decodeProject({reinterpret_cast<const char*>(data), size});
    } catch (const DecodingError& error) {
        assert(error.what()[0] != '\0');
        return 0;
    }
    assert(project.tempo >= lowestTempo && project.tempo <= highestTempo);
    assert(std::ranges::count(allBarCounts, project.bars) == 1);
    assert(std::ranges::equal(project.channels, allChannelKinds, {}, &Channel::kind));
    for (const Channel& channel : project.channels)
        assert(channel.volume >= 0 && channel.volume <= highestVolume);
    Project clamped = project;
    clamped.clampNotes();
    assert(clamped == project);
    assert(decodeProject(ProjectStore::encode(project)) == project);
    return 0;
}
