#include "ledview.h"

#include <QPainter>
#include <QTimer>

namespace {
// Qt::GlobalColor names as the application sends them ("green", "darkRed").
QColor colourOf(const QString &name)
{
    QColor colour(name);
    return colour.isValid() ? colour : QColor(Qt::gray);
}
} // namespace

LedView::LedView(QWidget *parent)
    : QWidget(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &LedView::flash);
    setFixedSize(sizeHint());
}

void LedView::setState(const QString &mode, const QString &colour, int msOn, int msOff)
{
    m_colour = colourOf(colour);
    m_msOn = msOn;
    m_msOff = msOff;
    m_flashing = mode == QLatin1String("LED_FLASH") && msOn > 0 && msOff > 0;
    m_lit = mode != QLatin1String("LED_OFF");
    m_timer->stop();
    if (m_flashing) {
        m_lit = true;
        m_timer->start(m_msOn);
    }
    setToolTip(QStringLiteral("%1 %2 (%3 ms on, %4 ms off)").arg(mode, colour).arg(msOn).arg(msOff));
    update();
}

void LedView::flash()
{
    m_lit = !m_lit;
    m_timer->start(m_lit ? m_msOn : m_msOff);
    update();
}

void LedView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF r = QRectF(rect()).adjusted(3, 3, -3, -3);
    const QColor fill = m_lit ? m_colour : m_colour.darker(400);
    QRadialGradient glow(r.center(), r.width() / 2);
    glow.setColorAt(0, m_lit ? fill.lighter(160) : fill);
    glow.setColorAt(1, fill);
    painter.setBrush(glow);
    painter.setPen(QPen(QColor(60, 60, 60), 1.5));
    painter.drawEllipse(r);
}
