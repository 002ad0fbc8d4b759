#pragma once

#include "ViewModels/ProjectViewModel.h"

#include <QLineEdit>

namespace mossbit {

class PixelButton;

/// The entry field for a tempo. It leaves the menus their keys, and does not take an open menu or
/// an inactive window for the end of the entry.
class TempoField : public QLineEdit {
    Q_OBJECT

public:
    explicit TempoField(QWidget* parent = nullptr);

Q_SIGNALS:
    void left();
    void cancelled();

protected:
    bool event(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

/// The tempo with buttons for one more or less; a click on it opens the entry field. Whatever was
/// typed counts when the field is left or Return is pressed, if it is a whole number.
class TempoControl : public QWidget {
    Q_OBJECT

public:
    explicit TempoControl(ProjectViewModel& vm, QWidget* parent = nullptr);
    ~TempoControl() override;

Q_SIGNALS:
    /// The field has closed and has given the keyboard away.
    void keyboardReleased();

private:
    void showProject();
    void fillField();
    void beginEditing();
    void commitTempo();
    void commitIfLeftTo(const QWidget* widget);
    void close();

    ProjectViewModel& m_vm;
    bool m_editingTempo = false;
    std::int64_t m_tempo = 0;
    PixelButton* m_number = nullptr;
    TempoField* m_field = nullptr;
};

} // namespace mossbit
