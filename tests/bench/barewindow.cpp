// SPDX-License-Identifier: GPL-3.0-or-later
// An empty window, the least that a program of this toolkit costs. startup.py compares with it.
#include <QApplication>
#include <QWidget>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("bare window"));
    window.resize(1000, 700);
    window.show();
    return QApplication::exec();
}
