#include <QApplication>
#include <QLabel>

/// What any program of this toolkit takes to start: a window of Mossbit's size that is empty, or
/// shows the text that is its argument.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QLabel window;
    if (argc > 1)
        window.setText(QString::fromLocal8Bit(argv[1]));
    window.resize(1100, 720);
    window.show();
    return QApplication::exec();
}
