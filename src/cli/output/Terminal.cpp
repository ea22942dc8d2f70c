// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/output/Terminal.h"

#include "base/Printable.h"

#include <QRegularExpression>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {
const char *code(Terminal::Style style)
{
    switch (style) {
    case Terminal::Style::Bold:
        return "1";
    case Terminal::Style::Faint:
        return "2";
    case Terminal::Style::Good:
        return "32";
    case Terminal::Style::Bad:
        return "31";
    case Terminal::Style::Notice:
        return "33";
    case Terminal::Style::Plain:
        break;
    }
    return "";
}

int columns()
{
    constexpr int usual = 80;
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : usual;
}
/// The text with everything that is unsafe to print escaped, except line feeds, tabs and styles.
QString guarded(const QString &text)
{
    if (isPrintable(text)) {
        return text;
    }
    static const QRegularExpression s_safe(QStringLiteral("\x1b\\[(?:0|1|2|31|32|33)m|[\n\t]"));
    QString result;
    int at = 0;
    for (auto matches = s_safe.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        result += printable(text.mid(at, match.capturedStart() - at)) + match.captured();
        at = match.capturedEnd();
    }
    return result + printable(text.mid(at));
}
} // namespace

Terminal::Terminal()
    : m_isTerminal(isatty(STDOUT_FILENO) == 1)
    , m_hasLive(m_isTerminal && isatty(STDERR_FILENO) == 1)
    , m_hasColours(m_isTerminal && qEnvironmentVariableIsEmpty("NO_COLOR") &&
                   qgetenv("TERM") != "dumb")
{
}

Terminal::~Terminal()
{
    endLive();
}

QString Terminal::styled(const QString &text, Style style) const
{
    if (!m_hasColours || style == Style::Plain) {
        return text;
    }
    return QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QLatin1String(code(style)), text);
}

void Terminal::print(const QString &text)
{
    write(guarded(text).toUtf8());
}

void Terminal::printJson(const QByteArray &json)
{
    write(json);
}

void Terminal::write(const QByteArray &line)
{
    endLive();
    std::fwrite(line.constData(), 1, std::size_t(line.size()), stdout);
    std::fputc('\n', stdout);
    if (m_isGood && (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)) {
        const int error = errno;
        m_isGood = false;
        printError(QStringLiteral("standard output can't be written: %1")
                       .arg(QString::fromLocal8Bit(std::strerror(error))));
    }
}

void Terminal::printNote(const QString &text)
{
    if (m_isTerminal) {
        print(text);
    } else {
        std::fprintf(stderr, "%s\n", guarded(text).toUtf8().constData());
    }
}

void Terminal::printError(const QString &text)
{
    endLive();
    std::fprintf(stderr, "tavo: %s\n", printable(text).toUtf8().constData());
}

void Terminal::showLive(const QString &text)
{
    if (!m_hasLive) {
        return;
    }
    // A line that wraps could not be erased.
    const QString line = printable(text).left(columns() - 1);
    std::fprintf(stderr, "\r\x1b[K%s", line.toUtf8().constData());
    m_isLive = true;
}

void Terminal::endLive()
{
    if (m_isLive) {
        std::fputs("\r\x1b[K", stderr);
        m_isLive = false;
    }
}
