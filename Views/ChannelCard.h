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

    ProjectViewModel& m_vm;
    const int m_index;
    /// What is on the screen.
    Channel m_channel;
    FlatButton* m_mute;
    VolumeBar* m_volume;
};

} // namespace mossbit
