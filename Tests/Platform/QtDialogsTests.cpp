#include "Platform/QtDialogs.h"

#include "UI/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProxyStyle>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <string>

namespace mossbit {
namespace {

/// Runs `action` on the dialog that comes up next.
template <typename Dialog>
void whenShown(std::function<void(Dialog&)> action) {
    QTimer::singleShot(0, qApp, [action = std::move(action)] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            return whenShown<Dialog>(action);
        action(*dialog);
    });
}

const Dialogs::Alert discardPrompt = {.message = "Save changes to <b>Song</b> & more?",
                                      .informativeText = "Your <i>changes</i> will be lost.",
                                      .buttons = {"Save", "Discard", "Cancel"}};

/// A desktop that arranges the buttons of dialogs in its own way.
struct Desktop : QProxyStyle {
    const int layout;

    explicit Desktop(int arrangement) : layout(arrangement) {}

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        return hint == SH_DialogButtonLayout ? layout
                                             : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

TEST(QtDialogs, AlertIsTheSameOnEveryDesktop) {
    const struct {
        QDialogButtonBox::ButtonLayout layout;
        std::function<void(QMessageBox&, QAbstractButton* second)> answer;
        std::size_t expected;
    } cases[] = {
        {QDialogButtonBox::WinLayout, [](auto&, auto* second) { second->click(); }, 1},
        {QDialogButtonBox::MacLayout,
         [](auto& box, auto*) { QTest::keyClick(&box, Qt::Key_Return); }, 0},
        {QDialogButtonBox::KdeLayout,
         [](auto& box, auto*) { QTest::keyClick(&box, Qt::Key_Escape); }, 2},
        {QDialogButtonBox::GnomeLayout, [](auto& box, auto*) { box.close(); }, 2},
    };
    for (const auto& c : cases) {
        QApplication::setStyle(new Desktop(c.layout));
        QtDialogs dialogs;
        QWidget window;
        dialogs.setParentWindow(&window);
        whenShown<QMessageBox>([&](QMessageBox& box) {
            EXPECT_EQ(box.parentWidget(), &window);
            for (QLabel* label : box.findChildren<QLabel*>())
                EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText);
            // From the left to the right.
            QList<QAbstractButton*> buttons = box.buttons();
            std::ranges::sort(buttons, {}, [](const auto* button) { return button->x(); });
            QStringList titles;
            for (const QAbstractButton* button : buttons)
                titles += button->text();
            EXPECT_EQ(titles, (QStringList{"Save", "Discard", "Cancel"}));
            c.answer(box, buttons[1]);
        });
        EXPECT_EQ(dialogs.runAlert(discardPrompt), c.expected) << c.layout;
    }
    applyTheme(*qApp);
}

/// Types a name into the save panel that comes up next.
void type(const QString& name) {
    whenShown<QFileDialog>([name](QFileDialog& panel) {
        auto* field = panel.findChild<QLineEdit*>("fileNameEdit");
        field->setText(name);
        QTest::keyClick(field, Qt::Key_Return);
    });
}

TEST(QtDialogs, SavePanelCompletesTheName) {
    const QTemporaryDir folder;
    // Longer than names can be, once it has the extension; for the write to report.
    const QString longName(250, 'a');
    const QString song = ".mossbit";
    const std::pair<QString, QString> names[] = {
        {"new", song},       {longName, song},     {"ä song.mossbit", ""}, {"old.JSON", ""},
        {"Dr.Mario", song},  {"song.v2", song},    {"take one.wav", song}, {"LOUD.MOSSBIT", ""},
        {"mix.final", song}, {"name v1.2 b", song}};
    for (const auto& [typed, extension] : names) {
        type(folder.filePath(typed));
        EXPECT_EQ(QtDialogs().runSavePanel(FileKind::project, "Untitled.mossbit"),
                  folder.filePath(typed + extension).toStdString());
    }
    type(folder.filePath("mix.final"));
    EXPECT_EQ(QtDialogs().runSavePanel(FileKind::wav, "Untitled.wav"),
              folder.filePath("mix.final.wav").toStdString());
}

TEST(QtDialogs, AsksOnceBeforeAFileIsReplaced) {
    const QTemporaryDir folder;
    const QString file = folder.filePath("song.mossbit");
    ASSERT_TRUE(QFile(file).open(QFile::WriteOnly));
    const auto replace = [](QMessageBox& box) {
        for (QAbstractButton* button : box.buttons())
            if (button->text() == "Replace")
                button->click();
    };
    const auto tryAgain = [&](QFileDialog& panel) {
        auto* field = panel.findChild<QLineEdit*>("fileNameEdit");
        EXPECT_EQ(field->text(), "song.mossbit");
        whenShown<QMessageBox>(replace);
        QTest::keyClick(field, Qt::Key_Return);
    };
    const auto cancel = [&](QMessageBox& box) {
        EXPECT_TRUE(box.text().contains("“song.mossbit”")) << box.text().toStdString();
        whenShown<QFileDialog>(tryAgain);
        QTest::keyClick(&box, Qt::Key_Escape);
    };
    for (const char* typed : {"song", "song.mossbit"}) {
        type(folder.filePath(typed));
        whenShown<QMessageBox>(cancel);
        EXPECT_EQ(QtDialogs().runSavePanel(FileKind::project, "Untitled.mossbit"),
                  file.toStdString());
    }
}

} // namespace
} // namespace mossbit
