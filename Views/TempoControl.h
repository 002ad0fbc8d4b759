#pragma once

#include "ViewModels/ProjectViewModel.h"

#include <QWidget>

class QLineEdit;

namespace mossbit {

class TempoNumber;

/// The tempo with buttons for one more or less; a click on it opens the entry field. Whatever was
/// typed counts when the field is left or Return is pressed, if it is a whole number.
class TempoControl : public QWidget {
    Q_OBJECT

public:
    explicit TempoControl(ProjectViewModel& vm, QWidget* parent = nullptr);
    ~TempoControl() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void showProject();
    void fillField();
    bool editingTempo() const;
    void beginEditing();
    void commitTempo();
    void followFocus(const QWidget* before, const QWidget* widget);
    void close();

    ProjectViewModel& m_vm;
    bool m_openedByKeyboard = false;
    TempoNumber* m_number = nullptr;
    QLineEdit* m_field = nullptr;
};

} // namespace mossbit
