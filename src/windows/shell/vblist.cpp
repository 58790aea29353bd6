#include "shell/vblist.h"

#include <QMouseEvent>

VbList::VbList(bool sorted, QWidget *parent) : QListWidget(parent), sorted_(sorted)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    connect(this, &QListWidget::itemSelectionChanged, this, [this] {
        pressChangedSelection_ = true;
        emit Click();
    });
}

void VbList::mousePressEvent(QMouseEvent *event)
{
    pressChangedSelection_ = false;
    QListWidget::mousePressEvent(event);
}

void VbList::mouseReleaseEvent(QMouseEvent *event)
{
    const bool onRow = event->button() == Qt::LeftButton && itemAt(event->position().toPoint()) != nullptr;
    QListWidget::mouseReleaseEvent(event);
    if (onRow && !pressChangedSelection_)
        emit Click();
}

int VbList::AddItem(const QString &text)
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

void VbList::RemoveItem(int row)
{
    if (row < 0 || row >= count())
        return;
    delete takeItem(row);
    SetListIndex(-1);  // as a list box does: removing a row leaves nothing selected
}

void VbList::Clear() { clear(); }

QString VbList::List(int row) const
{
    const QListWidgetItem *entry = item(row);
    return entry ? entry->text() : QString();
}

void VbList::SetList(int row, const QString &text)
{
    if (QListWidgetItem *entry = item(row))
        entry->setText(text);
}

int VbList::ItemData(int row) const
{
    const QListWidgetItem *entry = item(row);
    return entry ? entry->data(Qt::UserRole).toInt() : 0;
}

void VbList::SetItemData(int row, int value)
{
    if (QListWidgetItem *entry = item(row))
        entry->setData(Qt::UserRole, value);
}

int VbList::ListIndex() const
{
    const int row = currentRow();
    return row >= 0 && item(row)->isSelected() ? row : -1;
}

void VbList::SetListIndex(int row)
{
    if (row < 0 || row >= count()) {
        setCurrentRow(-1);
        clearSelection();
        return;
    }
    setCurrentRow(row);
}

void VbList::SelectLast()
{
    if (count() == 0)
        return;
    SetListIndex(count() - 1);
    scrollToItem(item(count() - 1));
}

QStringList VbList::Texts() const
{
    QStringList texts;
    for (int i = 0; i < count(); ++i)
        texts << item(i)->text();
    return texts;
}
