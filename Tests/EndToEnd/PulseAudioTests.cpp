#include "Platform/SdlAudioOutput.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SoundCheck.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>

namespace mossbit {
namespace {

using namespace std::chrono_literals;

/// A PulseAudio server of the test's own in a scratch home, whose one device records what it is
/// given.
class SoundServer {
public:
    SoundServer() {
        qputenv("PULSE_SERVER", "unix:" + m_socket.toUtf8());
        for (const char* variable : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
            setenv(variable, m_home.path().c_str(), 1);
        for (const char* variable : {"PULSE_RUNTIME_PATH", "PULSE_STATE_PATH", "PULSE_CONFIG_PATH",
                                     "DBUS_SESSION_BUS_ADDRESS"})
            unsetenv(variable);
        setenv("SDL_AUDIODRIVER", "pulseaudio", 1);
        m_recorder.setStandardOutputFile(QString::fromStdString(m_recording));
    }

    ~SoundServer() { kill(); }

    /// False if the server or its recorder does not come up.
    bool start() {
        QFile::remove(m_socket);
        m_server.start("pulseaudio",
                       {"-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
                        "--realtime=yes", "--high-priority=yes", "--log-target=null", "-L",
                        "module-native-protocol-unix auth-anonymous=1 socket=" + m_socket});
        return waitUntil([] { return pactl({"info"}); }) && addDevice();
    }

    bool addDevice() {
        // Without norewinds the first stream stalls for a second; without the format the server
        // would round.
        const bool isAdded = pactl({"load-module", "module-null-sink", "sink_name=out",
                                    "rate=48000", "format=float32le", "channels=2", "norewinds=1"});
        m_recorder.start("parec", {"-d", "out.monitor", "--rate=48000", "--format=float32le",
                                   "--channels=2", "--latency-msec=20", "--raw"});
        return isAdded && waitUntil([&] { return !bytesOf(m_recording).empty(); });
    }

    void removeDevice() {
        EXPECT_TRUE(pactl({"unload-module", "module-null-sink"}));
        end(m_recorder);
    }

    /// ALSA, with a device that plays to nowhere.
    void addOtherSystem() { putBytes(m_home / ".asoundrc", "pcm.!default { type null }"); }

    void send(int signal) { ::kill(static_cast<pid_t>(m_server.processId()), signal); }

    void kill() {
        end(m_server);
        end(m_recorder);
    }

    /// Waits until the device is given more than silence; false if it is not.
    bool waitForSound() const {
        return waitUntil([&] { return !recording().empty(); });
    }

    std::vector<float> recording() const { return readRecording(m_recording); }

private:
    static bool pactl(const QStringList& command) {
        QProcess process;
        process.start("pactl", command);
        process.waitForFinished();
        return process.exitCode() == 0;
    }

    static void end(QProcess& process) {
        process.kill();
        process.waitForFinished();
    }

    const ScratchFolder m_home;
    const QString m_socket = QString::fromStdString(m_home / "native");
    const std::filesystem::path m_recording = m_home / "recording.raw";
    QProcess m_server;
    QProcess m_recorder;
};

struct PulseAudio : testing::Test {
    void SetUp() override {
        ASSERT_TRUE(hasStarted);
        EXPECT_EQ(output->sampleRate(), 48000);
        output->setSource(48000, sound.source());
        ASSERT_EQ(startFailure(*output), "");
        ASSERT_TRUE(sound.waitFor(24'000));
    }

    CountingSource sound;
    SoundServer server;
    const bool hasStarted = server.start();
    const std::shared_ptr<AudioOutput> output = sdlAudioOutput();
};

TEST_F(PulseAudio, PlaybackGoesOnWhenTheDeviceComesBack) {
    for (const bool serverDies : {true, false, true, false}) {
        const float before = CountingSource::sampleAt(sound.frames());
        serverDies ? server.kill() : server.removeDevice();
        EXPECT_TRUE(output->isRunning());
        // Long enough to look for a device on a server that has none, which SDL alone would not
        // survive.
        if (!serverDies)
            std::this_thread::sleep_for(700ms);
        ASSERT_TRUE(serverDies ? server.start() : server.addDevice());
        ASSERT_TRUE(sound.waitFor(24'000));
        ASSERT_TRUE(server.waitForSound());
        const std::vector<float> recording = server.recording();
        EXPECT_GT(recording.front(), before);
        EXPECT_TRUE(std::ranges::is_sorted(recording, std::less_equal()));
        EXPECT_TRUE(output->isRunning());
    }
    output->stop();
    EXPECT_FALSE(output->isRunning());
}

TEST_F(PulseAudio, PlaybackEndsWhileTheServerStaysAway) {
    server.kill();
    EXPECT_TRUE(waitUntil([&] { return !output->isRunning(); }));
    output->stop();
    EXPECT_NE(startFailure(*output), "");
    ASSERT_TRUE(server.start());
    ASSERT_EQ(startFailure(*output), "");
    ASSERT_TRUE(sound.waitFor(1));
    // Nothing plays now, but the device is still open.
    output->stop();
    server.kill();
    ASSERT_TRUE(server.start());
    ASSERT_EQ(startFailure(*output), "");
    EXPECT_TRUE(server.waitForSound());
}

TEST_F(PulseAudio, EveryStartGoesToWhatIsTheDefaultByThen) {
    output->stop();
    unsetenv("SDL_AUDIODRIVER");
    server.addOtherSystem();
    ASSERT_EQ(startFailure(*output), "");
    server.kill();
    // Long enough for the loss to be seen; at first, a recovery tries the lost system only.
    std::this_thread::sleep_for(700ms);
    output->stop();
    EXPECT_EQ(startFailure(*output), "");
    output->stop();
    ASSERT_TRUE(server.start());
    // Until the other system is let go.
    std::this_thread::sleep_for(4s);
    EXPECT_EQ(startFailure(*output), "");
    EXPECT_TRUE(server.waitForSound());
}

TEST_F(PulseAudio, DoesNotHangWithTheServer) {
    server.send(SIGSTOP);
    EXPECT_TRUE(waitUntil([&] { return !output->isRunning(); }));
    output->stop();
    EXPECT_EQ(startFailure(*output), "The sound system does not answer");
    server.send(SIGCONT);
    EXPECT_EQ(startFailure(*output), "");
    EXPECT_TRUE(sound.waitFor(24'000));
}

} // namespace
} // namespace mossbit
