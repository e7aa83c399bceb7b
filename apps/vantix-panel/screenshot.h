#ifndef VANTIXPANEL_SCREENSHOT_H
#define VANTIXPANEL_SCREENSHOT_H

#include <QObject>

class PanelWindow;
class QTimer;

/**
 * Takes a picture of the panel as the display shows it, once the window is
 * on screen and attached, and ends the program: 0 when saved, 3 when the
 * window never appeared or never attached. For the README and its test.
 */
class Screenshot : public QObject
{
    Q_OBJECT

public:
    Screenshot(PanelWindow *window, const QString &file, QObject *parent = nullptr);

private:
    void take();
    void fail(const QString &reason);

    PanelWindow *m_window;
    QString m_file;
    QTimer *m_deadline;
};

#endif
