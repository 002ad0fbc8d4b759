#include "Tests/Support/WindowHarness.h"

#include <gtest/gtest.h>

namespace mossbit {
namespace {

TEST(ChannelBarView, SelectsTheCardThatIsClickedAndMutesWithoutSelecting) {
    WindowHarness window;
    const auto color = [&](const char* name, QPointF point) {
        return colorAt(render(window.control(name), 1), point);
    };
    const QColor cyan = Palette::accent(ChannelKind::pulse2);
    EXPECT_EQ(color("PULSE 2", {14, 20}), cyan);
    click(window.control("WAVE"), {60, 60});
    click(window.control("PULSE 2 mute"), {5, 5});
    EXPECT_EQ(window.vm->selectedChannelIndex(), 2);
    EXPECT_TRUE(window.vm->project().channels[1].muted);

    EXPECT_EQ(color("WAVE", {5, 40}), Palette::background);
    EXPECT_EQ(color("WAVE", {50, 1}), Palette::accent(ChannelKind::wave));
    EXPECT_EQ(color("PULSE 2", {5, 40}), Palette::panel);
    EXPECT_NE(color("PULSE 2", {14, 20}), cyan) << "dimmed";
    EXPECT_EQ(color("PULSE 2 mute", {0, 0}), Palette::accent(ChannelKind::noise));
    EXPECT_EQ(window.control("PULSE 2 mute").toolTip(), "Unmute");
}

TEST(ChannelBarView, FollowsADragOnTheVolume) {
    WindowHarness window;
    auto& volume = window.control<QAbstractSlider>("NOISE volume");
    const double cell = volume.width() / 15.0;
    QEvent::Type type = QEvent::MouseButtonPress;
    for (const auto& [cells, expected] :
         {std::pair{4.5, 5}, {0.01, 1}, {0.0, 0}, {-3.0, 0}, {99.0, 15}}) {
        sendMouse(volume, type, {cells * cell, 5});
        type = QEvent::MouseMove;
        EXPECT_EQ(window.vm->project().channels[3].volume, expected);
        const QImage image = render(volume, 1.25);
        for (int i = 0; i < 15; ++i)
            EXPECT_EQ(colorAt(image, {(i + 0.5) * cell, 5}),
                      i < expected ? Palette::accent(ChannelKind::noise) : QColor(Palette::line));
    }
    EXPECT_EQ(window.vm->selectedChannelIndex(), 0);
}

TEST(ChannelInspector, OffersWhatTheSelectedChannelHas) {
    WindowHarness window;
    for (int channel = 0; channel < 4; ++channel) {
        window.vm->setSelectedChannelIndex(channel);
        EXPECT_EQ(window.control<QWidget>("Duty").isVisible(), channel < 2) << channel;
        EXPECT_EQ(window.control<QWidget>("Preset").isVisible(), channel == 2) << channel;
    }
    window.vm->setSelectedChannelIndex(1);
    auto& duty = window.control<QWidget>("Duty");
    auto& threeQuarters = window.control("Duty 75%");
    threeQuarters.click();
    EXPECT_EQ(window.vm->project().channels[1].duty, Duty::d75);
    EXPECT_EQ(window.vm->project().channels[0].duty, Duty::d50);
    EXPECT_EQ(colorAt(render(duty, 1), threeQuarters.pos()), Palette::accent(ChannelKind::pulse2));
    window.vm->setSelectedChannelIndex(2);
    window.control("Preset HOLLOW").click();
    EXPECT_EQ(window.vm->project().channels[2].wave, WavePreset::hollow);
}

} // namespace
} // namespace mossbit
