// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/SideWindow.h"

#include "display/view/ScreenReaders.h"
#include "display/view/Theme.h"
#include <core/base/connect.h>

#include <QGuiApplication>
#include <QScreen>

SideWindow::SideWindow(QQmlEngine &engine, Kind kind, const QUrl &file, QObject *parent)
    : QObject(parent)
    , m_engine(engine)
    , m_kind(kind)
    , m_file(file)
    , m_placement(Placement::create())
{
    for (const auto changed : {&QGuiApplication::screenAdded, &QGuiApplication::screenRemoved,
                               &QGuiApplication::primaryScreenChanged}) {
        tavoConnect(qGuiApp, changed, this, &SideWindow::on_screens_changed, Qt::QueuedConnection);
    }
}

SideWindow::~SideWindow()
{
    hide();
}

void SideWindow::setConfiguration(const DisplayConfiguration &configuration)
{
    m_configuration = configuration;
    if (m_kind == Kind::Mark) { // where no message is
        m_configuration.mode = DisplayConfiguration::Mode::Corner;
        m_configuration.isAtTop = !configuration.isAtTop;
    }
    on_screens_changed();
}

void SideWindow::show()
{
    QScreen *screen = findScreen(m_configuration);
    if (screen == nullptr || (m_kind == Kind::Mark && m_placement->isWholeScreen())) {
        return;
    }
    if (m_window) {
        m_window->requestActivate();
        return;
    }
    if (!m_item) {
        auto item = Theme::load(m_engine, m_file);
        if (const auto *failure = std::get_if<Failure>(&item)) {
            qFatal("%s", qUtf8Printable(failure->reason));
        }
        m_item = std::move(std::get<std::unique_ptr<QQuickItem>>(item));
        tavoConnect(m_item.get(), &QQuickItem::implicitWidthChanged, this,
                    &SideWindow::on_item_implicitWidthChanged);
    }
    m_window = std::make_unique<QQuickWindow>();
    m_window->setScreen(screen);
    m_window->setTitle(QStringLiteral("Tavo"));
    ScreenReaders::follow(m_window.get());
    if (m_kind == Kind::Mark) {
        m_placement->prepare(*m_window, m_configuration, false);
    } else {
        m_placement->prepareView(*m_window);
    }
    m_item->setParentItem(m_window->contentItem());
    place();
    tavoConnect(m_window.get(), &QQuickWindow::widthChanged, m_item.get(),
                [this](int width) { m_item->setWidth(width); });
    tavoConnect(m_window.get(), &QQuickWindow::heightChanged, m_item.get(),
                [this](int height) { m_item->setHeight(height); });
    tavoConnect(m_window.get(), &QQuickWindow::visibleChanged, this, [this](bool isVisible) {
        if (!isVisible && m_window) {
            Q_EMIT closed();
        }
    });
    m_window->setVisible(true);
    if (m_kind == Kind::View) {
        m_window->requestActivate();
    }
}

void SideWindow::hide()
{
    if (m_item) {
        m_item->setParentItem(nullptr);
    }
    ScreenReaders::destroy(std::move(m_window)); // what it reports meanwhile finds no window
}

void SideWindow::on_screens_changed()
{
    if (isShown()) {
        hide();
        show();
    }
}

void SideWindow::on_item_implicitWidthChanged()
{
    if (m_placement->canResize()) {
        place();
    } else {
        QMetaObject::invokeMethod(this, &SideWindow::on_screens_changed, Qt::QueuedConnection);
    }
}

void SideWindow::place()
{
    if (!m_window) {
        return;
    }
    const QRect area = m_window->screen()->availableGeometry();
    if (m_kind == Kind::Mark) {
        m_configuration.width = qRound(m_item->implicitWidth());
        m_placement->place(*m_window, m_configuration, area, qRound(m_item->implicitHeight()));
    } else {
        constexpr int widthInLetters = 40;
        constexpr qreal share = 0.8; // of the screen
        m_placement->placeView(
            *m_window, area,
            QSize(qMin(widthInLetters * m_configuration.textSize, int(area.width() * share)),
                  int(area.height() * share)));
    }
    m_item->setSize(m_window->size());
}
