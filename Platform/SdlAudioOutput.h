#pragma once

#include "Platform/AudioOutput.h"

#include <memory>

namespace mossbit {

/// The default sound device through SDL2, whose rate is asked for in the background.
///
/// A worker thread makes all calls that may be slow: a sound system that hangs delays the main
/// thread by two seconds at most. When the device is lost while playing, or asks for nothing for
/// two seconds, the worker looks for a new default device for a few seconds and goes on there at
/// the same rate; if none comes, `isRunning` turns false. A device that has been stopped for a few
/// seconds is closed; the next start goes to what is the default by then.
std::shared_ptr<AudioOutput> sdlAudioOutput();

} // namespace mossbit
