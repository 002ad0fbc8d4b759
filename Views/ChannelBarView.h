#pragma once

#include "ViewModels/ProjectViewModel.h"

#include <QWidget>

namespace mossbit {

class PixelCaption;
class PixelSegments;

/// The row under the cards with the setting that belongs to the selected channel's kind.
class ChannelInspector : public QWidget {
    Q_OBJECT

public:
    explicit ChannelInspector(ProjectViewModel& vm, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showProject();

    ProjectViewModel& m_vm;
    PixelCaption* m_title;
    /// Names the setting.
    PixelCaption* m_caption;
    PixelSegments* m_duty;
    PixelSegments* m_preset;
    QWidget* m_drums;
};

/// The song's channels side by side, and the selected one's setting.
class ChannelBarView : public QWidget {
    Q_OBJECT

public:
    explicit ChannelBarView(ProjectViewModel& vm, QWidget* parent = nullptr);
};

} // namespace mossbit
