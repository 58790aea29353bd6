#pragma once
#include <QTableWidget>

#include <vector>

// The matcher's grid: a table of texts addressed as row and column of the whole
// grid, row 0 and column 0 being its fixed header row and column. Row 0 is the
// table's header (it stays in view while the rows scroll); column 0 is drawn like a
// header and cannot be selected. Widths are in twips; a width of 0 hides the column.
class MatchGrid : public QTableWidget {
    Q_OBJECT
public:
    explicit MatchGrid(QWidget *parent = nullptr);

    int gridRows() const { return rowCount() + 1; }
    void setGridRows(int rows);  // at least the header row
    int gridCols() const { return columnCount(); }
    void setGridCols(int cols);
    int colWidthTwips(int col) const;
    void setColWidthTwips(int col, int twips);

    // Cell text by the single index row x gridCols() + col; out of range reads empty.
    QString textAt(int index) const;
    void setTextAt(int index, const QString &text);
    QString cellText(int row, int col) const;
    void setCellText(int row, int col, const QString &text);

    // The column the next sort orders by.
    int sortColumn() const { return sortColumn_; }
    void setSortColumn(int col) { sortColumn_ = col; }
    // Orders the data rows ascending on sortColumn(): numbers as numbers, texts as
    // texts. Rows that compare equal keep their order.
    void sortAscending();

    int widthTwips() const { return widthTwips_; }
    void setWidthTwips(int twips);

private:
    QTableWidgetItem *cell(int row, int col);
    // A header that fits stays centred; one that does not is cut on the right,
    // so that it is read from its start.
    void alignHeader(int col);

    std::vector<int> colWidths_;
    int sortColumn_ = 0;
    int widthTwips_ = 0;
};
