#ifndef VANTIXPANEL_FLOWLAYOUT_H
#define VANTIXPANEL_FLOWLAYOUT_H

#include <QLayout>
#include <QList>

/**
 * Widgets side by side at their preferred size, wrapping to the next line
 * like words when the width runs out: a row of buttons that fits any window.
 */
class FlowLayout : public QLayout
{
public:
    explicit FlowLayout(QWidget *parent = nullptr);
    ~FlowLayout() override;

    /// The last item takes what is left of its line, when that is at least its minimum width (a status text).
    void setLastFills(bool fills) { m_lastFills = fills; }

    void addItem(QLayoutItem *item) override;
    int count() const override { return m_items.size(); }
    QLayoutItem *itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect &rect) override;

private:
    /// Places the items in @p rect (only measures without @p apply); the height used.
    int arrange(const QRect &rect, bool apply) const;

    QList<QLayoutItem *> m_items;
    bool m_lastFills = false;
};

#endif
