#include "App/HelpMenu.h"

#include "App/FilePaths.h"
#include "ViewModels/ProjectViewModel.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

namespace mossbit {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("HelpMenu", text);
}

/// The songs that come with the program, wherever that stands: in a build, in an installation, or
/// beside a bundle.
QFileInfoList exampleFiles() {
    const QDir here(QCoreApplication::applicationDirPath());
    for (const char* folder : {"Examples", "../share/mossbit/examples", "../../../Examples"}) {
        const QDir examples(here.filePath(folder));
        if (examples.exists())
            return examples.entryInfoList({"*.mossbit"}, QDir::Files, QDir::Name);
    }
    return {};
}

/// "Acorn Dance" of acorn-dance.mossbit.
QString titleOf(const QFileInfo& file) {
    QStringList words = file.completeBaseName().split('-');
    for (QString& word : words)
        word.replace(0, 1, word.left(1).toUpper());
    return words.join(' ');
}

void addExamples(QMenu& menu, ProjectViewModel& vm) {
    for (const QFileInfo& file : exampleFiles())
        menu.addAction(titleOf(file), &vm,
                       [&vm, path = toPath(file.filePath())] { vm.openCopy(path); });
    menu.setEnabled(!menu.isEmpty());
}

/// Shows a box with the program's icon and a button that closes it.
void showBox(QMainWindow& window, const QString& title, const QString& text,
             const QString& details) {
    auto* const box = new QMessageBox(&window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(title);
    box->setIconPixmap(window.windowIcon().pixmap(64));
    box->setText(text);
    box->setInformativeText(details);
    box->open();
}

void showMouseAndKeys(QMainWindow& window) {
    QString rows;
    const auto addRow = [&rows](const QString& what, const QString& how) {
        rows += QStringLiteral("<tr><td>%1&nbsp;&nbsp;&nbsp;&nbsp;</td><td>%2</td></tr>")
                    .arg(what.toHtmlEscaped(), how.toHtmlEscaped());
    };
    addRow(tr("Add a note"), tr("click the grid; drag for a longer one"));
    addRow(tr("Move a note"), tr("drag it"));
    addRow(tr("Stretch a note"), tr("drag its right end"));
    addRow(tr("Delete a note"), tr("right-click it, or Ctrl+click"));
    addRow(tr("Scroll"), tr("wheel, Shift+wheel, middle button"));
    rows += QStringLiteral("<tr><td>&nbsp;</td></tr>");
    for (const QAction* menu : window.menuBar()->actions())
        for (const QAction* action : menu->menu()->actions())
            if (!action->shortcuts().isEmpty())
                addRow(action->text(),
                       QKeySequence::listToString(action->shortcuts(), QKeySequence::NativeText)
                           .replace("; ", ", "));
    showBox(window, tr("Mouse and Keys"), QStringLiteral("<table>%1</table>").arg(rows), {});
}

void showAbout(QMainWindow& window) {
    showBox(window, tr("About Mossbit"),
            tr("Mossbit %1").arg(QCoreApplication::applicationVersion()),
            tr("Chip music on a piano roll.\n\n"
               "© 2026 The Mossbit developers\n"
               "Free software under the MIT License,\nwithout any warranty."));
}

} // namespace

void fillHelpMenu(QMenu& menu, ProjectViewModel& vm, QMainWindow& window) {
    menu.addAction(tr("Mouse and Keys"), &window, [&window] { showMouseAndKeys(window); });
    addExamples(*menu.addMenu(tr("Open Example")), vm);
    menu.addSeparator();
    menu.addAction(tr("About Mossbit"), &window, [&window] { showAbout(window); })
        ->setMenuRole(QAction::AboutRole);
}

} // namespace mossbit
