// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// An empty window of Qt Gui, with which the start and the memory of tavo-display are compared.

#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>

namespace {
class EmptyWindow : public QRasterWindow
{
protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter(this).fillRect(QRect(QPoint(), size()), Qt::white);
    }
};
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    const QGuiApplication application(argc, argv);
    EmptyWindow window;
    window.resize(420, 120);
    window.show();
    return QGuiApplication::exec();
}
