#include "elidedlabel.h"

#include <QPainter>

ElidedLabel::ElidedLabel(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString &text)
{
    if (text == m_text) {
        return;
    }
    m_text = text;
    setToolTip(text);
    updateGeometry();
    update();
}

void ElidedLabel::setColour(const QColor &colour)
{
    QPalette p = palette();
    p.setColor(QPalette::WindowText, colour.isValid() ? colour : QPalette().color(QPalette::WindowText));
    setPalette(p);
}

void ElidedLabel::setBold(bool bold)
{
    QFont f = font();
    f.setBold(bold);
    setFont(f);
}

bool ElidedLabel::isElided() const
{
    return fontMetrics().horizontalAdvance(shown()) > contentsRect().width();
}

QString ElidedLabel::shown() const
{
    return QString(m_text).replace(QLatin1Char('\n'), QLatin1Char(' '));
}

QSize ElidedLabel::sizeHint() const
{
    return QSize(fontMetrics().horizontalAdvance(shown()) + 2, fontMetrics().height());
}

QSize ElidedLabel::minimumSizeHint() const
{
    // Room for a few letters and the ellipsis: the rest is in the tooltip.
    return QSize(fontMetrics().averageCharWidth() * 4, fontMetrics().height());
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect r = contentsRect();
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(r, Qt::AlignLeft | Qt::AlignVCenter, fontMetrics().elidedText(shown(), Qt::ElideRight, r.width()));
}
