// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/MessageWindow.h"

#include "display/images/PictureProvider.h"
#include "display/view/Theme.h"
#include <core/base/connect.h>
#include <core/records/enumerations.h>

#include <QGuiApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QQmlContext>
#include <QQmlNetworkAccessManagerFactory>
#include <QScreen>
#include <QTimer>

namespace {
constexpr qreal maxHeightOfScreen = 0.9;

/// Of a message that does not have the whole screen. About a dozen lines of text; the others are scrolled to.
constexpr int maxHeightInLetters = 20;
constexpr int fullscreenWidthInLetters = 44;

/// How long a window is on the screen without a picture, at most.
constexpr int maxWaitMs = 200;

QUrl themeUrl(const QString &theme)
{
    return Palette::names().contains(theme) ? Theme::builtIn() : QUrl::fromLocalFile(theme);
}

bool isUrgent(int priority)
{
    return priority >= TavoNotificationItemPriority::Urgent;
}

/// Refuses every request: neither a message nor a theme shall fetch anything.
class NoNetwork : public QNetworkAccessManager
{
public:
    using QNetworkAccessManager::QNetworkAccessManager;

protected:
    QNetworkReply *createRequest(Operation operation, const QNetworkRequest &request,
                                 QIODevice *data) override
    {
        QNetworkRequest nowhere(request);
        nowhere.setUrl(QUrl(QStringLiteral("data:,")));
        return QNetworkAccessManager::createRequest(operation, nowhere, data);
    }
};

class NoNetworkFactory : public QQmlNetworkAccessManagerFactory
{
public:
    QNetworkAccessManager *create(QObject *parent) override { return new NoNetwork(parent); }
};

NoNetworkFactory s_noNetwork;
} // namespace

MessageWindow::MessageWindow(ShownMessage *message, QObject *parent)
    : QObject(parent)
    , m_message(*message)
    , m_placement(Placement::create())
    , m_look(*message)
    , m_pictures(new PictureProvider)
    , m_screenReaders([this] { announce(); })
{
    m_engine.addImageProvider(QStringLiteral("tavo"), m_pictures);
    m_engine.setNetworkAccessManagerFactory(&s_noNetwork);
    m_engine.rootContext()->setContextProperty(QStringLiteral("message"), message);
    m_engine.rootContext()->setContextProperty(QStringLiteral("look"), &m_look);
    // Of the built-in look, only icons that are missing would be reported.
    m_engine.setOutputWarningsToStandardError(false);
    m_recreateTimer.setSingleShot(true);
    tavoConnect(&m_recreateTimer, &QTimer::timeout, this, &MessageWindow::recreate);
    m_expectedTimer.setSingleShot(true);
    m_expectedTimer.setInterval(maxWaitMs);
    tavoConnect(&m_expectedTimer, &QTimer::timeout, this, &MessageWindow::recreate);
    tavoConnect(&m_engine, &QQmlEngine::warnings, this, &MessageWindow::on_engine_warnings);
    tavoConnect(message, &ShownMessage::ended, this, [this] { m_screenReaders.end(); });
    tavoConnect(message, &ShownMessage::expected, this, &MessageWindow::on_message_expected);
    tavoConnect(message, &ShownMessage::shown, this, &MessageWindow::on_message_shown);
    tavoConnect(message, &ShownMessage::completed, this, [this] { announce(); });
    tavoConnect(message, &ShownMessage::pictureChanged, this,
                &MessageWindow::on_message_pictureChanged);
    tavoConnect(message, &ShownMessage::hidden, this, &MessageWindow::on_message_hidden);
    for (const auto changed : {&QGuiApplication::screenAdded, &QGuiApplication::screenRemoved,
                               &QGuiApplication::primaryScreenChanged}) {
        tavoConnect(qGuiApp, changed, this, &MessageWindow::on_screens_changed);
    }
    // While the first replies of the bus are on their way.
    QTimer::singleShot(0, this, &MessageWindow::prepareWindow);
}

MessageWindow::~MessageWindow()
{
    destroyWindow();
}

