#include "matcher/matchgrid.h"

#include "matcher/matchnumbers.h"
#include "shell/twips.h"

#include <QHeaderView>
#include <QStyle>

#include <algorithm>

MatchGrid::MatchGrid(QWidget *parent) : QTableWidget(parent)
{
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int col) { alignHeader(col); });
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setMinimumSectionSize(0);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setWordWrap(false);
    setGridRows(1);
}

void MatchGrid::setGridRows(int rows)
{
    const int before = rowCount();
    setRowCount(std::max(rows, 1) - 1);
    for (int r = before; r < rowCount(); ++r)
        for (int c = 0; c < columnCount(); ++c)
            cell(r + 1, c);
}

void MatchGrid::setGridCols(int cols)
{
    const int before = columnCount();
    cols = std::max(cols, 0);
    setColumnCount(cols);
    colWidths_.resize(static_cast<size_t>(cols), -1);
    for (int c = before; c < cols; ++c) {
        setColumnHidden(c, false);
        for (int r = 0; r < gridRows(); ++r)
            cell(r, c);
    }
}

int MatchGrid::colWidthTwips(int col) const
{
    if (col < 0 || col >= gridCols())
        return 0;
    const int twips = colWidths_[static_cast<size_t>(col)];
    return twips >= 0 ? twips : columnWidth(col) * 15;
}

void MatchGrid::setColWidthTwips(int col, int twips)
{
    if (col < 0 || col >= gridCols())
        return;
    twips = std::max(twips, 0);
    colWidths_[static_cast<size_t>(col)] = twips;
    setColumnHidden(col, twips == 0);
    if (twips > 0)
        setColumnWidth(col, Twips::px(twips));
}

// Creates the item on first use, so that every cell of the grid has one: a header
// item in row 0 (else the header shows numbers) and a fixed-looking one in column 0.
QTableWidgetItem *MatchGrid::cell(int row, int col)
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

QString MatchGrid::cellText(int row, int col) const
{
    if (row < 0 || row >= gridRows() || col < 0 || col >= gridCols())
        return {};
    const QTableWidgetItem *item = row == 0 ? horizontalHeaderItem(col) : this->item(row - 1, col);
    return item ? item->text() : QString();
}

void MatchGrid::setCellText(int row, int col, const QString &text)
{
    if (row < 0 || row >= gridRows() || col < 0 || col >= gridCols())
        return;
    cell(row, col)->setText(text);
    if (row == 0)
        alignHeader(col);
}

QString MatchGrid::textAt(int index) const
{
    if (gridCols() == 0 || index < 0)
        return {};
    return cellText(index / gridCols(), index % gridCols());
}

void MatchGrid::setTextAt(int index, const QString &text)
{
    if (gridCols() == 0 || index < 0)
        return;
    setCellText(index / gridCols(), index % gridCols(), text);
}

void MatchGrid::sortAscending()
{
    const int col = sortColumn_;
    if (col < 0 || col >= gridCols() || rowCount() < 2)
        return;
    std::vector<std::vector<QTableWidgetItem *>> rows(static_cast<size_t>(rowCount()));
    for (int r = 0; r < rowCount(); ++r) {
        for (int c = 0; c < gridCols(); ++c)
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
        for (int c = 0; c < gridCols(); ++c)
            setItem(r, c, rows[static_cast<size_t>(r)][static_cast<size_t>(c)]);
}

void MatchGrid::setWidthTwips(int twips)
{
    widthTwips_ = twips;
    resize(Twips::px(twips), height());
}

void MatchGrid::alignHeader(int col)
{
    QTableWidgetItem *item = horizontalHeaderItem(col);
    if (!item)
        return;
    const int margin = style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, horizontalHeader());
    const int room = horizontalHeader()->sectionSize(col) - 2 * margin;
    const bool fits = horizontalHeader()->fontMetrics().horizontalAdvance(item->text()) <= room;
    item->setTextAlignment(fits ? Qt::AlignCenter : Qt::AlignLeft | Qt::AlignVCenter);
}
