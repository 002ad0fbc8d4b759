#pragma once

#include "Tests/Support/Process.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SoundCheck.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace mossbit {

/// A PulseAudio server of the test's own in a scratch home, whose one device records what it is
/// given.
class SoundServer {
public:
    SoundServer() {
        setenv("PULSE_SERVER", ("unix:" + socket()).c_str(), 1);
        for (const char* variable : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
            setenv(variable, m_home.path().c_str(), 1);
        for (const char* variable : {"PULSE_RUNTIME_PATH", "PULSE_STATE_PATH", "PULSE_CONFIG_PATH",
                                     "DBUS_SESSION_BUS_ADDRESS"})
            unsetenv(variable);
        setenv("SDL_AUDIODRIVER", "pulseaudio", 1);
    }

    /// False if the server or its recorder does not come up.
    bool start() {
        std::filesystem::remove(socket());
        m_server.emplace(std::vector<std::string>{
            "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
            "--realtime=yes", "--high-priority=yes", "--log-target=null", "-L",
            "module-native-protocol-unix auth-anonymous=1 socket=" + socket()});
        return waitUntil([] { return Process({"pactl", "info"}).wait() == 0; }) && addDevice();
    }

    bool addDevice() {
        // Without norewinds the first stream stalls for a second; without the format the server
        // would round.
        return Process({"pactl", "load-module", "module-null-sink", "sink_name=out", "rate=48000",
                        "format=float32le", "channels=2", "norewinds=1"})
                       .wait() == 0 &&
               record();
    }

    void removeDevice() {
        EXPECT_EQ(Process({"pactl", "unload-module", "module-null-sink"}).wait(), 0);
        m_recorder->kill();
    }

    /// ALSA, with a device that plays to nowhere.
    void addOtherSystem() { putBytes(m_home / ".asoundrc", "pcm.!default { type null }"); }

    void hang() { ::kill(m_server->id(), SIGSTOP); }
    void wakeUp() { ::kill(m_server->id(), SIGCONT); }

    void kill() {
        m_server->kill();
        m_recorder->kill();
    }

    /// Waits until the device is given more than silence; false if it is not.
    bool waitForSound() const {
        return waitUntil([&] { return !recording().empty(); });
    }

    std::vector<float> recording() const { return readRecording(m_home / "recording.raw"); }

private:
    std::string socket() const { return m_home / "native"; }

    bool record() {
        m_recorder.emplace(std::vector<std::string>{"parec", "-d", "out.monitor", "--rate=48000",
                                                    "--format=float32le", "--channels=2",
                                                    "--latency-msec=20", "--raw"},
                           m_home / "recording.raw");
        return waitUntil([&] { return !bytesOf(m_home / "recording.raw").empty(); });
    }

    const ScratchFolder m_home;
    std::optional<Process> m_server;
    std::optional<Process> m_recorder;
};

} // namespace mossbit
