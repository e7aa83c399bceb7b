#ifndef VANTIXPANEL_ELIDEDLABEL_H
#define VANTIXPANEL_ELIDEDLABEL_H

#include <QWidget>

/**
 * One line of text that never widens its window: it takes the room it is
 * given and ends in "…" when that is too little, with the whole text in its
 * tooltip. For results and messages of any length.
 */
class ElidedLabel : public QWidget
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    QString text() const { return m_text; }
    /// Line breaks in @p text show as blanks; the tooltip keeps them.
    void setText(const QString &text);
    void setColour(const QColor &colour);
    void setBold(bool bold);
    /// Whether the text is cut at the current width.
    bool isElided() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString shown() const;

    QString m_text;
};

#endif
