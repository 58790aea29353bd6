#include "shell/itemlist.h"

#include <QMouseEvent>

ItemList::ItemList(bool sorted, QWidget *parent) : QListWidget(parent), sorted_(sorted)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    connect(this, &QListWidget::itemSelectionChanged, this, [this] {
        pressChangedSelection_ = true;
        emit picked();
    });
}

void ItemList::mousePressEvent(QMouseEvent *event)
{
    pressChangedSelection_ = false;
    QListWidget::mousePressEvent(event);
}

void ItemList::mouseReleaseEvent(QMouseEvent *event)
{
    const bool onRow = event->button() == Qt::LeftButton && itemAt(event->position().toPoint()) != nullptr;
    QListWidget::mouseReleaseEvent(event);
    if (onRow && !pressChangedSelection_)
        emit picked();
}

int ItemList::addRow(const QString &text)
{
    int row = count();
    if (sorted_) {
        int low = 0;
        int high = count();
        while (low < high) {
            const int mid = (low + high) / 2;
            if (QString::compare(item(mid)->text(), text, Qt::CaseInsensitive) <= 0)
                low = mid + 1;
            else
                high = mid;
        }
        row = low;
    }
    auto *entry = new QListWidgetItem(text);
    entry->setData(Qt::UserRole, 0);
    insertItem(row, entry);
    return row;
}

void ItemList::removeRow(int row)
{
    if (row < 0 || row >= count())
        return;
    delete takeItem(row);
    selectRow(-1);
}

QString ItemList::rowText(int row) const
{
    const QListWidgetItem *entry = item(row);
    return entry ? entry->text() : QString();
}

void ItemList::setRowText(int row, const QString &text)
{
    if (QListWidgetItem *entry = item(row))
        entry->setText(text);
}

int ItemList::rowData(int row) const
{
    const QListWidgetItem *entry = item(row);
    return entry ? entry->data(Qt::UserRole).toInt() : 0;
}

void ItemList::setRowData(int row, int value)
{
    if (QListWidgetItem *entry = item(row))
        entry->setData(Qt::UserRole, value);
}

int ItemList::selectedRow() const
{
    const int row = currentRow();
    return row >= 0 && item(row)->isSelected() ? row : -1;
}

void ItemList::selectRow(int row)
{
    if (row < 0 || row >= count()) {
        setCurrentRow(-1);
        clearSelection();
        return;
    }
    setCurrentRow(row);
}

void ItemList::selectLast()
{
    if (count() == 0)
        return;
    selectRow(count() - 1);
    scrollToItem(item(count() - 1));
}

QStringList ItemList::texts() const
{
    QStringList texts;
    for (int i = 0; i < count(); ++i)
        texts << item(i)->text();
    return texts;
}