void MessageWindow::setConfiguration(const DisplayConfiguration &configuration)
{
    m_configuration = configuration;
    if (!configuration.focusKey.isEmpty() && !m_focusKey) {
        m_focusKey = FocusKey::create();
    }
    if (m_placement->isWholeScreen()) {
        m_configuration.mode = DisplayConfiguration::Mode::Fullscreen;
    }
    m_pictures->setIconTheme(configuration.iconTheme);
    m_look.setConfiguration(m_configuration);
    if (m_window) {
        recreate();
    }
}

/// An X server is asked twice before a window is on the screen, which takes as long as the message.
void MessageWindow::on_message_expected()
{
    if (!m_window) {
        return;
    }
    putOnScreen();
    m_expectedTimer.start();
}

/// Nothing is drawn before there is a message.
bool MessageWindow::eventFilter(QObject *watched, QEvent *event)
{
    const bool draws = event->type() == QEvent::Expose || event->type() == QEvent::UpdateRequest;
    return (draws && !m_message.isShown()) || QObject::eventFilter(watched, event);
}

void MessageWindow::on_message_shown()
{
    m_expectedTimer.stop();
    if (m_window && m_placement->dependsOnUrgency() &&
        m_wasUrgent != isUrgent(m_message.priority())) {
        destroyWindow();
    }
    if (!m_isOpen) {
        show();
    } else if (m_placement->canResize()) {
        place();
    }
    if (QQuickItem *button = m_card->scopedFocusItem()) {
        button->setFocus(false); // It belonged to another message.
    }
}

/// To show it again is faster than to make a new one, which also has to draw everything anew.
void MessageWindow::on_message_hidden()
{
    const bool isFullscreen = m_configuration.mode == DisplayConfiguration::Mode::Fullscreen;
    if (!m_isOpen || !m_placement->canHide() || isFullscreen) {
        recreate();
        return;
    }
    endFocus();
    m_isOpen = false;
    m_window->setVisible(false);
}

void MessageWindow::on_message_pictureChanged(const Picture &picture)
{
    m_pictures->setPicture(picture);
}

/// The height may change several times while the items of a new message are laid out.
void MessageWindow::on_card_implicitHeightChanged()
{
    if (!m_isOpen) {
        return;
    }
    if (m_placement->canResize()) {
        place();
    } else {
        m_recreateTimer.start();
    }
}

void MessageWindow::recreate()
{
    destroyWindow();
    if (m_message.isShown()) {
        show();
    } else {
        prepareWindow();
    }
}

/// One change of the screens may be reported more than once.
void MessageWindow::on_screens_changed()
{
    m_recreateTimer.start();
}

void MessageWindow::on_engine_warnings(const QList<QQmlError> &warnings)
{
    for (const QQmlError &warning : warnings) {
        if (warning.url().isLocalFile() && m_look.problem().isEmpty()) {
            reportTheme(warning.toString());
        }
    }
}

void MessageWindow::loadTheme()
{
    const QScreen *screen = findScreen(m_configuration);
    if (screen == nullptr || (m_card && m_loadedTheme == m_configuration.theme)) {
        return;
    }
    measure(*screen); // Without it, a look has no height.
    m_loadedTheme = m_configuration.theme;
    m_look.setProblem({});
    auto card = Theme::load(m_engine, themeUrl(m_configuration.theme));
    if (const auto *failure = std::get_if<Failure>(&card)) {
        reportTheme(failure->reason);
        card = Theme::load(m_engine, Theme::builtIn());
    }
    if (const auto *failure = std::get_if<Failure>(&card)) {
        qFatal("%s", qUtf8Printable(failure->reason));
    }
    m_card = std::move(std::get<std::unique_ptr<QQuickItem>>(card));
    // Gets the keys when the button that had them has gone with its message.
    m_card->setFlag(QQuickItem::ItemIsFocusScope);
    tavoConnect(m_card.get(), &QQuickItem::implicitHeightChanged, this,
                &MessageWindow::on_card_implicitHeightChanged);
}

/// An X server is asked several times for a new window, so the one of the next message is made before that
/// comes.
void MessageWindow::prepareWindow()
{
    loadTheme();
    if (m_window || m_placement->isWholeScreen() || !m_placement->canResize()) {
        return; // The first size of the window must be the right one.
    }
    if (makeWindow(m_message.priority())) {
        place(); // as for the last message, whose size may be that of the next one
        m_window->create();
    }
}

void MessageWindow::reportTheme(const QString &problem)
{
    qWarning("The theme is broken: %s", qUtf8Printable(problem));
    m_look.setProblem(tr("The theme is broken: %1").arg(problem));
}

