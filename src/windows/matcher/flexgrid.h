#pragma once
#include <QTableWidget>

#include <vector>

// The matcher's grid: a table of texts addressed the way the program's grid control
// was, row 0 and column 0 being its fixed header row and column. Row 0 is the
// table's header (it stays in view while the rows scroll); column 0 is drawn like a
// header and cannot be selected. Widths are in twips; a width of 0 hides the column.
class FlexGrid : public QTableWidget {
    Q_OBJECT
public:
    explicit FlexGrid(QWidget *parent = nullptr);

    int Rows() const { return rowCount() + 1; }
    void setRows(int rows);  // at least the header row
    int Cols() const { return columnCount(); }
    void setCols(int cols);
    int ColWidth(int col) const;
    void setColWidth(int col, int twips);

    // Cell text by the single index row x Cols() + col; out of range reads empty.
    QString TextArray(int index) const;
    void setTextArray(int index, const QString &text);
    QString TextMatrix(int row, int col) const;
    void setTextMatrix(int row, int col, const QString &text);

    // The column the next sort orders by.
    int Col() const { return sortColumn_; }
    void setCol(int col) { sortColumn_ = col; }
    // Orders the data rows ascending on Col(): numbers as numbers, texts as texts.
    // Rows that compare equal keep their order.
    void sortAscending();

    int WidthTwips() const { return widthTwips_; }
    void setWidthTwips(int twips);

private:
    QTableWidgetItem *cell(int row, int col);
    std::vector<int> colWidths_;
    int sortColumn_ = 0;
    int widthTwips_ = 0;
};
