#include "devicespage.h"

#include "panelsession.h"
#include "targetform.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
const QString statusProperty = QStringLiteral("status");
} // namespace

DevicesPage::DevicesPage(PanelSession *session, QWidget *parent)
    : Page(session, parent)
    , m_list(new QTreeWidget(this))
    , m_detail(new QScrollArea(this))
{
    m_list->setColumnCount(2);
    m_list->setHeaderLabels({tr("Target"), tr("Status")});
    m_list->setRootIsDecorated(false);
    m_list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    // The status elides; its whole text is in its tooltip.
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Room for the names and the start of the status beside them.
    m_list->setMinimumWidth(fontMetrics().averageCharWidth() * 36);
    m_detail->setWidgetResizable(true);

    auto *splitter = new QSplitter(this);
    splitter->addWidget(m_list);
    splitter->addWidget(m_detail);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 2);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);

    connect(m_list, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        if (item) {
            showTarget(item->text(0));
        }
    });
    connect(session, &PanelSession::schemaChanged, this, &DevicesPage::rebuildList);
    connect(session, &PanelSession::valueChanged, this, [this](const QString &target, const QString &property) {
        if (property == statusProperty) {
            updateStatus(target);
        }
    });
}

void DevicesPage::select(const QString &target)
{
    const QList<QTreeWidgetItem *> items = m_list->findItems(target, Qt::MatchExactly, 0);
    if (!items.isEmpty()) {
        m_list->setCurrentItem(items.first());
    }
}

void DevicesPage::rebuildList()
{
    const QString current = m_shown;
    m_list->clear();
    for (const QString &name : m_session->targetNames()) {
        auto *item = new QTreeWidgetItem(m_list, {name});
        item->setToolTip(0, m_session->target(name).value(QLatin1String("class")).toString());
        updateStatus(name);
    }
    m_shown.clear();
    if (!m_session->target(current).isEmpty()) {
        select(current);
    } else if (m_list->topLevelItemCount() > 0) {
        m_list->setCurrentItem(m_list->topLevelItem(0));
    }
}

void DevicesPage::updateStatus(const QString &target)
{
    const QList<QTreeWidgetItem *> items = m_list->findItems(target, Qt::MatchExactly, 0);
    if (!items.isEmpty()) {
        const PropertyValue status = m_session->value(target, statusProperty);
        items.first()->setText(1, status.text);
        items.first()->setToolTip(1, status.text);
    }
}

void DevicesPage::showTarget(const QString &target)
{
    if (target == m_shown) {
        return;
    }
    m_shown = target;
    const QJsonObject schema = m_session->target(target);
    auto *content = new QWidget;
    auto *form = new QFormLayout(content);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    QString heading =
        QStringLiteral("<b>%1</b> &nbsp; %2").arg(target, schema.value(QLatin1String("class")).toString());
    if (schema.contains(QLatin1String("number"))) {
        heading += QStringLiteral(" &nbsp; #%1 %2")
                       .arg(schema.value(QLatin1String("number")).toInt())
                       .arg(schema.value(QLatin1String("alias")).toString());
    }
    form->addRow(new QLabel(heading, content));
    form->addRow(new TargetForm(m_session, target, true, PropertyEditor::RawNames, content));
    m_detail->setWidget(content);
}