bool MessageWindow::makeWindow(int priority)
{
    QScreen *screen = findScreen(m_configuration);
    if (screen == nullptr) {
        return false; // until there is one
    }
    m_wasUrgent = isUrgent(priority);
    m_window = std::make_unique<QQuickWindow>();
    m_window->setScreen(screen);
    m_window->setTitle(QStringLiteral("Tavo"));
    m_window->installEventFilter(this);
    ScreenReaders::follow(m_window.get());
    m_placement->prepare(*m_window, m_configuration, m_wasUrgent);
    followScreen(screen);
    loadTheme();
    return true;
}

void MessageWindow::show()
{
    if (!m_window && !makeWindow(m_message.priority())) {
        return;
    }
    m_card->setParentItem(m_window->contentItem());
    m_card->setFocus(true); // For keys that no button handles.
    place();
    m_isOpen = true;
    putOnScreen();
    draw();
    if (m_focusKey) {
        m_focusKey->follow(QKeySequence(m_configuration.focusKey), m_window.get());
    }
}

void MessageWindow::putOnScreen()
{
    if (m_placement->canHide()) {
        m_window->raise(); // Others may have come in front of it while it was hidden.
    }
    m_window->setVisible(true); // Keeps the state that the placement has set.
}

/// A window that has been put on the screen before the message came is drawn as a whole, even if the message is the
/// same as the last one. One that gets another size is drawn when it has it.
void MessageWindow::draw()
{
    if (!m_window->isExposed() || m_window->size() != m_card->size().toSize()) {
        return;
    }
    QExposeEvent exposed(QRect(QPoint(), m_window->size()));
    QCoreApplication::sendEvent(m_window.get(), &exposed);
}

void MessageWindow::endFocus()
{
    if (m_focusKey) {
        m_focusKey->follow({}, nullptr);
    }
}

/// A window that has been destroyed on the platform takes nothing, not even memory.
void MessageWindow::destroyWindow()
{
    m_recreateTimer.stop();
    m_expectedTimer.stop();
    endFocus();
    m_isOpen = false;
    if (m_card) {
        m_card->setParentItem(nullptr);
    }
    if (m_screen) {
        m_screen->disconnect(this);
    }
    ScreenReaders::destroy(std::move(m_window));
}

void MessageWindow::followScreen(QScreen *screen)
{
    m_screen = screen;
    tavoConnect(screen, &QScreen::availableGeometryChanged, this,
                &MessageWindow::on_card_implicitHeightChanged);
    tavoConnect(screen, &QScreen::logicalDotsPerInchChanged, this,
                &MessageWindow::on_card_implicitHeightChanged);
}

void MessageWindow::measure(const QScreen &screen)
{
    const int height = screen.availableGeometry().height();
    qreal max = qMin(height * maxHeightOfScreen, qreal(height - 2 * m_configuration.margin));
    if (m_configuration.mode != DisplayConfiguration::Mode::Fullscreen) {
        max = qMin(max, qreal(m_configuration.textSize * maxHeightInLetters));
    }
    m_look.setScreen(max, screen.devicePixelRatio());
}

void MessageWindow::place()
{
    if (!m_screen) {
        return;
    }
    const bool isFullscreen = m_configuration.mode == DisplayConfiguration::Mode::Fullscreen;
    const QRect area = isFullscreen ? m_screen->geometry() : m_screen->availableGeometry();
    measure(*m_screen);
    const int width = isFullscreen ? qMin(int(area.width() * maxHeightOfScreen),
                                          m_configuration.textSize * fullscreenWidthInLetters)
                                   : placedAt(m_configuration, area, 0, false).width();
    m_card->setWidth(width);
    const int height = qMax(1, qRound(m_card->implicitHeight()));
    m_card->setHeight(height);
    if (isFullscreen) {
        m_card->setPosition(QPoint((area.width() - width) / 2, (area.height() - height) / 2));
    } else {
        m_card->setPosition({});
    }
    m_window->setColor(m_look.palette().backdrop);
    m_placement->place(*m_window, m_configuration, area, height);
}

void MessageWindow::announce()
{
    if (m_window && m_message.isShown()) {
        m_screenReaders.announce(m_card.get());
    }
}
