#include "matcher/flexgrid.h"

#include "matcher/matchnumbers.h"
#include "shell/twips.h"

#include <QHeaderView>

#include <algorithm>

FlexGrid::FlexGrid(QWidget *parent) : QTableWidget(parent)
{
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setMinimumSectionSize(0);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setWordWrap(false);
    setRows(1);
}

void FlexGrid::setRows(int rows)
{
    const int before = rowCount();
    setRowCount(std::max(rows, 1) - 1);
    for (int r = before; r < rowCount(); ++r)
        for (int c = 0; c < columnCount(); ++c)
            cell(r + 1, c);
}

void FlexGrid::setCols(int cols)
{
    const int before = columnCount();
    cols = std::max(cols, 0);
    setColumnCount(cols);
    colWidths_.resize(static_cast<size_t>(cols), -1);
    for (int c = before; c < cols; ++c) {
        setColumnHidden(c, false);
        for (int r = 0; r < Rows(); ++r)
            cell(r, c);
    }
}

int FlexGrid::ColWidth(int col) const
{
    if (col < 0 || col >= Cols())
        return 0;
    const int twips = colWidths_[static_cast<size_t>(col)];
    return twips >= 0 ? twips : columnWidth(col) * 15;
}

void FlexGrid::setColWidth(int col, int twips)
{
    if (col < 0 || col >= Cols())
        return;
    twips = std::max(twips, 0);
    colWidths_[static_cast<size_t>(col)] = twips;
    setColumnHidden(col, twips == 0);
    if (twips > 0)
        setColumnWidth(col, Twips::px(twips));
}

// Creates the item on first use, so that every cell of the grid has one: a header
// item in row 0 (else the header shows numbers) and a fixed-looking one in column 0.
QTableWidgetItem *FlexGrid::cell(int row, int col)
{
    if (row == 0) {
        QTableWidgetItem *item = horizontalHeaderItem(col);
        if (!item) {
            item = new QTableWidgetItem(QString());
            setHorizontalHeaderItem(col, item);
        }
        return item;
    }
    QTableWidgetItem *item = this->item(row - 1, col);
    if (!item) {
        item = new QTableWidgetItem(QString());
        if (col == 0) {
            item->setFlags(Qt::ItemIsEnabled);
            item->setBackground(palette().button());
            item->setForeground(palette().buttonText());
        }
        setItem(row - 1, col, item);
    }
    return item;
}

QString FlexGrid::TextMatrix(int row, int col) const
{
    if (row < 0 || row >= Rows() || col < 0 || col >= Cols())
        return {};
    const QTableWidgetItem *item = row == 0 ? horizontalHeaderItem(col) : this->item(row - 1, col);
    return item ? item->text() : QString();
}

void FlexGrid::setTextMatrix(int row, int col, const QString &text)
{
    if (row < 0 || row >= Rows() || col < 0 || col >= Cols())
        return;
    cell(row, col)->setText(text);
}

QString FlexGrid::TextArray(int index) const
{
    if (Cols() == 0 || index < 0)
        return {};
    return TextMatrix(index / Cols(), index % Cols());
}

void FlexGrid::setTextArray(int index, const QString &text)
{
    if (Cols() == 0 || index < 0)
        return;
    setTextMatrix(index / Cols(), index % Cols(), text);
}

void FlexGrid::sortAscending()
{
    const int col = sortColumn_;
    if (col < 0 || col >= Cols() || rowCount() < 2)
        return;
    std::vector<std::vector<QTableWidgetItem *>> rows(static_cast<size_t>(rowCount()));
    for (int r = 0; r < rowCount(); ++r) {
        for (int c = 0; c < Cols(); ++c)
            rows[static_cast<size_t>(r)].push_back(takeItem(r, c));
    }
    const auto key = [col](const std::vector<QTableWidgetItem *> &row) {
        const QTableWidgetItem *item = row[static_cast<size_t>(col)];
        return item ? item->text() : QString();
    };
    std::stable_sort(rows.begin(), rows.end(), [&](const auto &a, const auto &b) {
        return MatchNumbers::compareGeneric(key(a), key(b)) < 0;
    });
    for (int r = 0; r < rowCount(); ++r)
        for (int c = 0; c < Cols(); ++c)
            setItem(r, c, rows[static_cast<size_t>(r)][static_cast<size_t>(c)]);
}

void FlexGrid::setWidthTwips(int twips)
{
    widthTwips_ = twips;
    resize(Twips::px(twips), height());
}
