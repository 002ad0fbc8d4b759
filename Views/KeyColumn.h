#pragma once

#include "Views/PianoRollGeometry.h"

#include <QWidget>

namespace mossbit {

/// The names of the piano roll's rows, beside its grid.
class KeyColumn : public QWidget {
public:
    KeyColumn(const PianoRollGeometry& geometry, QWidget* parent);

    /// Moves the rows; `offset` is how many points of them lie above the column.
    void setOffset(int offset);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const PianoRollGeometry& m_geometry;
    int m_offset = 0;
};

} // namespace mossbit
