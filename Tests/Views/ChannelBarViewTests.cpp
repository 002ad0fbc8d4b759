#include "Tests/Support/WindowHarness.h"
#include "UI/PixelSegments.h"
#include "UI/VolumeBar.h"
#include "Views/ChannelBarView.h"
#include "Views/ChannelCard.h"

#include <gtest/gtest.h>

namespace mossbit {
namespace {

TEST(ChannelBarView, SelectsTheCardThatIsClicked) {
    WindowHarness window;
    ChannelBarView& bar = window.view.channelBar();
    click(bar.card(2), {60, 60});
    EXPECT_EQ(window.vm->selectedChannelIndex(), 2);
    const QImage image = render(bar, 1);
    const auto expectColors = [&](std::size_t card, QColor face, QColor top, QColor border) {
        const QPointF corner = bar.card(card).pos();
        EXPECT_TRUE(isNear(colorAt(image, corner + QPointF(5, 40)), face)) << card;
        EXPECT_TRUE(isNear(colorAt(image, corner + QPointF(50, 1)), top)) << card;
        EXPECT_TRUE(isNear(colorAt(image, corner + QPointF(0, 40)), border)) << card;
    };
    const QColor accent = Palette::accent(ChannelKind::wave);
    expectColors(0, Palette::panel, Palette::panel, Palette::line);
    expectColors(2, Palette::background, accent,
                 over(Palette::background, withOpacity(accent, 0.6)));
}

TEST(ChannelBarView, MutesWithoutSelecting) {
    WindowHarness window;
    ChannelCard& card = window.view.channelBar().card(1);
    FlatButton& mute = card.muteButton();
    click(mute, {5, 5});
    EXPECT_TRUE(window.vm->project().channels[1].muted);
    EXPECT_EQ(window.vm->selectedChannelIndex(), 0);
    const QImage image = render(card, 1);
    EXPECT_EQ(colorAt(image, mute.pos()), QColor(242, 112, 122));
    const QColor dimmed = withOpacity(Palette::accent(ChannelKind::pulse2), 0.3);
    EXPECT_TRUE(isNear(colorAt(image, {14.0, mute.geometry().center().y() + 0.0}),
                       over(Palette::panel, dimmed)));
}

TEST(ChannelBarView, FollowsADragOnTheVolume) {
    WindowHarness window;
    VolumeBar& volume = window.view.channelBar().card(3).volumeBar();
    const double cell = volume.width() / 15.0;
    for (const auto& [cells, expected] : {std::pair{4.5, 5}, {0.0, 0}, {-3.0, 0}, {99.0, 15}}) {
        const auto type = expected == 5 ? QEvent::MouseButtonPress : QEvent::MouseMove;
        sendMouse(volume, type, {cells * cell, 5});
        EXPECT_EQ(window.vm->project().channels[3].volume, expected);
        EXPECT_EQ(volume.value(), expected);
    }
    EXPECT_EQ(window.vm->selectedChannelIndex(), 0);
}

TEST(ChannelInspector, OffersWhatTheSelectedChannelHas) {
    WindowHarness window;
    for (int channel = 0; channel < 4; ++channel) {
        window.vm->setSelectedChannelIndex(channel);
        EXPECT_EQ(window.control<PixelSegmentRow>("Duty").isVisible(), channel < 2) << channel;
        EXPECT_EQ(window.control<PixelSegmentRow>("Preset").isVisible(), channel == 2) << channel;
    }
    window.vm->setSelectedChannelIndex(1);
    auto& threeQuarters = window.control("Duty 75%");
    threeQuarters.click();
    EXPECT_EQ(window.vm->project().channels[1].duty, Duty::d75);
    EXPECT_EQ(colorAt(render(threeQuarters, 1), {2, 2}), Palette::accent(ChannelKind::pulse2));
    window.vm->setSelectedChannelIndex(2);
    window.control("Preset HOLLOW").click();
    EXPECT_EQ(window.vm->project().channels[2].wave, WavePreset::hollow);
}

} // namespace
} // namespace mossbit
