#include "screenshot.h"

#include "panelsession.h"
#include "panelwindow.h"

#include <QApplication>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <cstdio>

namespace {
// Time for the pages to fill from the first answers once attached.
constexpr int settleMs = 1500;
constexpr int deadlineMs = 15000;
} // namespace

Screenshot::Screenshot(PanelWindow *window, const QString &file, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_file(file)
    , m_deadline(new QTimer(this))
{
    m_deadline->setSingleShot(true);
    connect(m_deadline, &QTimer::timeout, this, [this] {
        fail(m_window->session()->isAttached() ? QStringLiteral("the window did not appear on the display")
                                               : QStringLiteral("no application was attached"));
    });
    m_deadline->start(deadlineMs);
    connect(window->session(), &PanelSession::attached, this,
        [this] { QTimer::singleShot(settleMs, this, &Screenshot::take); });
}

void Screenshot::take()
{
    QWindow *handle = m_window->windowHandle();
    if (!handle || !handle->isExposed()) {
        QTimer::singleShot(100, this, &Screenshot::take);
        return;
    }
    // From the screen, not from the widgets: the picture shows what the display really got.
    const QPixmap picture = handle->screen()->grabWindow(m_window->winId());
    if (picture.isNull() || !picture.save(m_file, "PNG")) {
        fail(QStringLiteral("cannot save %1").arg(m_file));
        return;
    }
    m_deadline->stop();
    QApplication::exit(0);
}

void Screenshot::fail(const QString &reason)
{
    std::fprintf(stderr, "vantix-panel: screenshot: %s\n", qPrintable(reason));
    QApplication::exit(3);
}
