#pragma once

#include "Models/Channel.h"
#include "UI/PixelButton.h"

namespace mossbit {

class ProjectViewModel;
class VolumeBar;

/// One channel: its name, mute button and volume. A click anywhere else on it selects the channel.
class ChannelCard : public PixelButton {
public:
    ChannelCard(ProjectViewModel& vm, int index, QWidget* parent = nullptr);

    void draw(PixelPainter& pixels, const QRectF& face) const override;
    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showProject();
    void showVolume();
    const Channel& channel() const;
    QString volumeText() const;

    ProjectViewModel& m_vm;
    const int m_index;
    const ChannelKind m_kind;
    /// While it is not selected.
    QString m_toolTip;
    PixelButton* m_mute;
    VolumeBar* m_volume;
};

} // namespace mossbit
