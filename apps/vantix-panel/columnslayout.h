#ifndef VANTIXPANEL_COLUMNSLAYOUT_H
#define VANTIXPANEL_COLUMNSLAYOUT_H

#include <QLayout>
#include <QList>

/**
 * Boxes side by side in equal columns while each gets its preferred width,
 * stacked one above the other on a narrower window: a page that is usable
 * at any width without scrolling sideways.
 */
class ColumnsLayout : public QLayout
{
public:
    explicit ColumnsLayout(int maxColumns, QWidget *parent = nullptr);
    ~ColumnsLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override { return m_items.size(); }
    QLayoutItem *itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect &rect) override;

    /// The columns used at @p width.
    int columnsAt(int width) const;

private:
    int arrange(const QRect &rect, bool apply) const;
    QList<QLayoutItem *> visibleItems() const;

    QList<QLayoutItem *> m_items;
    int m_maxColumns;
};

#endif
