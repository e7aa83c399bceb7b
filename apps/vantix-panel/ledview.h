#ifndef VANTIXPANEL_LEDVIEW_H
#define VANTIXPANEL_LEDVIEW_H

#include <QColor>
#include <QWidget>

class QTimer;

/// A LED drawn in its colour and mode: lit, dark, or flashing at its own on and off times.
class LedView : public QWidget
{
    Q_OBJECT

public:
    explicit LedView(QWidget *parent = nullptr);

    /// @p mode is "LED_ON", "LED_OFF", "LED_FLASH" or "LED_DEFAULT"; @p colour a Qt::GlobalColor name.
    void setState(const QString &mode, const QString &colour, int msOn, int msOff);
    bool isLit() const { return m_lit; }
    QColor colour() const { return m_colour; }

    QSize sizeHint() const override { return QSize(28, 28); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void flash();

    QColor m_colour;
    bool m_lit = false;
    bool m_flashing = false;
    int m_msOn = 0;
    int m_msOff = 0;
    QTimer *m_timer;
};

#endif
