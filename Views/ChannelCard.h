#pragma once

#include "Models/Channel.h"
#include "UI/FlatButton.h"

namespace mossbit {

class ProjectViewModel;
class VolumeBar;

/// One channel: its name, mute button and volume. A click anywhere else on it selects the channel.
class ChannelCard : public FlatButton {
public:
    ChannelCard(ProjectViewModel& vm, int index, QWidget* parent = nullptr);

    FlatButton& muteButton() const { return *m_mute; }
    VolumeBar& volumeBar() const { return *m_volume; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void showProject();
    QString volumeText() const;

    ProjectViewModel& m_vm;
    const int m_index;
    const ChannelKind m_kind;
    // What is on the screen.
    std::int64_t m_shownVolume = -1;
    bool m_isShownMuted = false;
    FlatButton* m_mute;
    VolumeBar* m_volume;
};

} // namespace mossbit
